#include "tests/support/LoginFixture.h"

#include "pavo_core/QLoginObserver.h"

using log4cplus::ERROR_LOG_LEVEL;

namespace {

using Texts = std::vector<std::string>;
using Numbers = std::vector<int>;

class LoginTest : public LoginFixture
{
protected:
    LoginTest() { service->addAccount("zhang.san", "token"); }

    static std::string callbackLine(int code, const std::string& pin, const QString& skin)
    {
        return std::to_string(code) + "|" + pin + "|" + skin.toStdString();
    }
};

/// Keeps calling an observer that was taken from it.
class KeepingService final : public LoginService
{
public:
    void hbxTokenLogin(const std::string&, const std::string&, const std::string&,
                       const std::string&, int, std::function<void(int, std::string)>) override
    {
    }
    void changeCurrentPin(const std::string&, const std::string&, std::function<void(int)>) override
    {
    }
    void switchPresence(int, int, std::function<void(int)>) override {}
    void addLoginObserver(QLoginObserver* added) override { observer = added; }
    void removeLoginObserver(QLoginObserver*) override { removed = true; }

    QLoginObserver* observer = nullptr;
    bool removed = false;
};

const QByteArray kLogin =
    R"({"name":"Login","arguments":["  Zhang.San\t",true,7,"client","extra","token"]})";

QByteArray outbound(const QByteArray& name, const QByteArray& arguments)
{
    return R"({"arguments":)" + arguments + R"(,"name":")" + name +
           R"(","sequence":0,"source":"lx"})";
}

} // namespace

TEST_F(LoginTest, PinIsTrimmedAndLowerCasedAndEachPositionGoesToItsParameter)
{
    std::vector<std::string> reports;
    ASSERT_TRUE(startUp([&](int code, const std::string& pin, const QString& skin) {
        reports.push_back(callbackLine(code, pin, skin));
    }));
    KTChannelManagerProbe::context()->skinName = "geekblue";
    hostSends(kLogin);
    EXPECT_EQ(nextMessage(), outbound("ChangeStatusCallback", "[1]"));
    EXPECT_EQ(reports, std::vector<std::string>{"1|zhang.san|geekblue"});
    const auto made = service->calls();
    ASSERT_EQ(made.size(), 2U);
    EXPECT_EQ(made[0].function, "changeCurrentPin");
    EXPECT_EQ(made[0].texts, (Texts{"im.waiter", "zhang.san"}));
    EXPECT_TRUE(made[0].hasCompletion);
    EXPECT_EQ(made[1].function, "hbxTokenLogin");
    EXPECT_EQ(made[1].texts, (Texts{"zhang.san", "token", "client", "extra"}));
    EXPECT_EQ(made[1].numbers, Numbers{7});
    EXPECT_FALSE(made[1].hasCompletion) << "the outcome comes back through the observer alone";
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"WARN startup app zhang.san"});
}

TEST_F(LoginTest, PinChangedCallbackIsCalledWhenTheServiceHasTakenThePin)
{
    Collector<std::string> changes;
    ASSERT_TRUE(channel().startUp(commandLine(), nullptr,
                                  [&](const std::string& application, const QString& pin) {
                                      changes.add(application + "|" + pin.toStdString());
                                  }));
    KTChannelManagerProbe::receive(kLogin);
    ASSERT_TRUE(changes.waitForCount(1));
    EXPECT_EQ(changes.values(), std::vector<std::string>{"im.waiter|zhang.san"});
}

