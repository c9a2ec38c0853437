// No manager reads or writes the segment while another program has the lock.

#include "tests/process/SegmentGateMember.h"
#include "tests/support/MAOperations.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <thread>

namespace {

/// Those that neither post nor call.
constexpr MAOperation kQuietOperations[] = {
    {"JoinAgain", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         const MAAccountInfo account = own.own();
         own.initManager(account.appID, account.pin, account.className, account.title, 2);
     },
     ""},
    {"WindowStateChanged", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.windowStateChanged(kMANormal, QRect(1, 2, 3, 4));
     },
     ""},
    {"CheckWindowVisible", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.checkWindowVisible(); }, ""},
    {"IsSelectedAccount", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.isSelectedAccount(); }, ""},
    {"LoginAccountCount", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.loginAccountCount(); }, ""},
    {"SortAllAccount", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.sortAllAccount({{"c", 0}});
     },
     ""},
};

std::vector<MAOperation> operationsOnTheSegment()
{
    std::vector<MAOperation> operations(std::begin(kQuietOperations), std::end(kQuietOperations));
    // A login state comes with its message.
    std::copy_if(
        std::begin(kMAOperations), std::end(kMAOperations), std::back_inserter(operations),
        [](const MAOperation& each) { return std::string(each.name) != "ReceiveLoginState"; });
    return operations;
}

class MALockTest : public MAOperationsFixture, public testing::WithParamInterface<MAOperation>
{
};

} // namespace

TEST_P(MALockTest, NothingIsReadOrWrittenWhileAnotherProgramHasIt)
{
    const MAOperation& operation = GetParam();
    prepare(operation);
    const QString key = view()->key();
    const std::string before = allBytes();
    ASSERT_TRUE(view()->lock());
    std::atomic<bool> isDone{false};
    std::thread operating([&] {
        run(operation, own(operation), c);
        isDone = true;
    });
    // Without the event loop: a message that should not have been posted would wait for the lock.
    const QDeadlineTimer deadline(kDeadlineMs);
    while (!isDone && !isLockAwaited(key) && !deadline.hasExpired())
        std::this_thread::yield();
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(isLockAwaited(key));
    EXPECT_TRUE(allBytes() == before);
    EXPECT_TRUE(view()->unlock());
    operating.join();
}

INSTANTIATE_TEST_SUITE_P(Operations, MALockTest, testing::ValuesIn(operationsOnTheSegment()),
                         [](const auto& test) { return std::string(test.param.name); });
