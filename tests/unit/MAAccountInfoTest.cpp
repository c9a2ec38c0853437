#include "ipc/MultiAccount/MAAccountInfo.h"

#include "tests/support/AwkwardTexts.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <type_traits>

namespace {

using Accounts = std::list<MAAccountInfo>;

auto fields(const MAAccountInfo& a)
{
    return std::tie(a.appID, a.pin, a.className, a.title, a.idx, a.unread, a.unreadMark, a.skin,
                    a.loginState);
}

MAAccountInfo filled()
{
    MAAccountInfo account;
    account.appID = "app";
    account.pin = "pin";
    account.className = "class";
    account.title = "title";
    account.idx = 1;
    account.unread = 2;
    account.unreadMark = 3;
    account.skin = 4;
    account.loginState = 5;
    return account;
}

bool parse(const std::string& text, Accounts& out)
{
    return MAAccountInfo::parseJSON(text.data(), static_cast<int>(text.size()), out);
}

Accounts parsed(const std::string& text)
{
    Accounts out;
    EXPECT_TRUE(parse(text, out)) << text;
    return out;
}

} // namespace

static_assert(std::is_default_constructible_v<MAAccountInfo>);
static_assert(std::is_copy_constructible_v<MAAccountInfo>);
static_assert(std::is_copy_assignable_v<MAAccountInfo>);
static_assert(std::is_nothrow_move_constructible_v<MAAccountInfo>);
static_assert(std::is_nothrow_move_assignable_v<MAAccountInfo>);

TEST(MAAccountInfoTest, StartsEmpty)
{
    const std::string none;
    EXPECT_EQ(fields(MAAccountInfo()), std::make_tuple(none, none, none, none, 0, 0, 0, 0, 0));
}

TEST(MAAccountInfoTest, CopiesAndMovesEveryField)
{
    const MAAccountInfo original = filled();
    MAAccountInfo copy(original);
    EXPECT_EQ(fields(copy), fields(original));
    MAAccountInfo moved(std::move(copy));
    EXPECT_EQ(fields(moved), fields(original));
    MAAccountInfo assigned;
    assigned = moved;
    EXPECT_EQ(fields(assigned), fields(original));
    const MAAccountInfo& self = assigned;
    assigned = self;
    EXPECT_EQ(fields(assigned), fields(original));
    MAAccountInfo target;
    target = std::move(assigned);
    EXPECT_EQ(fields(target), fields(original));
}

TEST(MAAccountInfoTest, SetAccountTakesSkinBeforeUnreadAndKeepsTheRest)
{
    MAAccountInfo account = filled();
    account.setAccount("a", "p", "c", "t", 30, 70);
    EXPECT_EQ(fields(account), std::make_tuple("a", "p", "c", "t", 1, 70, 3, 30, 5));
    account = filled();
    account.setAccount("a", "p", 30, 70);
    EXPECT_EQ(fields(account), std::make_tuple("a", "p", "class", "title", 1, 70, 3, 30, 5));
}

TEST(MAAccountInfoTest, EqualAccountComparesBothTextsByteForByte)
{
    const MAAccountInfo account = filled();
    EXPECT_TRUE(account.equalAccount("app", "pin"));
    EXPECT_FALSE(account.equalAccount("app", "PIN"));
    EXPECT_FALSE(account.equalAccount("App", "pin"));
    EXPECT_FALSE(account.equalAccount("app", "pin "));
    EXPECT_FALSE(account.equalAccount("app", "pi"));
    EXPECT_FALSE(account.equalAccount("pin", "app"));
    EXPECT_FALSE(account.equalAccount("app", std::string("pin\0", 4)));
    EXPECT_TRUE(MAAccountInfo().equalAccount("", ""));
}

TEST(MAAccountInfoTest, OrderIsThatOfTheSignedIndex)
{
    Accounts list(4);
    const int indexes[] = {2, -1, 2, std::numeric_limits<int>::min()};
    int position = 0;
    for (MAAccountInfo& account : list) {
        account.idx = indexes[position];
        account.pin = std::to_string(position++);
    }
    EXPECT_FALSE(MAAccountInfo::compareByIndex(list.front(), list.front()));
    list.sort(&MAAccountInfo::compareByIndex);
    std::string order;
    for (const MAAccountInfo& account : list)
        order += account.pin;
    EXPECT_EQ(order, "3102") << "equal indexes keep their order";
}

TEST(MAAccountInfoTest, WritesEveryFieldOfEveryAccount)
{
    EXPECT_EQ(MAAccountInfo::toJSON({filled(), MAAccountInfo()}),
              R"([{"appID":"app","className":"class","idx":1,"loginState":5,"pin":"pin","skin":4,)"
              R"("title":"title","unread":2,"unreadMark":3},)"
              R"({"appID":"","className":"","idx":0,"loginState":0,"pin":"","skin":0,"title":"",)"
              R"("unread":0,"unreadMark":0}])");
}

TEST(MAAccountInfoTest, NoAccountsAreWrittenAsNullWhichReadingRefuses)
{
    EXPECT_EQ(MAAccountInfo::toJSON({}), "null");
    Accounts list;
    EXPECT_FALSE(parse("null", list));
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(parse("[]", list));
    EXPECT_TRUE(list.empty());
}

