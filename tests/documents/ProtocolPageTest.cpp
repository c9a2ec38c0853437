#include "ipc/MultiAccount/MAManager.h"
#include "pavo_core/PAVOCore.h"
#include "tests/documents/Page.h"
#include "tests/support/ChannelFixture.h"
#include "tests/support/RecordingLoginService.h"

#include <QRegularExpression>

#include <algorithm>
#include <set>

// docs/protocol.md has every message of both directions, and each of its examples is sent by a host
// or by the library and does what the page says.

namespace {

using Effects = QStringList;

const QString kInbound = QStringLiteral("From the host to the workbench");
const QString kOutbound = QStringLiteral("From the workbench to the host");

const Page& page()
{
    static const Page page(QStringLiteral("protocol.md"));
    return page;
}

std::vector<Section> inbound()
{
    return page().sectionsUnder(kInbound);
}

std::vector<Section> outbound()
{
    return page().sectionsUnder(kOutbound);
}

std::string nameOf(const testing::TestParamInfo<Section>& test)
{
    return test.param.title.toStdString();
}

std::set<std::string> titles(const std::vector<Section>& sections)
{
    std::set<std::string> names;
    for (const Section& section : sections)
        names.insert(section.title.toStdString());
    return names;
}

/// What `expression` finds in a source, each time its first group.
std::set<std::string> namesIn(const QString& source, const QString& expression)
{
    std::set<std::string> names;
    auto matches = QRegularExpression(expression).globalMatch(readSource(source));
    while (matches.hasNext())
        names.insert(matches.next().captured(1).toStdString());
    return names;
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString quoted(const std::string& text)
{
    return quoted(QString::fromStdString(text));
}

QString call(const QString& function, const QStringList& arguments = {})
{
    return function + QLatin1Char('(') + arguments.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QStringList keys(const std::vector<KTKeyInfo>& infos)
{
    QStringList texts;
    for (const KTKeyInfo& info : infos)
        texts << QStringLiteral("{%1, %2, 0x%3, 0x%4}")
                     .arg(QLatin1String(info.valid ? "true" : "false"), quoted(info.functionName))
                     .arg(static_cast<int>(info.key), 0, 16)
                     .arg(static_cast<int>(info.modifiers), 0, 16);
    return texts;
}

class RecordingCore : public PAVOCore
{
public:
    RecordingCore(std::shared_ptr<LoginService> service, Effects& effects)
        : PAVOCore(std::move(service))
        , m_effects(effects)
    {
    }

    void configProxy(int type, const std::string& address, int port, const std::string& user,
                     const std::string& password) override
    {
        m_effects << call(QStringLiteral("configProxy"),
                          {QString::number(type), quoted(address), QString::number(port),
                           quoted(user), quoted(password)});
    }

private:
    Effects& m_effects;
};

/// A workbench with all that a message can have an effect on.
class ProtocolFixture : public ChannelFixture
{
protected:
    ProtocolFixture()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
        service->addAccount("waiter", "secret");
        core.getCoreConfig().clientVersion = "2.1.0";
        PAVOCore::setShareInstance(&core);
    }
    ~ProtocolFixture() override { PAVOCore::setShareInstance(nullptr); }

    void SetUp() override
    {
        const auto started = [this](int code, const std::string& pin, const QString& skin) {
            effects << call(QStringLiteral("startUpCallback"),
                            {QString::number(code), quoted(pin), quoted(skin)});
        };
        const auto pinChanged = [this](const std::string& application, const QString& pin) {
            pins.add(
                call(QStringLiteral("pinChangedCallback"), {quoted(application), quoted(pin)}));
        };
        ASSERT_TRUE(channel().startUp(commandLine(), started, pinChanged));
        ASSERT_TRUE(toWorkbench.awaitClient() && fromWorkbench.waitForClient());
        ASSERT_TRUE(accounts->initManager("app", "waiter", "class", "title", 0));
        log.clear();
    }

    void TearDown() override
    {
        accounts->quitCurrentAccount();
        ChannelFixture::TearDown();
    }

    KTChannelObserver* observer()
    {
        auto* made = new KTChannelObserver;
        const auto record = [this](const char* function, const QStringList& arguments = {}) {
            effects << call(QLatin1String(function), arguments);
        };
        made->onOpenLXWindow = [=](int kind, const std::string& second, const std::string& first) {
            record("onOpenLXWindow", {QString::number(kind), quoted(second), quoted(first)});
        };
        made->onOpenLXGroup = [=](const std::string& second, const std::string& first) {
            record("onOpenLXGroup", {quoted(second), quoted(first)});
        };
        made->onShowUnreadMessageList = [=](bool show, const QRect& r) {
            record("onShowUnreadMessageList",
                   {QLatin1String(show ? "true" : "false"), QStringLiteral("QRect(%1, %2, %3, %4)")
                                                                .arg(r.x())
                                                                .arg(r.y())
                                                                .arg(r.width())
                                                                .arg(r.height())});
        };
        made->onHotKeyChanged = [=](const std::vector<KTKeyInfo>& infos) {
            record("onHotKeyChanged", keys(infos));
        };
        made->onShortcutChanged = [=](const std::vector<KTKeyInfo>& infos) {
            record("onShortcutChanged", keys(infos));
        };
        made->onSkinChanged = [=](int index) { record("onSkinChanged", {QString::number(index)}); };
        made->onOpenBaseInfoSetting = [=] { record("onOpenBaseInfoSetting"); };
        made->onRequest = [=](const std::string& url) { record("onRequest", {quoted(url)}); };
        return made;
    }

    /// What `act` leads to: complaints in the log, what the workbench is told, calls of the login
    /// service, the windows' mode, and what the service answers.
    template<typename Act>
    Effects effectsOf(Act act)
    {
        accounts->changeMergeMode(kMAMerged, false);
        log.clear();
        effects.clear();
        pins.clear();
        const std::size_t before = service->calls().size();
        act();
        drain();
        Effects all;
        for (const std::string& line : log.complaints())
            if (line != "WARN Unprocessed drained" &&
                line.rfind("WARN shared memory lock ", 0) != 0)
                all << QString::fromStdString(line);
        all << effects;
        const auto made = service->calls();
        for (auto each = made.begin() + static_cast<std::ptrdiff_t>(before); each != made.end();
             ++each)
            all << describe(*each);
        MASelectedAccount selected;
        if (accounts->selectedAccount(selected) && !selected.mergeWindow())
            all << QStringLiteral("changeMergeMode(%1)").arg(selected.mode);
        awaitService();
        for (const QString& each : pins.values())
            all << each;
        return all;
    }

    Effects effects; ///< on the GUI thread
    Collector<QString> pins;
    std::shared_ptr<RecordingLoginService> service = std::make_shared<RecordingLoginService>();
    RecordingCore core{service, effects};
    const std::shared_ptr<MAManager> accounts = MAManager::Instance();

private:
    /// The service answers in the order of the calls.
    void awaitService()
    {
        Collector<int> answers;
        service->changeCurrentPin("", "", [&](int code) { answers.add(code); });
        ASSERT_TRUE(answers.waitForCount(1));
    }

    static QString describe(const RecordingLoginService::Call& made)
    {
        QStringList arguments;
        for (const std::string& text : made.texts)
            arguments << quoted(text);
        for (const int number : made.numbers)
            arguments << QString::number(number);
        return call(QString::fromStdString(made.function), arguments);
    }
};

struct Call
{
    const char* text;
    void (*make)(KTChannelManager& channel, KTChannelObserver* observer);
};

// The call as the page has it, and the call.
#define PAVO_CALL(call)                                                                            \
    {                                                                                              \
#call, [](KTChannelManager & channel,                                                      \
                  [[maybe_unused]] KTChannelObserver * observer) { channel.call; }                 \
    }

const Call kCalls[] = {
    PAVO_CALL(activePlatform()),
    PAVO_CALL(baseInfoChanged("a new nickname")),
    PAVO_CALL(changeLoginInitStatus(1)),
    PAVO_CALL(changeSkinCallback(4)),
    PAVO_CALL(changeStatusCallback(3)),
    PAVO_CALL(enterMainUI(0, observer)),
    PAVO_CALL(loginFailure("waiter", 2, "The token is wrong.")),
    PAVO_CALL(openPlugin("order-list", true)),
    PAVO_CALL(openSetting("notification")),
    PAVO_CALL(openSetting("设置")),
    PAVO_CALL(openUrl("https://example.com/orders?state=open", false)),
    PAVO_CALL(trayIconAction(true, "3 customers wait", 2)),
    PAVO_CALL(unreadMsgChanged(5)),
    PAVO_CALL(UploadCefException(7, QStringLiteral("renderer"), QStringLiteral("crashed"),
                                 QStringLiteral("https://example.com/"), QStringLiteral("2.1.0"),
                                 QStringLiteral("waiter"))),
    PAVO_CALL(UploadInterfaceException(504, QStringLiteral("getOrders"), QStringLiteral("time-out"),
                                       QStringLiteral("order-42"))),
};

#undef PAVO_CALL

/// The one block of that language.
QString onlyBlock(const Section& section, const char* language)
{
    const auto blocks = section.blocks(QLatin1String(language));
    return blocks.size() == 1 ? blocks.front() : QString();
}

class OutboundFixture : public ProtocolFixture
{
protected:
    /// Makes the call that the section shows and returns what the host receives.
    QByteArray receivedAfterTheCallOf(const Section& section)
    {
        static const QString kBefore = QStringLiteral("channel->");
        const QString code = onlyBlock(section, "cpp").simplified();
        const auto* const found =
            std::find_if(std::begin(kCalls), std::end(kCalls), [&](const Call& each) {
                return code == kBefore + QString::fromUtf8(each.text) + QLatin1Char(';');
            });
        if (found == std::end(kCalls))
            return "unknown call: " + code.toUtf8();
        KTChannelObserver* const made = observer();
        found->make(channel(), made);
        // It is the channel's to own, whatever the call was.
        channel().enterMainUI(0, made);
        if (!fromWorkbench.messages().waitForCount(1))
            return "nothing";
        return fromWorkbench.messages().values().front();
    }
};

class InboundMessageTest : public ProtocolFixture, public testing::WithParamInterface<Section>
{
};

class OutboundMessageTest : public OutboundFixture, public testing::WithParamInterface<Section>
{
};

using FrameTest = OutboundFixture;

} // namespace

