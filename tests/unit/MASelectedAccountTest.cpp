#include "ipc/MultiAccount/MAMessageParam.h"
#include "ipc/MultiAccount/MAObserver.h"
#include "tests/support/AwkwardTexts.h"

#include <gtest/gtest.h>

#include <QRect>

#include <functional>
#include <limits>
#include <tuple>
#include <type_traits>

namespace {

auto fields(const MASelectedAccount& s)
{
    return std::tie(s.mode, s.appID, s.pin, s.className, s.title, s.windowState, s.x, s.y, s.w,
                    s.h);
}

MASelectedAccount filled()
{
    MASelectedAccount selected;
    selected.setAccount("app", "pin", "class", "title");
    selected.setWindowRect(QRect(-5, 6, 700, 800), 1);
    selected.mode = 0;
    return selected;
}

bool parse(const std::string& text, MASelectedAccount& out)
{
    return out.parseJSON(text.data(), static_cast<int>(text.size()));
}

template<typename Type>
constexpr bool kIsValueType =
    std::is_default_constructible_v<Type>&& std::is_copy_constructible_v<Type>&&
        std::is_copy_assignable_v<Type>&& std::is_move_constructible_v<Type>&&
            std::is_move_assignable_v<Type> &&
    !std::is_polymorphic_v<Type>;

} // namespace

static_assert(kIsValueType<MASelectedAccount>);
static_assert(kIsValueType<MAMessageParam>);
static_assert(kIsValueType<MAObserver>);

TEST(MASelectedAccountTest, StartsMergedAndEmpty)
{
    const std::string none;
    EXPECT_EQ(fields(MASelectedAccount()),
              std::make_tuple(1, none, none, none, none, 0, 0, 0, 0, 0));
    EXPECT_TRUE(MASelectedAccount().mergeWindow());
    EXPECT_TRUE(MAMessageParam().selected.mergeWindow());
    EXPECT_TRUE(MAMessageParam().accounts.empty());
}

TEST(MASelectedAccountTest, OnlyModeOneIsMerged)
{
    for (const int mode : {0, 2, -1, std::numeric_limits<int>::max()}) {
        MASelectedAccount selected;
        selected.mode = mode;
        EXPECT_FALSE(selected.mergeWindow()) << mode;
    }
}

TEST(MASelectedAccountTest, CopiesAndMovesEveryField)
{
    const MASelectedAccount original = filled();
    MASelectedAccount copy(original);
    MASelectedAccount moved(std::move(copy));
    MASelectedAccount assigned;
    assigned = moved;
    const MASelectedAccount& self = assigned;
    assigned = self;
    MASelectedAccount target;
    target = std::move(assigned);
    EXPECT_EQ(fields(moved), fields(original));
    EXPECT_EQ(fields(target), fields(original));
}

TEST(MASelectedAccountTest, SetAccountKeepsTheNumbers)
{
    MASelectedAccount selected = filled();
    selected.setAccount("a", "p", "c", "t");
    EXPECT_EQ(fields(selected), std::make_tuple(0, "a", "p", "c", "t", 1, -5, 6, 700, 800));
}

TEST(MASelectedAccountTest, RectangleIsRememberedInTheNormalStateOnly)
{
    MASelectedAccount selected = filled();
    for (const int state : {2, 3, 4, 0, -1}) {
        selected.setWindowRect(QRect(1, 2, 3, 4), state);
        EXPECT_EQ(fields(selected),
                  std::make_tuple(0, "app", "pin", "class", "title", state, -5, 6, 700, 800));
    }
    selected.setWindowRect(QRect(1, 2, 3, 4), 1);
    EXPECT_EQ(fields(selected), std::make_tuple(0, "app", "pin", "class", "title", 1, 1, 2, 3, 4));
    selected.setWindowRect(QRect(), 1);
    EXPECT_EQ(fields(selected), std::make_tuple(0, "app", "pin", "class", "title", 1, 0, 0, 0, 0));
}

TEST(MASelectedAccountTest, WritesEveryField)
{
    EXPECT_EQ(filled().toJSON(),
              R"({"appID":"app","className":"class","h":800,"mode":0,"pin":"pin",)"
              R"("title":"title","w":700,"windowState":1,"x":-5,"y":6})");
}