TEST_F(LoginTest, FewerThanSixArgumentsAreRefusedWithTheirCount)
{
    ASSERT_TRUE(startUp());
    struct Row
    {
        const char* arguments;
        const char* count;
    };
    for (const Row& row : {Row{R"(["a",true,1,"b","c"])", "5"}, Row{"[]", "0"},
                           Row{R"({"a":1,"b":2,"c":3,"d":4,"e":5,"f":6})", "0"},
                           Row{R"("abcdef")", "0"}, Row{"null", "0"}, Row{"6", "0"}}) {
        log.clear();
        KTChannelManagerProbe::receive(QByteArray(R"({"name":"Login","arguments":)") +
                                       row.arguments + "}");
        EXPECT_EQ(log.complaints(),
                  std::vector<std::string>{std::string("WARN login agruments failed ") + row.count})
            << row.arguments;
    }
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(LoginTest, AfterTheMainWindowOnlyTheLoginItselfIsMade)
{
    bool called = false;
    ASSERT_TRUE(startUp([&](int, const std::string&, const QString&) { called = true; }));
    channel().enterMainUI(0, recordingObserver());
    KTChannelManagerProbe::receive(kLogin);
    EXPECT_FALSE(called);
    ASSERT_EQ(service->calls().size(), 1U);
    EXPECT_EQ(service->calls()[0].function, "hbxTokenLogin");
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(LoginTest, WithoutACoreNothingIsDone)
{
    bool called = false;
    ASSERT_TRUE(startUp([&](int, const std::string&, const QString&) { called = true; }));
    PAVOCore::setShareInstance(nullptr);
    KTChannelManagerProbe::receive(kLogin);
    EXPECT_FALSE(called);
    EXPECT_TRUE(log.complaints().empty());
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(LoginTest, CoreWithoutALoginServiceStillStartsTheWorkbench)
{
    PAVOCore bare;
    PAVOCore::setShareInstance(&bare);
    int code = 0;
    ASSERT_TRUE(
        startUp([&](int reported, const std::string&, const QString&) { code = reported; }));
    KTChannelManagerProbe::receive(kLogin);
    EXPECT_EQ(code, 1);
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"WARN startup app zhang.san"});
    KTChannelManagerProbe::receive(R"({"name":"ChangeStatus","arguments":[2]})");
    EXPECT_TRUE(log.has(ERROR_LOG_LEVEL, "Unprocessed swtich status, 2"));
    channel().addLoginObserver();
    channel().removeObserver();
}

TEST_F(LoginTest, StartUpCallbackMayBringTheLoginServiceAbout)
{
    PAVOCore bare;
    PAVOCore::setShareInstance(&bare);
    ASSERT_TRUE(startUp(
        [&](int, const std::string&, const QString&) { PAVOCore::setShareInstance(&core); }));
    KTChannelManagerProbe::receive(kLogin);
    ASSERT_EQ(service->calls().size(), 2U);
    EXPECT_EQ(service->calls()[0].function, "changeCurrentPin");
    EXPECT_EQ(service->calls()[1].function, "hbxTokenLogin");
}

TEST_F(LoginTest, StartUpCallbackMayEnterTheMainWindowAndThePinIsRegisteredAllTheSame)
{
    Collector<std::string> changes;
    std::vector<std::string> reports;
    ASSERT_TRUE(channel().startUp(
        commandLine(),
        [&](int code, const std::string& pin, const QString& skin) {
            channel().enterMainUI(0, nullptr);
            reports.push_back(callbackLine(code, pin, skin));
        },
        [&](const std::string&, const QString& pin) { changes.add(pin.toStdString()); }));
    KTChannelManagerProbe::context()->skinName = "red";
    KTChannelManagerProbe::receive(kLogin);
    EXPECT_FALSE(KTChannelManagerProbe::context());
    EXPECT_EQ(reports, std::vector<std::string>{"1|zhang.san|red"});
    ASSERT_TRUE(changes.waitForCount(1));
    EXPECT_EQ(serviceCalls("changeCurrentPin").size(), 1U);
    EXPECT_EQ(serviceCalls("hbxTokenLogin").size(), 1U);
}

TEST_F(LoginTest, FailedLoginShowsItsTextInAMessageBoxOfKindSix)
{
    ASSERT_TRUE(startUp());
    for (const long long code : {5LL, 88LL, 0LL, -1LL, 9000000000LL}) {
        service->reportLoginFailure("zhang.san", code, "refused");
        EXPECT_EQ(nextMessage(), outbound("ShowMessageBox", R"(["refused",6])")) << code;
    }
    hostSends(R"({"name":"Login","arguments":["zhang.san",true,7,"","","wrong"]})");
    EXPECT_TRUE(nextMessage().contains(R"("name":"ShowMessageBox")"));
}

TEST_F(LoginTest, PresenceReportSendsItsThirdValue)
{
    ASSERT_TRUE(startUp());
    service->reportPresence("zhang.san", 3, 7);
    EXPECT_EQ(nextMessage(), outbound("ChangeStatusCallback", "[7]"));
}

TEST_F(LoginTest, PresenceOfOneOrMoreIsForwardedWithoutACompletion)
{
    ASSERT_TRUE(startUp());
    for (const int status : {1, 2, 2147483647})
        KTChannelManagerProbe::receive(R"({"name":"ChangeStatus","arguments":[)" +
                                       QByteArray::number(status) + "]}");
    const auto made = serviceCalls("switchPresence");
    ASSERT_EQ(made.size(), 3U);
    EXPECT_EQ(made[0].numbers, (Numbers{1, 0}));
    EXPECT_EQ(made[2].numbers, (Numbers{2147483647, 0}));
    EXPECT_FALSE(made[0].hasCompletion);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(LoginTest, PresenceOfZeroOrLessIsRefused)
{
    ASSERT_TRUE(startUp());
    for (const char* status : {"0", "-1", "-2147483648"}) {
        KTChannelManagerProbe::receive(QByteArray(R"({"name":"ChangeStatus","arguments":[)") +
                                       status + "]}");
        EXPECT_TRUE(log.has(ERROR_LOG_LEVEL, std::string("Unprocessed swtich status, ") + status));
    }
    PAVOCore::setShareInstance(nullptr);
    KTChannelManagerProbe::receive(R"({"name":"ChangeStatus","arguments":[4]})");
    EXPECT_TRUE(log.has(ERROR_LOG_LEVEL, "Unprocessed swtich status, 4"));
    EXPECT_TRUE(serviceCalls("switchPresence").empty());
}

TEST_F(LoginTest, PresenceWithoutArgumentsIsIgnoredInSilence)
{
    ASSERT_TRUE(startUp());
    log.clear();
    for (const char* arguments : {"[]", "{\"0\":1}", "1", "null"})
        KTChannelManagerProbe::receive(QByteArray(R"({"name":"ChangeStatus","arguments":)") +
                                       arguments + "}");
    for (const std::string& line : log.lines())
        EXPECT_NE(line.find("recevie hbx message"), std::string::npos) << line;
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(LoginTest, StartUpRegistersOneObserverAndAnotherCallReplacesIt)
{
    EXPECT_EQ(service->observerCount(), 0U);
    ASSERT_TRUE(startUp());
    EXPECT_EQ(service->observerCount(), 1U);
    channel().addLoginObserver();
    EXPECT_EQ(service->observerCount(), 1U);
    service->reportPresence("zhang.san", 1, 2);
    service->reportPresence("zhang.san", 2, 3);
    EXPECT_EQ(nextMessage(), outbound("ChangeStatusCallback", "[2]"));
    EXPECT_EQ(nextMessage(), outbound("ChangeStatusCallback", "[3]")) << "reported once each";
    channel().removeObserver();
    EXPECT_EQ(service->observerCount(), 0U);
    channel().removeObserver();
    EXPECT_EQ(service->observerCount(), 0U);
}

TEST_F(LoginTest, ObserverStaysRegisteredWhileThereIsNoCoreToAsk)
{
    channel().addLoginObserver();
    PAVOCore::setShareInstance(nullptr);
    channel().removeObserver();
    EXPECT_EQ(service->observerCount(), 1U);
    PAVOCore::setShareInstance(&core);
    channel().removeObserver();
    EXPECT_EQ(service->observerCount(), 0U);
}

TEST_F(LoginTest, FailedStartUpRegistersNothing)
{
    EXPECT_FALSE(channel().startUp(QStringLiteral("nothing"), nullptr, nullptr));
    EXPECT_EQ(service->observerCount(), 0U);
}

TEST_F(LoginTest, ManagerThatGoesTakesItsObserverFromTheService)
{
    auto another = KTChannelManagerProbe::another();
    another->addLoginObserver();
    EXPECT_EQ(service->observerCount(), 1U);
    another.reset();
    EXPECT_EQ(service->observerCount(), 0U);
}

TEST_F(LoginTest, CallbacksAfterTheManagerHasGoneDoNothing)
{
    // A service that is still about to call back, whatever it was told.
    auto keeping = std::make_shared<KeepingService>();
    PAVOCore keepingCore(keeping);
    PAVOCore::setShareInstance(&keepingCore);
    auto another = KTChannelManagerProbe::another();
    another->addLoginObserver();
    ASSERT_TRUE(keeping->observer);
    const auto alive = KTChannelManagerProbe::aliveToken(*another);
    ASSERT_FALSE(alive.expired());
    another.reset();
    ASSERT_TRUE(keeping->removed);
    EXPECT_TRUE(alive.expired()) << "what the callbacks look at before they touch the manager";
    std::thread([&] {
        keeping->observer->onPresenceChanged("zhang.san", 1, 2);
        keeping->observer->onLoginFailure("zhang.san", 1, "late");
    }).join();
}

TEST_F(LoginTest, ManagerThatGoesLeavesTheMainWindowsObserverAlone)
{
    auto another = KTChannelManagerProbe::another();
    auto held = std::make_shared<int>(0);
    auto* observer = new KTChannelObserver;
    observer->onOpenBaseInfoSetting = [held] { ++*held; };
    another->enterMainUI(0, observer);
    another.reset();
    EXPECT_EQ(held.use_count(), 2);
    delete observer;
}

TEST_F(LoginTest, SecondStartUpRegistersOneObserverAndReplacesTheCallbacks)
{
    int first = 0;
    int second = 0;
    ASSERT_TRUE(startUp([&](int, const std::string&, const QString&) { ++first; }));
    KTChannelManagerProbe::receive(R"({"name":"OpenLXGroup","arguments":["parked","text"]})");
    ASSERT_TRUE(channel().startUp(
        QStringLiteral("pipe?param=nowhere&nowhere"),
        [&](int, const std::string&, const QString&) { ++second; }, nullptr));
    EXPECT_EQ(service->observerCount(), 1U);
    KTChannelManagerProbe::receive(kLogin);
    EXPECT_EQ(first, 0);
    EXPECT_GE(second, 1);
    channel().enterMainUI(0, recordingObserver());
    EXPECT_EQ(calls, std::vector<std::string>{"group text parked"}) << "still parked";
}

TEST_F(LoginTest, ReportsWithoutAChannelAreDropped)
{
    channel().loginFailure("zhang.san", 5, "text");
    channel().changeStatusCallback(1);
    channel().changeLoginInitStatus(1);
    EXPECT_TRUE(log.records().empty());
}