TEST(ProtocolPageTest, HasEveryMessageOfBothDirectionsAndNoOther)
{
    const auto routes = namesIn(QStringLiteral("ipc/KTChannelManager.cpp"),
                                QStringLiteral("\\{\"(\\w+)\", &KTChannelManager::"));
    EXPECT_EQ(titles(inbound()), routes);
    EXPECT_GT(routes.size(), 8U);
    const auto builders =
        namesIn(QStringLiteral("ipc/KTMessageBuilders.h"), QStringLiteral("\\{\\s*\"(\\w+)\"\\};"));
    EXPECT_EQ(titles(outbound()), builders);
    EXPECT_GT(builders.size(), 13U);
}

TEST_P(InboundMessageTest, DoesWhatThePageSays)
{
    const QByteArray message = onlyBlock(GetParam(), "json").toUtf8();
    QStringList onThePage;
    for (const QStringList& row : GetParam().rows())
        if (row.size() == 2)
            onThePage << row[0] + QStringLiteral(": ") +
                             codeSpans(row[1]).join(QStringLiteral("; "));

    const auto send = [&] { hostSends(message); };
    const auto enter = [&] { channel().enterMainUI(0, observer()); };
    QStringList happened;
    const auto happens = [&](const char* when, const Effects& what) {
        happened << QLatin1String(when) + QStringLiteral(": ") + what.join(QStringLiteral("; "));
    };
    happens("before the main window", effectsOf(send));
    happens("when it is entered", effectsOf(enter));
    happens("in the main window", effectsOf(send));
    const QLatin1Char newLine('\n');
    EXPECT_EQ(onThePage.join(newLine).toStdString(), happened.join(newLine).toStdString());
}
INSTANTIATE_TEST_SUITE_P(Page, InboundMessageTest, testing::ValuesIn(inbound()), nameOf);

