// What the workbench tells the host: the senders of all outbound messages.

#include "ipc/KTChannelManager.h"

#include "ipc/KTMessageBuilders.h"
#include "ipc/pipe/NamedPipe_win.h"

namespace {

/// The kind of message box that the host shows for a failed login.
constexpr int kLoginFailureBox = 6;

} // namespace

bool KTChannelManager::canSend() const
{
    return m_started && m_writer.load();
}

template<typename Builder, typename... Values>
void KTChannelManager::send(Builder builder, const Values&... values)
{
    if (!canSend())
        return;
    KTProcessMessage message;
    writePacket(builder(message, values...));
}

void KTChannelManager::writePacket(const std::string& text)
{
    if (!m_started)
        return;
    const QString packet = QString::fromStdString(text);
    // startUp() takes the writer away, waits for those that had it before, and deletes it.
    ++m_senders;
    if (NamedPipe* const writer = m_writer)
        writer->sendData(packet);
    --m_senders;
}

void KTChannelManager::activePlatform()
{
    send(KTMessageBuilders::activePlatform);
}

void KTChannelManager::baseInfoChanged(const std::string& baseInfo)
{
    send(KTMessageBuilders::baseInfoChanged, baseInfo);
}

void KTChannelManager::changeLoginInitStatus(int status)
{
    send(KTMessageBuilders::changeLoginInitStatus, status);
}

void KTChannelManager::changeSkinCallback(int index)
{
    send(KTMessageBuilders::changeSkin, skin2HBXSkinName(index));
}

void KTChannelManager::changeStatusCallback(int status)
{
    send(KTMessageBuilders::changeStatusCallback, status);
}

void KTChannelManager::loginFailure(std::string account, long long code, std::string message)
{
    Q_UNUSED(account)
    Q_UNUSED(code)
    send(KTMessageBuilders::showMessageBox, message, kLoginFailureBox);
}

void KTChannelManager::openPlugin(const std::string& plugin, bool flag)
{
    send(KTMessageBuilders::openPlugin, plugin, flag);
}

void KTChannelManager::openSetting(const std::string& setting)
{
    send(KTMessageBuilders::openSetting, setting);
}

void KTChannelManager::openUrl(const std::string& url, bool flag)
{
    send(KTMessageBuilders::openUrl, url, flag);
}

void KTChannelManager::startupCompleted(unsigned int code, const QString& text)
{
    send(KTMessageBuilders::startupCompleted, code, text);
}

void KTChannelManager::trayIconAction(bool flag, const std::string& text, int number)
{
    send(KTMessageBuilders::trayIconAction, flag, text, number);
}

void KTChannelManager::unreadMsgChanged(int count)
{
    send(KTMessageBuilders::unreadMessageChanged, count);
}

void KTChannelManager::UploadCefException(int code, const QString& text1, const QString& text2,
                                          const QString& text3, const QString& text4,
                                          const QString& text5)
{
    send(KTMessageBuilders::uploadCefException, code, text1, text2, text3, text4, text5);
}

void KTChannelManager::UploadInterfaceException(int code, const QString& text1,
                                                const QString& text2, const QString& text3)
{
    send(KTMessageBuilders::uploadInterfaceException, code, text1, text2, text3);
}
