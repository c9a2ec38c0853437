#include "tests/support/LoginFixture.h"
#include "tests/support/RepeatingThreads.h"

#include "pavo_base/Logger.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
const QString kWide = QString::fromUtf8("\xE9\x94\x99\xE8\xAF\xAF");
const QByteArray kWideUtf8 = kWide.toUtf8();

struct Row
{
    const char* name;
    std::function<void(KTChannelManager&)> send;
    QByteArray arguments;
};

/// Every outbound message with awkward values; the senders are called as the workbench does.
const std::vector<Row>& rows()
{
    static const std::vector<Row> all = {
        {"ActivePlatform", [](auto& c) { c.activePlatform(); }, "[]"},
        {"BaseInfoChanged", [](auto& c) { c.baseInfoChanged("a\"b\\c\n"); }, R"(["a\"b\\c\n"])"},
        {"BaseInfoChanged", [](auto& c) { c.baseInfoChanged(""); }, R"([""])"},
        {"ChangeLoginInitStatus", [](auto& c) { c.changeLoginInitStatus(kMin); }, "[-2147483648]"},
        {"ChangeSkin", [](auto& c) { c.changeSkinCallback(4); }, R"(["lakeblue"])"},
        {"ChangeSkin", [](auto& c) { c.changeSkinCallback(99); }, R"(["blue"])"},
        {"ChangeStatusCallback", [](auto& c) { c.changeStatusCallback(0); }, "[0]"},
        {"OpenPlugin", [](auto& c) { c.openPlugin("plug", true); }, R"(["plug",true])"},
        {"OpenSetting", [](auto& c) { c.openSetting("page"); }, R"(["page"])"},
        {"OpenUrl", [](auto& c) { c.openUrl("link?a=1&b=2", false); }, R"(["link?a=1&b=2",false])"},
        {"ShowMessageBox", [](auto& c) { c.loginFailure("who", 88, "text"); }, R"(["text",6])"},
        {"StartupCompleted", [](auto& c) { c.enterMainUI(4000000000U, nullptr); },
         R"([4000000000,""])"},
        {"TrayIconAction", [](auto& c) { c.trayIconAction(true, "", 0); }, R"([true,"",0])"},
        {"UnreadMessageChanged", [](auto& c) { c.unreadMsgChanged(-1); }, "[-1]"},
        {"UploadCefException",
         [](auto& c) {
             c.UploadCefException(1, QStringLiteral("a"), {}, QStringLiteral("c"), kWide,
                                  QStringLiteral("e"));
         },
         R"([1,"a","","c",")" + kWideUtf8 + R"(","e"])"},
        {"UploadInterfaceException",
         [](auto& c) {
             c.UploadInterfaceException(-1, kWide, QStringLiteral("b"), QStringLiteral("c"));
         },
         R"([-1,")" + kWideUtf8 + R"(","b","c"])"}};
    return all;
}

QByteArray wholeText(const Row& row)
{
    return R"({"arguments":)" + row.arguments + R"(,"name":")" + row.name +
           R"(","sequence":0,"source":"lx"})";
}

/// What is written is counted in UTF-16 units, so a text with wide characters comes cut.
QByteArray onThePipe(const Row& row)
{
    const QByteArray text = wholeText(row);
    return frame(text).left(4 + QString::fromUtf8(text).size());
}

class NotificationsTest : public LoginFixture
{
};

} // namespace

TEST_F(NotificationsTest, EveryMessageHasItsNameAndItsArgumentsInOrderAndType)
{
    ASSERT_TRUE(startUp());
    for (const Row& row : rows()) {
        row.send(channel());
        const QByteArray whole = wholeText(row);
        EXPECT_NE(nextMessage(), "no message") << row.name;
        EXPECT_EQ(fromWorkbench.messages().values().back(), onThePipe(row)) << row.name;
    }
}