TEST(MAAccountInfoTest, EveryExtremeSurvivesTheRoundTrip)
{
    Accounts list;
    for (const int number : {std::numeric_limits<int>::min(), -1, std::numeric_limits<int>::max()})
        for (int MAAccountInfo::*member :
             {&MAAccountInfo::idx, &MAAccountInfo::unread, &MAAccountInfo::unreadMark,
              &MAAccountInfo::skin, &MAAccountInfo::loginState})
            list.emplace_back().*member = number;
    for (const std::string& text : awkwardTexts())
        for (std::string MAAccountInfo::*member :
             {&MAAccountInfo::appID, &MAAccountInfo::pin, &MAAccountInfo::className,
              &MAAccountInfo::title})
            list.emplace_back().*member = text;
    const std::string text = MAAccountInfo::toJSON(list);
    EXPECT_EQ(text.find('\0'), std::string::npos) << "a NUL would end the text for its readers";
    const Accounts read = parsed(text);
    ASSERT_EQ(read.size(), list.size());
    auto expected = list.begin();
    for (const MAAccountInfo& account : read)
        EXPECT_EQ(fields(account), fields(*expected++));
}

TEST(MAAccountInfoTest, BytesThatAreNoUtf8ComeBackAsTheyWere)
{
    MAAccountInfo account;
    account.title = "\xff\xc0\x80 \xed\xa0\x80 \xe5\xbc";
    EXPECT_EQ(parsed(MAAccountInfo::toJSON({account})).front().title, account.title);
}

TEST(MAAccountInfoTest, AppendsBehindWhatTheListHolds)
{
    Accounts list(2);
    list.front().pin = "first";
    list.back().pin = "second";
    ASSERT_TRUE(parse(R"([{"pin":"third"},{"pin":"fourth"}])", list));
    std::string pins;
    for (const MAAccountInfo& account : list)
        pins += account.pin + ' ';
    EXPECT_EQ(pins, "first second third fourth ");
}

TEST(MAAccountInfoTest, MissingUnknownAndMistypedMembersGiveDefaults)
{
    const auto list =
        parsed(R"([{}, {"appID":1,"pin":null,"className":[],"title":{},"idx":"1",)"
               R"("unread":1.5,"unreadMark":2147483648,"skin":true,"loginState":[1]},)"
               R"({"pin":"p","colour":"red","idx":3.0}, 7, null, "text", [1]])");
    ASSERT_EQ(list.size(), 7U);
    MAAccountInfo known;
    known.pin = "p";
    known.idx = 3;
    int position = 0;
    for (const MAAccountInfo& account : list)
        EXPECT_EQ(fields(account), fields(position++ == 2 ? known : MAAccountInfo()));
}

TEST(MAAccountInfoTest, AccountWithoutIndexSortsBeforeEveryPositiveOne)
{
    Accounts list = parsed(R"([{"pin":"with","idx":1},{"pin":"without"}])");
    list.sort(&MAAccountInfo::compareByIndex);
    EXPECT_EQ(list.front().pin, "without");
    EXPECT_EQ(list.front().idx, 0);
}

TEST(MAAccountInfoTest, LastOfDuplicatedKeysCounts)
{
    EXPECT_EQ(parsed(R"([{"pin":"a","pin":"b","idx":1,"idx":2}])").front().pin, "b");
}

TEST(MAAccountInfoTest, LayoutAndTrailingNulBytesDoNotMatter)
{
    const std::string text = " [\n\t{ \"pin\" : \"p\" ,\r\n \"idx\" : 9 }\n] ";
    for (const std::string& tail : {std::string(), std::string(1, '\0'), std::string(100000, '\0'),
                                    std::string("\0]rubbish", 9)}) {
        const Accounts list = parsed(text + tail);
        ASSERT_EQ(list.size(), 1U);
        EXPECT_EQ(list.front().pin, "p");
        EXPECT_EQ(list.front().idx, 9);
    }
}

TEST(MAAccountInfoTest, WhatIsNoArrayIsRefusedAndNothingAppended)
{
    Accounts list(1);
    for (const char* text : {"", " ", "{}", R"({"appID":"a"})", "1", "\"text\"", "true", "[", "[{}",
                             "[{}]x", "[{},]", "['a']", "[{}] // note"})
        EXPECT_FALSE(parse(text, list)) << text;
    EXPECT_FALSE(parse(std::string(102400, '\0'), list));
    EXPECT_FALSE(parse(std::string(102400, '['), list));
    EXPECT_FALSE(MAAccountInfo::parseJSON(nullptr, 2, list));
    EXPECT_FALSE(MAAccountInfo::parseJSON("[]", 0, list));
    EXPECT_FALSE(MAAccountInfo::parseJSON("[]", -1, list));
    EXPECT_EQ(list.size(), 1U);
}

TEST(MAAccountInfoTest, OnlyTheGivenLengthIsRead)
{
    Accounts list;
    EXPECT_TRUE(MAAccountInfo::parseJSON("[{}]rubbish", 4, list));
    EXPECT_EQ(list.size(), 1U);
    EXPECT_FALSE(MAAccountInfo::parseJSON("[{}]", 3, list));
}
