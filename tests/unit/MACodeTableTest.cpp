// Every code of the window message, in every situation of its receiver.

#include "tests/support/Workbenches.h"

#include <ostream>
#include <tuple>

namespace {

using Texts = std::vector<std::string>;

enum class Store {
    Merged,
    Separate,
    OtherMode,  ///< neither of the two
    Garbage,    ///< whose texts are none
    Unjoined,   ///< of a receiver that has attached it and not joined
    Unreadable, ///< that the receiver has not attached
};

constexpr const char* kStoreNames[] = {"Merged",  "Separate", "OtherMode",
                                       "Garbage", "Unjoined", "Unreadable"};

bool isRead(Store store)
{
    return store < Store::Unjoined;
}

/// A message, and what the receiver's observer is told. The receiver is account "b", "a" is in
/// front.
struct Received
{
    long code;
    long value;
    Texts merged;
    Texts separate;
    Texts unreadable; ///< as merged, but of nobody
};

void PrintTo(const Received& received, std::ostream* out)
{
    *out << received.code << '/' << received.value;
}

const Received kReceived[] = {
    {1, 0, {"1 b 1 [a b c]"}, {"1 b 1 [b]"}, {"1  0 []"}},
    {2, 0, {"2 a 1 []"}, {}, {"2  0 []"}},
    {2, 1, {"2 a 1 []"}, {}, {"2  0 []"}},
    {3, 0, {"3 a 1 [a b c]"}, {}, {"3  0 []"}},
    {3, 1, {"3 a 1 [a b c]"}, {}, {"3  0 []"}},
    {4, 0, {"3 a 1 [a b c]"}, {}, {"3  0 []"}},
    {4, 1, {"3 a 1 [a b c]", "4 a 1 [a b c]"}, {}, {"3  0 []", "4  0 []"}},
    {4, 2, {"3 a 1 [a b c]"}, {}, {"3  0 []"}},
    {4, -1, {"3 a 1 [a b c]"}, {}, {"3  0 []"}},
    {5, 7, {"login state 7"}, {"login state 7"}, {"login state 7"}},
    {5, -7, {"login state -7"}, {"login state -7"}, {"login state -7"}},
    {6, 0, {"6 a 1 [a b c]"}, {}, {"6  0 []"}},
    {6, 1, {"6 a 1 [a b c]"}, {}, {"6  0 []"}},
    {7, 0, {"7 a 1 []"}, {}, {"7  0 []"}},
    {7, 1, {"7 a 1 []"}, {}, {"7  0 []"}},
    {8, 0, {"8 a 1 [a b c]"}, {}, {"8  0 []"}},
    {8, 1, {"8 a 1 [a b c]"}, {}, {"8  0 []"}},
    {0, 1, {}, {}, {}},
    {9, 1, {}, {}, {}},
    {-1, -1, {}, {}, {}},
};

class MACodeTableTest : public WorkbenchesFixture,
                        public testing::WithParamInterface<std::tuple<Received, Store, bool>>
{
protected:
    void prepare(Store store)
    {
        joinAll();
        if (store == Store::Separate)
            b.manager.changeMergeMode(kMASeparate, false);
        settle();
        a.manager.switchToCurrentPin();
        a.manager.windowStateChanged(kMANormal, QRect(1, 2, 30, 40));
        if (store == Store::OtherMode) {
            MASelectedAccount selected = a.manager.selected();
            selected.mode = 2;
            const MAMutex lock(&a.manager.memory());
            a.manager.writeSelected(selected);
        } else if (store == Store::Garbage) {
            fill('{');
        } else if (store == Store::Unjoined) {
            b.manager.setInitialized(false);
        } else if (store == Store::Unreadable) {
            b.manager.memory().detach();
        }
        forget();
    }

    static Texts expectedCalls(const Received& received, Store store)
    {
        const bool takesFront = received.code == kMAShow;
        switch (store) {
        case Store::Merged:
            return received.merged;
        case Store::Separate:
            return received.separate;
        case Store::OtherMode:
            return takesFront ? received.merged : received.separate;
        case Store::Garbage:
            return takesFront ? Texts{"1 b 0 []"} : received.unreadable;
        default:
            return received.unreadable;
        }
    }

    /// All that is logged, in order.
    Texts expectedLines(const Received& received, Store store)
    {
        const std::string numbers =
            std::to_string(received.code) + ", " + std::to_string(received.value);
        Texts lines{"DEBUG handle Native Event " + numbers};
        if (received.code < kMAShow || received.code > kMAToggle)
            lines.push_back("WARN unprocessed cross process messages " + numbers);
        if (received.code != kMAShow)
            return lines;
        const bool hasRectangle = isRead(store) && store != Store::Garbage;
        lines.push_back("DEBUG switch to account, " + (isRead(store) ? b.manager.own().title : ""));
        lines.push_back(std::string("DEBUG b, window state, ") + (hasRectangle ? "1" : "0"));
        if (store != Store::Separate && store != Store::OtherMode)
            lines.push_back("DEBUG post process message, " +
                            (hasRectangle ? a.manager.own().title : "") + ", param2");
        if (hasRectangle)
            lines.push_back("DEBUG b, window state, 1");
        return lines;
    }
};

std::string nameOf(const testing::TestParamInfo<std::tuple<Received, Store, bool>>& test)
{
    const auto number = [](long value) {
        return (value < 0 ? "Minus" : "") + std::to_string(value < 0 ? -value : value);
    };
    const auto& [received, store, hasObserver] = test.param;
    return "Code" + number(received.code) + "Value" + number(received.value) +
           kStoreNames[static_cast<int>(store)] + (hasObserver ? "" : "Unobserved");
}

} // namespace

TEST_P(MACodeTableTest, CallsLogsAndPostsWhatItShould)
{
    const auto& [sent, store, hasObserver] = GetParam();
    prepare(store);
    if (!hasObserver)
        b.manager.removeObserver();
    EXPECT_TRUE(b.manager.handleNativeEvent(b.manager.messageId(), sent.code, sent.value));
    EXPECT_EQ(b.calls, hasObserver ? expectedCalls(sent, store) : Texts{});
    EXPECT_EQ(logged(), expectedLines(sent, store));

    const bool takesFront = sent.code == kMAShow && isRead(store);
    const bool tells = takesFront && store == Store::Merged;
    EXPECT_EQ(received(), tells ? "a: 2/0; b:; c:" : "a:; b:; c:");
    EXPECT_EQ(a.calls, tells ? Texts{"2 b 1 []"} : Texts{});
    EXPECT_TRUE(c.calls.empty());
    const std::string before = store == Store::Garbage ? "" : "a";
    EXPECT_EQ(a.manager.selected().pin, takesFront ? "b" : before);
}

INSTANTIATE_TEST_SUITE_P(Codes, MACodeTableTest,
                         testing::Combine(testing::ValuesIn(kReceived),
                                          testing::Values(Store::Merged, Store::Separate,
                                                          Store::OtherMode, Store::Garbage,
                                                          Store::Unjoined, Store::Unreadable),
                                          testing::Bool()),
                         nameOf);