TEST_F(NotificationsTest, NothingIsSentOrLoggedBeforeStartUp)
{
    for (const Row& row : rows())
        row.send(channel());
    for (const LogRecord& record : log.records())
        EXPECT_EQ(record.text.rfind("KTChannelManager::enterMainUI", 0), 0U) << record.text;
    ASSERT_TRUE(startUp());
    channel().unreadMsgChanged(1);
    EXPECT_TRUE(nextMessage().contains("UnreadMessageChanged"));
    EXPECT_EQ(fromWorkbench.messages().count(), 1U);
}

TEST_F(NotificationsTest, NothingIsSentOrLoggedAfterAFailedStartUp)
{
    EXPECT_FALSE(channel().startUp(QStringLiteral("pipe?param=&"), nullptr, nullptr));
    log.clear();
    for (const Row& row : rows())
        row.send(channel());
    for (const LogRecord& record : log.records())
        EXPECT_EQ(record.text.rfind("KTChannelManager::enterMainUI", 0), 0U) << record.text;
}

TEST_F(NotificationsTest, NothingIsSentOrLoggedAfterThePipeClosed)
{
    ASSERT_TRUE(startUp());
    channel().enterMainUI(0, recordingObserver());
    EXPECT_TRUE(nextMessage().contains("StartupCompleted"));
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    ASSERT_TRUE(fromWorkbench.waitForEnd());
    log.clear();
    for (const Row& row : rows())
        row.send(channel());
    QCoreApplication::processEvents();
    for (const LogRecord& record : log.records())
        EXPECT_EQ(record.text.rfind("KTChannelManager::enterMainUI", 0), 0U) << record.text;
    EXPECT_EQ(fromWorkbench.messages().count(), 1U);
}

TEST_F(NotificationsTest, MessageThatIsTooLongIsDroppedAndTheNextArrives)
{
    ASSERT_TRUE(startUp());
    const QByteArray around = wholeText({"OpenSetting", nullptr, R"([""])"});
    const auto fits = static_cast<std::size_t>(2043 - around.size());
    channel().openSetting(std::string(fits + 1, 'x'));
    channel().openSetting(std::string(fits, 'x'));
    EXPECT_EQ(nextMessage().size(), 2043);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NotificationsTest, ThreadsMaySendWhileTheHostClosesAndTheChannelStartsAnew)
{
    Logger::logger().setLogLevel(log4cplus::WARN_LOG_LEVEL); // Thousands of records a second.
    const RepeatingThreads senders(
        8, [](int number) { rows().at(static_cast<std::size_t>(2 * number)).send(channel()); });
    for (int round = 0; round < 20; ++round) {
        pavo::HostPipe in(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
        const HostReader out(uniquePipeName());
        ASSERT_TRUE(channel().startUp(QStringLiteral("pipe?param=") + in.fullName() +
                                          QStringLiteral("&") + out.fullName(),
                                      nullptr, nullptr));
        ASSERT_TRUE(in.awaitClient());
        ASSERT_TRUE(out.messages().waitForCount(50));
        // Every other round the next start-up finds the pipes open.
        if (round % 2 == 0) {
            in.close();
            ASSERT_TRUE(waitUntil([&] { return out.hasEnded(); }));
        }
        for (const QByteArray& message : out.messages().values()) {
            const bool whole = std::any_of(rows().begin(), rows().end(), [&](const Row& row) {
                return message == onThePipe(row);
            });
            ASSERT_TRUE(whole) << message.toStdString();
        }
    }
}

TEST_F(NotificationsTest, SkinIndexBecomesTheHostsName)
{
    const std::vector<const char*> names{"blue",   "orange",   "emerald",
                                         "garnet", "lakeblue", "violet"};
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(KTChannelManagerProbe::skin2HBXSkinName(static_cast<int>(i)),
                  QString::fromUtf8(names[i]));
    for (const int outside : {-1, 6, kMin, std::numeric_limits<int>::max()})
        EXPECT_EQ(KTChannelManagerProbe::skin2HBXSkinName(outside), QStringLiteral("blue"));
}
