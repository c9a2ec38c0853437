#pragma once

#include "ipc/KTChannelManager.h"
#include "ipc/pipe/NamedPipe_win.h"
#include "platform/HostPipe.h"
#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/PipeProbe.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QPointer>

/// The tests' view of what the manager keeps to itself.
class KTChannelManagerProbe
{
public:
    static KTStartUpContext* context()
    {
        return KTChannelManager::sharedInstance()->m_context.get();
    }

    /// Has the manager handle `text` as if the reader had delivered it.
    static void receive(const QByteArray& text)
    {
        KTChannelManager::sharedInstance()->slotReadyRead(QString::fromUtf8(text));
    }

    static QString skin2HBXSkinName(int index) { return KTChannelManager::skin2HBXSkinName(index); }

    static bool parseKeyInfos(const Json::Value& list, std::vector<KTKeyInfo>& out)
    {
        return KTChannelManager::parseKeyInfos(list, out);
    }

    static bool readerWaitsForItsTurn()
    {
        return NamedPipeProbe::waitsUntilFree(*KTChannelManager::sharedInstance()->m_reader);
    }

    static std::weak_ptr<void> aliveToken(const KTChannelManager& manager)
    {
        return manager.m_alive;
    }

    static std::vector<QPointer<QObject>> pipes()
    {
        const KTChannelManager& manager = *KTChannelManager::sharedInstance();
        return {manager.m_reader, manager.m_writer.load()};
    }

    /// A manager beside the one of the process, for what only its destruction shows.
    static std::unique_ptr<KTChannelManager> another()
    {
        return std::unique_ptr<KTChannelManager>(new KTChannelManager);
    }
};

/// The manager of this process with a host of its own in front of it.
class ChannelFixture : public testing::Test
{
protected:
    static KTChannelManager& channel() { return *KTChannelManager::sharedInstance(); }

    QString commandLine() const
    {
        return QStringLiteral("workbench pipe?param=") + toWorkbench.fullName() + QLatin1Char('&') +
               fromWorkbench.fullName();
    }

    /// Starts the channel and waits until both pipes are open.
    bool startUp(std::function<void(int, std::string, const QString)> startUpCallback = nullptr)
    {
        return channel().startUp(commandLine(), std::move(startUpCallback), nullptr) &&
               toWorkbench.awaitClient() && fromWorkbench.waitForClient();
    }

    void hostSends(const QByteArray& text) { ASSERT_TRUE(toWorkbench.write(frame(text))); }

    /// Waits until everything that the host has sent so far is handled.
    void drain()
    {
        static const std::string kMark = "Unprocessed drained";
        const int before = log.count(log4cplus::WARN_LOG_LEVEL, kMark);
        hostSends(R"({"name":"drained"})");
        ASSERT_TRUE(
            waitUntil([&] { return log.count(log4cplus::WARN_LOG_LEVEL, kMark) > before; }));
    }

    /// An observer, the manager's to own, that writes every call to `calls`.
    KTChannelObserver* recordingObserver()
    {
        auto* observer = new KTChannelObserver;
        observer->onOpenLXWindow = [this](int type, const std::string& a, const std::string& b) {
            calls.push_back("window " + std::to_string(type) + " " + a + " " + b);
        };
        observer->onOpenLXGroup = [this](const std::string& a, const std::string& b) {
            calls.push_back("group " + a + " " + b);
        };
        observer->onHotKeyChanged = [this](const std::vector<KTKeyInfo>& keys) {
            calls.push_back("hotKeys " + describe(keys));
        };
        observer->onShortcutChanged = [this](const std::vector<KTKeyInfo>& keys) {
            calls.push_back("shortcuts " + describe(keys));
        };
        observer->onSkinChanged = [this](int index) {
            calls.push_back("skin " + std::to_string(index));
        };
        observer->onShowUnreadMessageList = [this](bool show, QRect r) {
            calls.push_back(std::string("tray list ") + (show ? "show " : "hide ") +
                            std::to_string(r.left()) + " " + std::to_string(r.top()) + " to " +
                            std::to_string(r.right()) + " " + std::to_string(r.bottom()));
        };
        observer->onRequest = [this](const std::string& url) { calls.push_back("request " + url); };
        observer->onOpenBaseInfoSetting = [this] { calls.push_back("settings"); };
        observer->onPipeClosed = [this] { calls.push_back("closed"); };
        return observer;
    }

    void TearDown() override
    {
        // The observer and the context write to this fixture.
        channel().enterMainUI(0, nullptr);
        channel().startUp(QString(), nullptr, nullptr);
    }

    LogRecorder log;
    pavo::HostPipe toWorkbench{uniquePipeName(QStringLiteral("in")),
                               pavo::HostPipe::Direction::HostWrites};
    HostReader fromWorkbench{uniquePipeName(QStringLiteral("out"))};
    std::vector<std::string> calls;

private:
    static std::string describe(const std::vector<KTKeyInfo>& keys)
    {
        return (keys.empty() ? std::string() : keys.front().functionName) + " " +
               std::to_string(keys.size());
    }
};
