#include "tests/support/AccountsFixture.h"
#include "tests/support/Stress.h"

#include <algorithm>
#include <random>

using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

namespace {

using Accounts = std::list<MAAccountInfo>;

const std::string kUnusable = "read current account mem failed";

MASelectedAccount selectedWithTitle(const std::string& title)
{
    MASelectedAccount selected;
    selected.setAccount("app", "pin", "class", title);
    return selected;
}

MASelectedAccount selectedOfLength(int length)
{
    const auto spare = static_cast<std::size_t>(length) - selectedWithTitle("").toJSON().size();
    return selectedWithTitle(std::string(spare, 't'));
}

Accounts listWithTitle(const std::string& title)
{
    Accounts list(1);
    list.front().pin = "pin";
    list.front().title = title;
    return list;
}

Accounts listOfLength(int length)
{
    const auto spare =
        static_cast<std::size_t>(length) - MAAccountInfo::toJSON(listWithTitle("")).size();
    return listWithTitle(std::string(spare, 't'));
}

class MAStoreTest : public AccountsFixture
{
protected:
    /// Attached and ready to read and write, without an account in the list.
    void open()
    {
        ASSERT_TRUE(manager.join("own"));
        ASSERT_NE(segment(), nullptr);
        fill('\0');
        log.clear();
    }

    [[nodiscard]] std::vector<std::string> complaintFunctions() const
    {
        std::vector<std::string> functions;
        for (const LogRecord& record : log.records()) {
            if (record.level >= WARN_LOG_LEVEL)
                functions.push_back(record.function);
        }
        return functions;
    }

    MAManagerProbe manager;
};

} // namespace

TEST_F(MAStoreTest, FirstProcessCreatesAZeroedSegmentOfTheInstallation)
{
    ASSERT_TRUE(manager.createShareMemory());
    EXPECT_TRUE(manager.memory().isAttached());
    EXPECT_EQ(manager.memory().key(), QCoreApplication::applicationName() + QStringLiteral("_MEM"));
    ASSERT_NE(segment(), nullptr);
    EXPECT_GE(segmentSize(), 103434) << "the system may round up";
    EXPECT_LT(segmentSize(), 103434 + 4096);
    EXPECT_EQ(allBytes(), padded("", segmentSize()));
    EXPECT_TRUE(complaints().empty());
}

TEST_F(MAStoreTest, CreatingAgainKeepsWhatIsAttached)
{
    ASSERT_TRUE(manager.createShareMemory());
    const void* const data = manager.memory().constData();
    fill('x');
    ASSERT_TRUE(manager.createShareMemory());
    EXPECT_EQ(manager.memory().constData(), data);
    EXPECT_EQ(bytes(0, 3), "xxx");
}

TEST_F(MAStoreTest, SecondProcessReadsWhatTheFirstWrote)
{
    open();
    ASSERT_TRUE(manager.writeSelected(selectedWithTitle("front")));
    ASSERT_TRUE(manager.writeAll(listWithTitle("listed")));
    MAManagerProbe second;
    ASSERT_TRUE(second.join("second"));
    EXPECT_EQ(second.selected().title, "front");
    EXPECT_EQ(second.accounts().front().title, "listed");
}

TEST_F(MAStoreTest, SelectedAccountFillsItsRegionAndNothingElse)
{
    open();
    for (const char* title : {"a title", "t"}) {
        fill('\xAA');
        ASSERT_TRUE(manager.writeSelected(selectedWithTitle(title)));
        EXPECT_EQ(allBytes(),
                  padded(selectedWithTitle(title).toJSON(), 1024) +
                      std::string(static_cast<std::size_t>(segmentSize()) - 1024, '\xAA'));
    }
}

TEST_F(MAStoreTest, AccountListFillsItsRegionAndNothingElse)
{
    open();
    for (const char* title : {"a title", "t"}) {
        fill('\xAA');
        ASSERT_TRUE(manager.writeAll(listWithTitle(title)));
        EXPECT_EQ(allBytes(),
                  std::string(1024, '\xAA') +
                      padded(MAAccountInfo::toJSON(listWithTitle(title)), 102400) +
                      std::string(static_cast<std::size_t>(segmentSize()) - 103424, '\xAA'));
    }
}

TEST_F(MAStoreTest, EmptyListIsStoredAsNullAndReadsAsNothing)
{
    open();
    fill('\xAA');
    ASSERT_TRUE(manager.writeAll({}));
    EXPECT_EQ(bytes(1024, 102400), padded("null", 102400));
    Accounts list(1);
    EXPECT_TRUE(manager.readAll(list));
    EXPECT_EQ(list.size(), 1U);
}

