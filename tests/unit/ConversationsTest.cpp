#include "tests/support/ChannelFixture.h"

namespace {

using Lines = std::vector<std::string>;

class ConversationsTest : public ChannelFixture
{
protected:
    void SetUp() override { ASSERT_TRUE(startUp()); }

    static void receive(const char* name, const char* arguments)
    {
        KTChannelManagerProbe::receive(QByteArray(R"({"name":")") + name + R"(","arguments":)" +
                                       arguments + "}");
    }

    void enter(KTChannelObserver* observer) { channel().enterMainUI(0, observer); }
};

} // namespace

TEST_F(ConversationsTest, ConversationWithTwoArgumentsHasAnEmptySecondTextAndNoSessionLine)
{
    enter(recordingObserver());
    receive("OpenLXWindow", R"(["buyer",3])");
    EXPECT_EQ(calls, Lines{"window 3  buyer"});
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(ConversationsTest, ConversationWithASecondTextIsLogged)
{
    enter(recordingObserver());
    receive("OpenLXWindow", R"(["buyer",-3,"order","more"])");
    EXPECT_EQ(calls, Lines{"window -3 order buyer"});
    EXPECT_EQ(log.complaints(), Lines{"WARN Open LX Session buyer, order, -3"});
}

TEST_F(ConversationsTest, ConversationBeforeTheMainWindowIsParkedAndReplayed)
{
    receive("OpenLXWindow", R"(["old",1,"gone"])");
    log.clear();
    receive("OpenLXWindow", R"(["buyer",3,"order"])");
    EXPECT_EQ(log.complaints(),
              (Lines{"WARN Open LX Session buyer, order, 3",
                     "WARN Open LX Window\xEF\xBC\x8C not initialized completed buyer, order, 3"}));
    const KTStartUpContext* context = KTChannelManagerProbe::context();
    EXPECT_EQ(context->windowType, 3);
    EXPECT_EQ(context->windowText1, "order");
    EXPECT_EQ(context->windowText2, "buyer");
    enter(recordingObserver());
    EXPECT_EQ(calls, Lines{"window 3 order buyer"}) << "the last one, once";
}

TEST_F(ConversationsTest, ParkedConversationOfKindZeroOrLessIsNotReplayed)
{
    receive("OpenLXWindow", R"(["buyer",0])");
    EXPECT_EQ(log.complaints(),
              Lines{"WARN Open LX Window\xEF\xBC\x8C not initialized completed buyer, , 0"});
    enter(recordingObserver());
    EXPECT_TRUE(calls.empty());
}

TEST_F(ConversationsTest, ConversationThatNobodyTakesIsLogged)
{
    enter(new KTChannelObserver);
    receive("OpenLXWindow", R"(["buyer",3])");
    EXPECT_EQ(log.complaints(), Lines{"ERROR Unprocessed Open LX Window"});
    enter(nullptr);
    receive("OpenLXWindow", R"(["buyer",3])");
    EXPECT_EQ(log.complaints(), Lines(2, "ERROR Unprocessed Open LX Window"));
}

TEST_F(ConversationsTest, GroupCallsTheObserverWithTheSecondTextFirst)
{
    enter(recordingObserver());
    receive("OpenLXGroup", R"(["first","second"])");
    EXPECT_EQ(calls, Lines{"group second first"});
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(ConversationsTest, GroupBeforeTheMainWindowIsParkedAndReplayed)
{
    receive("OpenLXGroup", R"(["first","second"])");
    EXPECT_EQ(log.complaints(),
              Lines{"WARN Open LX Group\xEF\xBC\x8C not initialized completed first, second"});
    const KTStartUpContext* context = KTChannelManagerProbe::context();
    EXPECT_EQ(context->groupText1, "second");
    EXPECT_EQ(context->groupText2, "first");
    enter(recordingObserver());
    EXPECT_EQ(calls, Lines{"group second first"});
}

TEST_F(ConversationsTest, ParkedGroupWithoutAFirstTextIsNotReplayed)
{
    receive("OpenLXGroup", R"(["","second"])");
    enter(recordingObserver());
    EXPECT_TRUE(calls.empty());
}

TEST_F(ConversationsTest, GroupThatNobodyTakesIsLogged)
{
    enter(new KTChannelObserver);
    receive("OpenLXGroup", R"(["first","second"])");
    EXPECT_EQ(log.complaints(), Lines{"ERROR Unprocessed Open LX Group first, second"});
}

TEST_F(ConversationsTest, ParkedRequestsAreReplayedConversationFirst)
{
    receive("OpenLXGroup", R"(["group",""])");
    receive("OpenLXWindow", R"(["buyer",1])");
    enter(recordingObserver());
    EXPECT_EQ(calls, (Lines{"window 1  buyer", "group  group"}));
}

TEST_F(ConversationsTest, TrayListGetsTheRectangleOfTheEdges)
{
    KTChannelObserver* observer = recordingObserver();
    QRect rectangle;
    bool shown = false;
    observer->onShowUnreadMessageList = [&](bool show, QRect r) {
        shown = show;
        rectangle = r;
    };
    enter(observer);
    receive("ShowUnreadMessageList", "[true,10,20,30,60]");
    EXPECT_TRUE(shown);
    EXPECT_EQ(rectangle, QRect(10, 20, 20, 40));
    EXPECT_EQ(rectangle.topLeft(), QPoint(10, 20));
    EXPECT_EQ(rectangle.width(), 20);
    EXPECT_EQ(rectangle.height(), 40);
    receive("ShowUnreadMessageList", "[false,-5,-6,-5,-6,\"more\"]");
    EXPECT_FALSE(shown);
    EXPECT_EQ(rectangle, QRect(-5, -6, 0, 0));
    receive("ShowUnreadMessageList", "[true,30,60,10,20]");
    EXPECT_EQ(rectangle, QRect(30, 60, -20, -40));
}

TEST_F(ConversationsTest, TrayListOfHostileEdgesWrapsAround)
{
    enter(recordingObserver());
    receive("ShowUnreadMessageList", "[true,2147483647,-2147483648,-2147483648,2147483647]");
    EXPECT_EQ(calls, Lines{"tray list show 2147483647 -2147483648 to 2147483647 2147483646"});
}

TEST_F(ConversationsTest, TrayListWithFourArgumentsOrNobodyDoesNothing)
{
    receive("ShowUnreadMessageList", "[true,10,20,30,60]");
    enter(new KTChannelObserver);
    receive("ShowUnreadMessageList", "[true,10,20,30,60]");
    enter(recordingObserver());
    receive("ShowUnreadMessageList", "[true,10,20,30]");
    EXPECT_TRUE(calls.empty());
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(ConversationsTest, AccusationRequestHandsOnTheUrl)
{
    enter(recordingObserver());
    receive("Request", R"([{"api":"showLXAccusation","url":"page?id=1&x=2"},"more"])");
    receive("Request", R"([{"api":"showLXAccusation"}])");
    EXPECT_EQ(calls, (Lines{"request page?id=1&x=2", "request "}));
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(ConversationsTest, AccusationRequestThatNobodyTakesIsLogged)
{
    receive("Request", R"([{"api":"showLXAccusation","url":"early"}])");
    enter(new KTChannelObserver);
    receive("Request", R"([{"api":"showLXAccusation","url":"late"}])");
    EXPECT_EQ(log.complaints(), (Lines{"ERROR Unprocessed accusation detail, early",
                                       "ERROR Unprocessed accusation detail, late"}));
}

TEST_F(ConversationsTest, OtherApisAreNotImplemented)
{
    enter(recordingObserver());
    receive("Request", R"([{"api":"showlxaccusation","url":"u"}])");
    receive("Request", R"([{"url":"u"}])");
    receive("Request", R"(["showLXAccusation"])");
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(log.complaints(),
              (Lines{"ERROR api not implemented showlxaccusation", "ERROR api not implemented ",
                     "ERROR api not implemented "}));
}

TEST_F(ConversationsTest, ArgumentsThatAreTooFewOrNoArrayAreIgnoredInSilence)
{
    enter(recordingObserver());
    for (const char* name : {"OpenLXWindow", "OpenLXGroup", "ShowUnreadMessageList", "Request"}) {
        for (const char* arguments : {"[]", "null", "1", "\"text\"", "{\"a\":1,\"b\":2,\"c\":3}"})
            receive(name, arguments);
    }
    receive("OpenLXWindow", R"(["one"])");
    receive("OpenLXGroup", R"(["one"])");
    EXPECT_TRUE(calls.empty());
    EXPECT_TRUE(log.complaints().empty());
}