TEST_P(OutboundMessageTest, IsMadeByTheCallOnThePage)
{
    EXPECT_EQ(receivedAfterTheCallOf(GetParam()), frame(onlyBlock(GetParam(), "json").toUtf8()));
}
INSTANTIATE_TEST_SUITE_P(Page, OutboundMessageTest, testing::ValuesIn(outbound()), nameOf);

TEST_F(FrameTest, OfTheHostIsUnderstood)
{
    const QByteArray bytes =
        bytesOfDump(onlyBlock(page().section(QStringLiteral("A frame of the host")), "text"));
    channel().enterMainUI(0, observer());
    const Effects told = effectsOf([&] { ASSERT_TRUE(toWorkbench.write(bytes)); });
    EXPECT_EQ(told, Effects{QStringLiteral("onOpenBaseInfoSetting()")});
}

TEST_F(FrameTest, OfTheWorkbenchHasTheBytesOnThePage)
{
    const Section section = page().section(QStringLiteral("A frame of the workbench"));
    const QString dump = hexDump(receivedAfterTheCallOf(section));
    EXPECT_EQ(onlyBlock(section, "text").toStdString(), dump.toStdString());
}

TEST_F(FrameTest, OfATextThatIsNotAllAsciiLacksItsEnd)
{
    const Section section = page().section(QStringLiteral("A text that is not all ASCII"));
    const QString dump = hexDump(receivedAfterTheCallOf(section));
    EXPECT_EQ(onlyBlock(section, "text").toStdString(), dump.toStdString());
}