TEST_F(MAStoreTest, LongSelectedTextRunsOnIntoTheList)
{
    open();
    fill('\xAA');
    const MASelectedAccount selected = selectedOfLength(1100);
    ASSERT_TRUE(manager.writeSelected(selected));
    EXPECT_EQ(bytes(0, 1100), selected.toJSON());
    EXPECT_EQ(bytes(1100, segmentSize() - 1100),
              std::string(static_cast<std::size_t>(segmentSize()) - 1100, '\xAA'));
    MASelectedAccount read = selectedWithTitle("before");
    EXPECT_TRUE(manager.readSelected(read));
    EXPECT_EQ(read.title, "before") << "what is cut off is no document";
}

TEST_F(MAStoreTest, SelectedTextNeverRunsPastTheSegment)
{
    open();
    const MASelectedAccount selected = selectedOfLength(segmentSize() + 5000);
    ASSERT_TRUE(manager.writeSelected(selected));
    EXPECT_EQ(allBytes(), selected.toJSON().substr(0, static_cast<std::size_t>(segmentSize())));
}

TEST_F(MAStoreTest, TextsMayFillTheirRegionsToTheLastByte)
{
    open();
    fill('\xAA');
    const MASelectedAccount selected = selectedOfLength(1024);
    const Accounts list = listOfLength(102400);
    ASSERT_TRUE(manager.writeSelected(selected));
    ASSERT_TRUE(manager.writeAll(list));
    EXPECT_EQ(bytes(0, 103424), selected.toJSON() + MAAccountInfo::toJSON(list));
    EXPECT_EQ(bytes(103424, 10), std::string(10, '\xAA'));
    MASelectedAccount readSelected;
    Accounts readList;
    EXPECT_TRUE(manager.readSelected(readSelected));
    EXPECT_TRUE(manager.readAll(readList));
    EXPECT_EQ(readSelected.title, selected.title);
    ASSERT_EQ(readList.size(), 1U);
    EXPECT_EQ(readList.front().title, list.front().title);
}

TEST_F(MAStoreTest, ListLongerThanItsRegionIsRefusedAndTheStoredOneStays)
{
    open();
    ASSERT_TRUE(manager.writeAll(listWithTitle("kept")));
    const std::string before = allBytes();
    EXPECT_FALSE(manager.writeAll(listOfLength(102401)));
    EXPECT_TRUE(allBytes() == before);
    EXPECT_EQ(complaints(), std::vector<std::string>{"ERROR account list too long, 102401"});
}

TEST_F(MAStoreTest, NothingOfALongTextIsLeftBehindAShortOne)
{
    open();
    const MASelectedAccount selected = selectedOfLength(1024);
    ASSERT_TRUE(manager.writeSelected(selected));
    ASSERT_TRUE(manager.writeAll(listOfLength(102400)));
    Accounts list;
    MASelectedAccount read;
    ASSERT_TRUE(manager.readAll(list));
    ASSERT_TRUE(manager.readSelected(read));
    EXPECT_EQ(manager.scratchBuffer(), selected.toJSON());
    ASSERT_TRUE(manager.writeAll({}));
    ASSERT_TRUE(manager.readAll(list));
    EXPECT_STREQ(manager.scratchBuffer(), "null");
}

TEST_F(MAStoreTest, WhatFollowsTheFirstNulIsIgnored)
{
    open();
    putText(0, 1024, std::string("{\"pin\":\"a\"}\0{\"pin\":\"b\"}", 23));
    putText(1024, 102400, std::string("[{\"pin\":\"a\"}]\0,{}]", 18));
    MASelectedAccount selected;
    Accounts list;
    EXPECT_TRUE(manager.readSelected(selected));
    EXPECT_TRUE(manager.readAll(list));
    EXPECT_EQ(selected.pin, "a");
    EXPECT_EQ(list.size(), 1U);
}

TEST_F(MAStoreTest, UnreadableRegionsLeaveTheRecordsAsTheyWere)
{
    open();
    for (const char byte : {'\0', '[', '{', '"', '\xff', ' '}) {
        fill(byte);
        MASelectedAccount selected = selectedWithTitle("before");
        Accounts list = listWithTitle("before");
        EXPECT_TRUE(manager.readSelected(selected));
        EXPECT_TRUE(manager.readAll(list));
        EXPECT_EQ(selected.title, "before");
        EXPECT_EQ(list.size(), 1U);
    }
    EXPECT_TRUE(complaints().empty());
}

TEST_F(MAStoreTest, ReadListIsAppended)
{
    open();
    ASSERT_TRUE(manager.writeAll(listWithTitle("stored")));
    Accounts list = listWithTitle("before");
    ASSERT_TRUE(manager.readAll(list));
    EXPECT_EQ(list.front().title, "before");
    EXPECT_EQ(list.back().title, "stored");
}

