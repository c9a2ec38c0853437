// What a manager takes of the stream of native messages, and how it reads their parameters.

#include "tests/support/Workbenches.h"

#include <limits>
#include <random>

namespace {

using Texts = std::vector<std::string>;

constexpr long kMin = std::numeric_limits<std::int32_t>::min();
constexpr long kMax = std::numeric_limits<std::int32_t>::max();

class MANativeEventTest : public WorkbenchesFixture
{
protected:
    bool handle(long code, long value = 0)
    {
        return a.manager.handleNativeEvent(a.manager.messageId(), code, value);
    }

    static Texts handled(const std::string& numbers, bool isKnown)
    {
        Texts lines{"DEBUG handle Native Event " + numbers};
        if (!isKnown)
            lines.push_back("WARN unprocessed cross process messages " + numbers);
        return lines;
    }

    /// Every number that a message can have, and what is far beyond.
    template<typename Check>
    static void forEachMessage(Check check)
    {
        for (unsigned int message = 0; message <= 0x10000; ++message)
            check(message);
        for (const unsigned int message : {0x7fffffffU, 0x80000000U, 0xfffffffeU, 0xffffffffU})
            check(message);
    }
};

} // namespace

TEST_F(MANativeEventTest, TakesNoMessageButItsOwn)
{
    joinAll();
    const unsigned int own = a.manager.messageId();
    forEachMessage([&](unsigned int message) {
        if (message != own) {
            ASSERT_FALSE(a.manager.handleNativeEvent(message, kMAListChanged, 0)) << message;
        }
    });
    EXPECT_TRUE(log.records().empty());
    EXPECT_TRUE(a.calls.empty());
    EXPECT_TRUE(a.manager.handleNativeEvent(own, kMAListChanged, 0));
    EXPECT_EQ(a.calls.size(), 1U);
    // The upper half is no part of a registered message's number.
    EXPECT_FALSE(a.manager.handleNativeEvent(own | 0x10000U, kMAListChanged, 0));
}

TEST_F(MANativeEventTest, BeforeRegistrationTakesMessageZeroAlone)
{
    forEachMessage([&](unsigned int message) {
        if (message != 0) {
            ASSERT_FALSE(a.manager.handleNativeEvent(message, kMAListChanged, 0)) << message;
        }
    });
    EXPECT_TRUE(log.records().empty());
    for (const long code : {1L, 2L, 5L, 9L}) {
        EXPECT_TRUE(a.manager.handleNativeEvent(0, code, 3));
        EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL,
                            "handle Native Event " + std::to_string(code) + ", 3"));
    }
    EXPECT_EQ(a.calls, (Texts{"1  0 []", "2  0 []", "login state 3"}));
    EXPECT_EQ(complaints(), Texts{"WARN unprocessed cross process messages 9, 3"});
}

TEST_F(MANativeEventTest, ReadsUnknownCodesOfEveryValue)
{
    joinAll();
    std::vector<long> codes{kMin, kMin + 1, -0x10000, -9,     -8,      -2,       -1,
                            0,    9,        10,       0xffff, 0x10001, kMax - 1, kMax};
    std::mt19937 random(20261120);
    std::uniform_int_distribution<std::int32_t> any(std::numeric_limits<std::int32_t>::min());
    for (int i = 0; i < 2000; ++i)
        codes.push_back(any(random));
    for (const long code : codes) {
        const long value = any(random);
        log.clear();
        ASSERT_TRUE(handle(code, value));
        ASSERT_EQ(logged(), handled(std::to_string(code) + ", " + std::to_string(value), false));
        ASSERT_TRUE(a.calls.empty());
    }
}

TEST_F(MANativeEventTest, HandsOnLoginStatesOfEveryValue)
{
    joinAll();
    for (const long value : {kMin, kMin + 1, -1L, 0L, 1L, kMax - 1, kMax}) {
        forget();
        EXPECT_TRUE(handle(kMALoginState, value));
        EXPECT_EQ(a.calls, Texts{"login state " + std::to_string(value)});
        EXPECT_EQ(logged(), handled("5, " + std::to_string(value), true));
    }
}

TEST_F(MANativeEventTest, UsesTheLower32BitsOfBothParameters)
{
    struct Wide
    {
        std::int64_t code;
        std::int64_t value;
        const char* numbers; ///< as logged
        bool isKnown;
        Texts calls;
    };
    // The sender's parameters have 64 bits, whatever a long has here.
    const Wide wide[] = {
        {0x1'0000'0003, 0, "3, 0", true, {"3 a 0 [a b c]"}},
        {-0x7fff'ffff'0000'0000 + 4,
         0x5'0000'0001,
         "4, 1",
         true,
         {"3 a 0 [a b c]", "4 a 0 [a b c]"}},
        {4, 0x1'0000'0002, "4, 2", true, {"3 a 0 [a b c]"}},
        {5, 0xffff'ffff, "5, -1", true, {"login state -1"}},
        {5, 0x1'8000'0000, "5, -2147483648", true, {"login state -2147483648"}},
        {0x1'0000'0000, 0x7'0000'0000, "0, 0", false, {}},
        {0xffff'ffff, 0x8000'0000, "-1, -2147483648", false, {}},
        {0x8000'0003, 1, "-2147483645, 1", false, {}},
    };
    joinAll();
    for (const Wide& each : wide) {
        SCOPED_TRACE(each.numbers);
        forget();
        EXPECT_TRUE(handle(static_cast<long>(each.code), static_cast<long>(each.value)));
        EXPECT_EQ(a.calls, each.calls);
        EXPECT_EQ(logged(), handled(each.numbers, each.isKnown));
    }
}

TEST_F(MANativeEventTest, ReadsWideParametersThatWerePosted)
{
    joinAll();
    const unsigned int message = a.manager.messageId();
    ASSERT_TRUE(PostMessageA(a.window.handle(), message, 0x9'0000'0005, 0x9'0000'0007));
    settle();
    EXPECT_EQ(a.calls, Texts{"login state 7"});
}