TEST(MASelectedAccountTest, EveryExtremeSurvivesTheRoundTrip)
{
    std::vector<MASelectedAccount> all;
    for (const int number : {std::numeric_limits<int>::min(), -1, std::numeric_limits<int>::max()})
        for (int MASelectedAccount::*member :
             {&MASelectedAccount::mode, &MASelectedAccount::windowState, &MASelectedAccount::x,
              &MASelectedAccount::y, &MASelectedAccount::w, &MASelectedAccount::h})
            all.emplace_back().*member = number;
    for (const std::string& text : awkwardTexts())
        for (std::string MASelectedAccount::*member :
             {&MASelectedAccount::appID, &MASelectedAccount::pin, &MASelectedAccount::className,
              &MASelectedAccount::title})
            all.emplace_back().*member = text;
    for (const MASelectedAccount& selected : all) {
        const std::string text = selected.toJSON();
        EXPECT_EQ(text.find('\0'), std::string::npos);
        MASelectedAccount read = filled();
        ASSERT_TRUE(parse(text, read)) << text;
        EXPECT_EQ(fields(read), fields(selected)) << text;
    }
}

TEST(MASelectedAccountTest, MissingAndMistypedMembersGiveDefaults)
{
    for (const char* text :
         {"{}", "[]", "[1,2]", "null", "7", "\"text\"", "true", R"({"colour":"red"})",
          R"({"mode":"0","appID":1,"pin":null,"className":[],"title":{},"windowState":true})",
          R"({"x":1.5,"y":2147483648,"w":"3","h":-2147483649})"}) {
        MASelectedAccount selected = filled();
        ASSERT_TRUE(parse(text, selected)) << text;
        EXPECT_EQ(fields(selected), fields(MASelectedAccount())) << text;
    }
}

TEST(MASelectedAccountTest, LastOfDuplicatedKeysCounts)
{
    MASelectedAccount selected;
    ASSERT_TRUE(parse(R"({"mode":5,"mode":0,"pin":"a","pin":"b"})", selected));
    EXPECT_EQ(selected.mode, 0);
    EXPECT_EQ(selected.pin, "b");
}

TEST(MASelectedAccountTest, LayoutAndTrailingNulBytesDoNotMatter)
{
    for (const std::string& tail :
         {std::string(), std::string(1000, '\0'), std::string("\0}rubbish", 9)}) {
        MASelectedAccount selected;
        ASSERT_TRUE(parse("\n{ \"pin\" :\t\"p\",\r\n \"w\" : 9 }\n " + tail, selected));
        EXPECT_EQ(selected.pin, "p");
        EXPECT_EQ(selected.w, 9);
    }
}

TEST(MASelectedAccountTest, WhatIsNoDocumentLeavesTheRecordAlone)
{
    MASelectedAccount selected = filled();
    for (const char* text : {"", " ", "{", "{\"mode\":1", "{}x", "{\"mode\":1,}", "{'mode':1}"})
        EXPECT_FALSE(parse(text, selected)) << text;
    EXPECT_FALSE(parse(std::string(1024, '\0'), selected));
    EXPECT_FALSE(parse(std::string(1024, '['), selected));
    EXPECT_FALSE(selected.parseJSON(nullptr, 2));
    EXPECT_FALSE(selected.parseJSON("{}", 0));
    EXPECT_FALSE(selected.parseJSON("{}", -1));
    EXPECT_FALSE(selected.parseJSON("{}", 1));
    EXPECT_EQ(fields(selected), fields(filled()));
}

TEST(MAObserverTest, CopiesAndMovesBothCallables)
{
    int code = 0;
    int state = 0;
    MAObserver original;
    original.messageCallback = [&](int c, MASelectedAccount&, std::list<MAAccountInfo>&) {
        code = c;
    };
    original.loginStateCallback = [&](int s) { state = s; };
    MAObserver copy(original);
    MAObserver moved;
    moved = std::move(copy);
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    moved.messageCallback(3, selected, accounts);
    moved.loginStateCallback(4);
    EXPECT_EQ(code, 3);
    EXPECT_EQ(state, 4);
    EXPECT_THROW(MAObserver().loginStateCallback(1), std::bad_function_call);
}