TEST_F(MAStoreTest, NothingIsReadOrWrittenUninitialisedOrUnattached)
{
    open();
    fill('x');
    MASelectedAccount selected = selectedWithTitle("before");
    Accounts list = listWithTitle("before");
    const auto refusesEverything = [&] {
        return !manager.readSelected(selected) && !manager.readAll(list) &&
               !manager.writeSelected(selected) && !manager.writeAll(list);
    };
    manager.setInitialized(false);
    EXPECT_TRUE(refusesEverything());
    manager.uninit();
    manager.setInitialized(true);
    EXPECT_TRUE(refusesEverything());
    manager.setInitialized(false);
    EXPECT_EQ(allBytes(), std::string(static_cast<std::size_t>(segmentSize()), 'x'));
    EXPECT_EQ(selected.title, "before");
    EXPECT_EQ(list.size(), 1U);
    EXPECT_TRUE(complaints().empty());
}

// Another program may have made the segment in any size; a system rounds it up to pages.
class MAStoreSizeTest : public MAStoreTest, public testing::WithParamInterface<int>
{
};

TEST_P(MAStoreSizeTest, NothingBeyondTheSegmentIsTouched)
{
    constexpr int kPage = 4096;
    ASSERT_TRUE(createSegment(GetParam()));
    const int size = segmentSize();
    // What the system maps behind the segment.
    const int behind = (size + kPage - 1) / kPage * kPage - size;
    std::memset(segment(), '\x55',
                static_cast<std::size_t>(size) + static_cast<std::size_t>(behind));
    const bool joined = manager.join("own");
    EXPECT_EQ(joined, size >= 1024) << "the selected account has to be read";
    manager.setInitialized(true);
    std::memset(segment(), 'x', static_cast<std::size_t>(size));
    log.clear();

    MASelectedAccount selected;
    Accounts list;
    std::vector<std::string> failed;
    const auto expect = [&](const char* operation, bool result, bool expected) {
        EXPECT_EQ(result, expected) << operation << " of " << size << " bytes";
        if (!expected)
            failed.emplace_back(operation);
    };
    expect("readSelectedAccount", manager.readSelected(selected), size >= 1024);
    expect("readAllAccount", manager.readAll(list), size >= 1024);
    expect("writeAllAccount", manager.writeAll(listWithTitle("t")), size >= 102400);
    const MASelectedAccount tooLong = selectedOfLength(size + 5000);
    expect("writeSelectedAccount", manager.writeSelected(tooLong), true);
    EXPECT_TRUE(allBytes() == tooLong.toJSON().substr(0, static_cast<std::size_t>(size)));

    const auto functions = complaintFunctions();
    ASSERT_EQ(functions.size(), failed.size());
    for (std::size_t i = 0; i < failed.size(); ++i)
        EXPECT_NE(functions[i].find(failed[i]), std::string::npos) << functions[i];
    EXPECT_EQ(log.count(ERROR_LOG_LEVEL, kUnusable), static_cast<int>(failed.size()));

    if (size >= 102400) {
        const int room = std::min(size - 1024, 102400);
        log.clear();
        EXPECT_TRUE(manager.writeAll(listOfLength(room)));
        list.clear();
        EXPECT_TRUE(manager.readAll(list));
        EXPECT_EQ(list.size(), 1U);
        EXPECT_FALSE(manager.writeAll(listOfLength(room + 1)));
        EXPECT_EQ(complaints(), std::vector<std::string>{"ERROR account list too long, " +
                                                         std::to_string(room + 1)});
    }
    EXPECT_EQ(bytes(size, behind), std::string(static_cast<std::size_t>(behind), '\x55'));
}

INSTANTIATE_TEST_SUITE_P(Sizes, MAStoreSizeTest,
                         testing::Values(1, 100, 1023, 1024, 1025, 4096, 102399, 102400, 103423,
                                         103424, 103434, 200000));

TEST_F(MAStoreTest, ModifyEditsAndWritesBothRegions)
{
    open();
    ASSERT_TRUE(manager.writeSelected(selectedWithTitle("old")));
    ASSERT_TRUE(manager.writeAll(listWithTitle("old")));
    MASelectedAccount selected;
    Accounts list;
    std::string calls;
    manager.modify(
        selected, list,
        [&](MASelectedAccount& each) {
            calls += "selected " + each.title + ", list " + std::to_string(list.size()) + "; ";
            each.title = "new";
        },
        [&](Accounts& each) {
            const bool isStored = bytes(0, 1024).find("\"new\"") != std::string::npos;
            calls +=
                std::string(isStored ? "stored" : "not stored") + ", list " + each.front().title;
            each.front().title = "new";
        });
    EXPECT_EQ(calls, "selected old, list 0; stored, list old")
        << "the selected account is written before the list is read";
    EXPECT_EQ(selected.title, "new");
    EXPECT_EQ(list.front().title, "new");
    EXPECT_EQ(manager.selected().title, "new");
    EXPECT_EQ(manager.accounts().front().title, "new");
}

