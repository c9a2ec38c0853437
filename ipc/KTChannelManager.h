#pragma once

#include "KTChannelObserver.h"
#include "KTStartUpContext.h"
#include "PavoIpcExport.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class NamedPipe;
class QLoginObserver;
struct KTProcessMessage;
namespace Json {
class Value;
}

/// The workbench's link to the host application that launched it.
///
/// Lives on the GUI thread: unless said otherwise, call everything there, and callbacks arrive
/// there. Nothing here throws, provided that no callback does. Failures show in return values and
/// in the log.
class PAVO_IPC_EXPORT KTChannelManager : public QObject
{
    Q_OBJECT

public:
    /// The one instance, created on first use and never destroyed. Any thread, once there is a
    /// QCoreApplication.
    static KTChannelManager* sharedInstance();

    ~KTChannelManager() override;

    /// Opens the channel that the command line names: "pipe?param=" READER "&" WRITER, where the
    /// host writes READER and reads WRITER. Returns whether it names two pipes. If it does not,
    /// nothing is started and the callbacks are dropped. If it does, this keeps the callbacks,
    /// opens the pipes in the background, and calls addLoginObserver() and
    /// MAManager::createShareMemory(). A pipe that cannot be opened is logged; if it is the one to
    /// read, `startUpCallback` is told that the host has gone. A second call closes the pipes of
    /// the first. KTStartUpContext tells what the callbacks are called with, and when.
    bool startUp(const QString& commandLine,
                 std::function<void(int, std::string, const QString)> startUpCallback,
                 std::function<void(std::string, const QString)> pinChangedCallback);

    /// Whether the last start-up's command line named two pipes. Any thread.
    bool isSupported() const;

    /// Tells the host that start-up is completed with `code`, and takes ownership of `observer`; a
    /// different one held before is deleted. Before it returns, the observer is called for what the
    /// host has asked for since start-up, in the order skin, shortcuts, hot keys, conversation,
    /// group. What it has no callback for is dropped.
    void enterMainUI(unsigned int code, KTChannelObserver* observer);

    /// \name What the workbench tells the host
    /// Any thread, and no call waits for the host. Workbench and host agree on what the values
    /// mean: they are neither checked nor changed. Texts are UTF-8. A message is dropped without a
    /// trace before startUp() has succeeded, after the pipe is closed, and if its JSON text is
    /// longer than 2043 UTF-16 units. One with characters outside ASCII reaches the host without
    /// its end: docs/protocol.md says what hosts do about that.
    /// @{

    /// Asks the host to bring up its own window.
    void activePlatform();
    /// The account's base information has changed to `baseInfo`.
    void baseInfoChanged(const std::string& baseInfo);
    /// The initialisation after the login has come as far as `status`.
    void changeLoginInitStatus(int status);
    /// The user has chosen the skin `index`. The host is told its own name for it, "blue" for an
    /// index outside 0 to 5.
    void changeSkinCallback(int index);
    /// The presence `status` is in force now.
    void changeStatusCallback(int status);
    /// Asks the host to show `message`. `account` and `code` are not sent.
    void loginFailure(std::string account, long long code, std::string message);
    /// Asks the host to open a plug-in.
    void openPlugin(const std::string& plugin, bool flag);
    /// Asks the host to open a page of its settings.
    void openSetting(const std::string& setting);
    /// Asks the host to open the web page `url`.
    void openUrl(const std::string& url, bool flag);
    /// Asks the host to do something with the tray icon.
    void trayIconAction(bool flag, const std::string& text, int number);
    /// `count` messages are unread.
    void unreadMsgChanged(int count);
    /// Reports that a call to a server has failed.
    void UploadInterfaceException(int code, const QString& text1, const QString& text2,
                                  const QString& text3);
    /// Reports that the embedded browser has failed.
    virtual void UploadCefException(int code, const QString& text1, const QString& text2,
                                    const QString& text3, const QString& text4,
                                    const QString& text5);
    /// @}

    /// Registers an observer with the login service in place of the one registered before. It
    /// passes presences and failed logins on to the host. Without a core or its login service
    /// nothing happens.
    void addLoginObserver();
    /// Removes that observer from the login service.
    void removeObserver();

private:
    friend class KTChannelManagerProbe;

    struct WeakFlag
    {
    };
    using Handler = void (KTChannelManager::*)(KTProcessMessage&);
    struct Route
    {
        const char* name;
        Handler handler;
    };
    static const Route kRoutes[];

    KTChannelManager();
    static KTChannelManager* create();

    bool parseStartUpParam(const QString& commandLine);
    void startReader(const QString& name);
    void startWriter(const QString& name);
    void closePipes();
    void retirePipes();
    void closeAtExit();
    void slotReadyRead(QString text);
    void slotExitReadPipe();
    void startupCompleted(unsigned int code, const QString& text);
    void replayParkedRequests();

    /// Whether a message can leave: the channel is started and has a writer. Any thread.
    bool canSend() const;
    /// Has `builder` make a message of `values` and sends it. Any thread.
    template<typename Builder, typename... Values>
    void send(Builder builder, const Values&... values);
    /// The one exit of every outbound text. Any thread; dropped unless canSend().
    void writePacket(const std::string& text);

    void changeSetting(KTProcessMessage& message);
    void login(KTProcessMessage& message);
    void swtichStatus(KTProcessMessage& message);
    void openLXWindow(KTProcessMessage& message);
    void openLXGroup(KTProcessMessage& message);
    void openBaseSetting(KTProcessMessage& message);
    void changeSkin(KTProcessMessage& message);
    void showTrayMessageList(KTProcessMessage& message);
    void requestMessage(KTProcessMessage& message);

    void changeSkin(const std::string& skinName);
    static std::string hbxSkin2LXSkinName(const std::string& hostName);
    static QString skin2HBXSkinName(int index);
    static bool parseKeyInfos(const Json::Value& list, std::vector<KTKeyInfo>& out);

    // Atomic because the senders read them on any thread.
    std::atomic<bool> m_started{false};
    /// Whoever keeps a weak reference learns from it whether the manager still exists.
    std::shared_ptr<WeakFlag> m_alive = std::make_shared<WeakFlag>();
    QLoginObserver* m_loginObserver = nullptr;
    NamedPipe* m_reader = nullptr;
    std::atomic<NamedPipe*> m_writer{nullptr};
    std::shared_ptr<KTStartUpContext> m_context;
    std::shared_ptr<KTStartUpContext>
        m_replayed; ///< The context whose requests are being replayed.
    std::unique_ptr<KTChannelObserver> m_observer;
    std::atomic<int> m_senders{0}; ///< Threads that are using the writer.
};