TEST_F(MAStoreTest, ModifyWithoutEditsReadsBothAndWritesNothing)
{
    open();
    putText(0, 1024, R"( {"pin": "p"} )");
    putText(1024, 102400, R"( [ {"pin": "q"} ] )");
    const std::string before = allBytes();
    MASelectedAccount selected;
    Accounts list;
    manager.modify(selected, list, nullptr, nullptr);
    EXPECT_EQ(selected.pin, "p");
    EXPECT_EQ(list.front().pin, "q");
    EXPECT_TRUE(allBytes() == before);
}

TEST_F(MAStoreTest, ModifyUninitialisedOrUnattachedRunsNeitherEdit)
{
    int calls = 0;
    MASelectedAccount selected;
    Accounts list;
    const auto modify = [&] {
        manager.modify(
            selected, list, [&](MASelectedAccount&) { ++calls; }, [&](Accounts&) { ++calls; });
    };
    modify();
    manager.setInitialized(true);
    modify();
    manager.setInitialized(false);
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(MAStoreTest, RandomRegionsAreSurvivedByEveryOperation)
{
    open();
    std::mt19937 random(20250131);
    const std::string listText = MAAccountInfo::toJSON(Accounts(20, listWithTitle("t").front()));
    for (int round = 0; round < stressed(50); ++round) {
        const auto spoil = [&] {
            putText(0, 1024, R"({"mode":1,"pin":"p","x":2147483647,"w":2147483647,"h":9})");
            putText(1024, 102400, listText);
            for (int change = 0; change < round % 7; ++change) {
                segment()[random() % 60] = static_cast<char>(random());
                segment()[1024 + random() % listText.size()] = static_cast<char>(random());
            }
        };
        spoil();
        manager.switchToCurrentPin();
        spoil();
        manager.popupMainWindow(true);
        manager.popupMainWindow(false);
        spoil();
        manager.changeMergeMode(round % 2, true);
        spoil();
        manager.sortAllAccount({{"t", 3}});
        manager.changeCurrentUnread(round + 1);
        manager.changeCurrentSkin(round + 1);
        spoil();
        EXPECT_EQ(manager.quitCurrentAccount(), 1);
        spoil();
        ASSERT_TRUE(manager.join("own"));
    }
}

TEST_F(MAStoreTest, RandomRegionsAreReadWithoutHarm)
{
    open();
    const int rounds = stressed(300);
    std::mt19937 random(20240229);
    const auto below = [&random](std::size_t limit) {
        return static_cast<std::size_t>(random()) % limit;
    };
    const std::string selectedText = selectedWithTitle("\xe5\xbc\xa0").toJSON();
    const std::string listText = MAAccountInfo::toJSON(Accounts(20, listWithTitle("t").front()));
    for (int round = 0; round < rounds; ++round) {
        if (round % 3 == 0) {
            for (int at = 0; at < 103424; ++at)
                segment()[at] = static_cast<char>(random());
        } else {
            putText(0, 1024, selectedText);
            putText(1024, 102400, listText);
            for (int change = 0; change < 5; ++change) {
                segment()[below(selectedText.size())] = static_cast<char>(random());
                segment()[1024 + below(listText.size())] = "[]{}\",:\\0-e.\0u/ "[below(17)];
            }
        }
        MASelectedAccount selected;
        Accounts list;
        ASSERT_TRUE(manager.readSelected(selected));
        ASSERT_TRUE(manager.readAll(list));
        // The same as is read from a copy behind which nothing may be touched.
        const std::string selectedBytes = bytes(0, 1024);
        MASelectedAccount expectedSelected;
        expectedSelected.parseJSON(selectedBytes.data(), 1024);
        ASSERT_EQ(selected.toJSON(), expectedSelected.toJSON());
        const std::string listBytes = bytes(1024, 102400);
        Accounts expectedList;
        MAAccountInfo::parseJSON(listBytes.data(), 102400, expectedList);
        ASSERT_EQ(MAAccountInfo::toJSON(list), MAAccountInfo::toJSON(expectedList));
        // What was read can be written, and read again as it was.
        ASSERT_TRUE(manager.writeAll(list));
        Accounts again;
        ASSERT_TRUE(manager.readAll(again));
        ASSERT_EQ(MAAccountInfo::toJSON(again), MAAccountInfo::toJSON(list));
    }
    EXPECT_TRUE(complaints().empty());
}
