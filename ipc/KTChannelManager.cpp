#include "ipc/KTChannelManager.h"

#include "ipc/CallCopy.h"
#include "ipc/KTProcessMessage.h"
#include "ipc/MultiAccount/MAManager.h"
#include "ipc/pipe/NamedPipe_win.h"
#include "pavo_base/Logger.h"
#include "pavo_core/PAVOCore.h"
#include "platform/ProcessExit.h"

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QThread>

#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// Says to the start-up callback that the host went away before start-up was finished.
constexpr int kHostWentAway = -1;

} // namespace

// The order is the order of comparison.
const KTChannelManager::Route KTChannelManager::kRoutes[] = {
    {"ChangeSetting", &KTChannelManager::changeSetting},
    {"Login", &KTChannelManager::login},
    {"ChangeStatus", &KTChannelManager::swtichStatus},
    {"OpenLXWindow", &KTChannelManager::openLXWindow},
    {"OpenLXGroup", &KTChannelManager::openLXGroup},
    {"OpenBaseInfoSettingWindow", &KTChannelManager::openBaseSetting},
    {"ChangeSkin", &KTChannelManager::changeSkin},
    {"ShowUnreadMessageList", &KTChannelManager::showTrayMessageList},
    {"Request", &KTChannelManager::requestMessage},
};

KTChannelManager* KTChannelManager::sharedInstance()
{
    static KTChannelManager* const instance = create();
    return instance;
}

KTChannelManager* KTChannelManager::create()
{
    auto* manager = new KTChannelManager;
    if (const QCoreApplication* application = QCoreApplication::instance())
        manager->moveToThread(application->thread());
    return manager;
}

KTChannelManager::KTChannelManager() = default;

KTChannelManager::~KTChannelManager()
{
    removeObserver();
    m_alive.reset();
    m_context.reset();
    // The main window may still be inside the observer: it is left alone, as the pipes are.
    static_cast<void>(m_observer.release());
}

bool KTChannelManager::startUp(const QString& commandLine,
                               std::function<void(int, std::string, const QString)> startUpCallback,
                               std::function<void(std::string, const QString)> pinChangedCallback)
{
    m_started = false;
    retirePipes();
    m_started = parseStartUpParam(commandLine);
    if (m_started) {
        // The pipes' threads log: they have to end before the logger and Qt do.
        pavo::closeAtProcessExit([] { sharedInstance()->closeAtExit(); });
        // A context whose requests are being replayed goes when that is done.
        if (!m_context || m_context == m_replayed)
            m_context = std::make_shared<KTStartUpContext>();
        m_context->startUpCallback = std::move(startUpCallback);
        m_context->pinChangedCallback = std::move(pinChangedCallback);
        addLoginObserver();
        MAManager::Instance()->createShareMemory();
    }
    return m_started;
}

bool KTChannelManager::isSupported() const
{
    return m_started;
}

bool KTChannelManager::parseStartUpParam(const QString& commandLine)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "parse cmd line " << commandLine.toStdString());
    const QString key = QStringLiteral("pipe?param=");
    const int keyPosition = commandLine.indexOf(key);
    const int separator = commandLine.indexOf(QLatin1Char('&'));
    QString readerName;
    QString writerName;
    if (keyPosition < 0 || separator < 0) {
        LOG4CPLUS_ERROR(Logger::logger(),
                        "command line format error, " << commandLine.toStdString());
    } else {
        // A separator in front of the key makes the length negative, which takes everything up to
        // the end: such a line starts the channel with what names it has.
        const int nameStart = keyPosition + key.size();
        readerName = commandLine.mid(nameStart, separator - nameStart);
        writerName = commandLine.mid(separator + 1);
    }
    if (readerName.isEmpty() || writerName.isEmpty()) {
        LOG4CPLUS_ERROR(Logger::logger(), "invalid pipeline name, " << commandLine.toStdString());
        return false;
    }
    startReader(readerName);
    startWriter(writerName);
    return true;
}

void KTChannelManager::startReader(const QString& name)
{
    auto* const reader = new NamedPipe(NamedPipe::Reader);
    // What an earlier start-up's reader has said may be overtaken by a new start-up: it is for
    // nobody then.
    connect(reader, &NamedPipe::sigReadyRead, this, [this, reader](const QString& text) {
        if (reader == m_reader)
            slotReadyRead(text);
    });
    connect(reader, &NamedPipe::sigExitPipe, this, [this, reader] {
        if (reader == m_reader)
            slotExitReadPipe();
    });
    m_reader = reader;
    reader->startReaderThread(name);
}

void KTChannelManager::startWriter(const QString& name)
{
    auto* writer = new NamedPipe(NamedPipe::Writer);
    writer->startWriterThread(name);
    m_writer = writer; // From here on other threads send.
}

void KTChannelManager::closePipes()
{
    for (NamedPipe* pipe : {m_writer.load(), m_reader}) {
        if (pipe)
            pipe->closePipe();
    }
}

void KTChannelManager::retirePipes()
{
    NamedPipe* const writer = m_writer.exchange(nullptr);
    while (m_senders != 0)
        QThread::yieldCurrentThread();
    delete writer;
    if (m_reader) {
        m_reader->closePipe();
        // What it has said may still be on its way, and is known by its address: it goes behind
        // that.
        QMetaObject::invokeMethod(
            this, [reader = std::shared_ptr<NamedPipe>(std::exchange(m_reader, nullptr))] {},
            Qt::QueuedConnection);
    }
}

void KTChannelManager::closeAtExit()
{
    std::vector<QThread*> threads;
    for (const NamedPipe* pipe : {m_writer.load(), m_reader}) {
        // Null once it was deleted, which would stand for whatever there is to be deleted.
        QThread* const own = pipe ? pipe->thread() : nullptr;
        if (own && own != thread())
            threads.push_back(own);
    }
    closePipes();
    // No event loop will run any more to delete them, nor to deliver anything.
    QCoreApplication::removePostedEvents(this);
    for (QThread* ended : threads)
        QCoreApplication::sendPostedEvents(ended, QEvent::DeferredDelete);
}

void KTChannelManager::slotReadyRead(QString text)
{
    if (!m_started || text.isEmpty()) {
        LOG4CPLUS_WARN(Logger::logger(), "read data is empty " << text.toStdString());
        return;
    }
    if (m_observer)
        LOG4CPLUS_DEBUG(Logger::logger(), "recevie hbx message " << text.toStdString());
    else
        LOG4CPLUS_DEBUG(Logger::logger(),
                        "not initialized completed, recevie hbx message " << text.toStdString());
    KTProcessMessage message;
    if (!message.fromJson(text)) {
        LOG4CPLUS_WARN(Logger::logger(), "parse message failed " << text.toStdString());
        return;
    }
    const auto* route = std::find_if(std::begin(kRoutes), std::end(kRoutes),
                                     [&](const Route& r) { return message.name == r.name; });
    if (route == std::end(kRoutes)) {
        LOG4CPLUS_WARN(Logger::logger(), "Unprocessed " << message.name);
        return;
    }
    (this->*route->handler)(message);
}

void KTChannelManager::slotExitReadPipe()
{
    closePipes();
    if (m_context && m_context->startUpCallback)
        callCopy(m_context->startUpCallback, kHostWentAway, std::string(), QString());
    else if (m_observer && m_observer->onPipeClosed)
        callCopy(m_observer->onPipeClosed);
    else
        LOG4CPLUS_ERROR(Logger::logger(), "unprocessed pipe close");
}

void KTChannelManager::enterMainUI(unsigned int code, KTChannelObserver* observer)
{
    LOG4CPLUS_INFO(Logger::logger(), "KTChannelManager::enterMainUI"
                                         << " enter");
    QString text;
    if (PAVOCore* core = PAVOCore::shareInstance())
        text = QString::fromStdString(core->getCoreConfig().clientVersion);
    startupCompleted(code, text);
    if (m_observer.get() != observer) {
        // First of all the old one goes: what it holds may take the observer out when destroyed.
        m_observer.reset();
        m_observer.reset(observer);
    }
    // A callback of the replay may enter the main window anew: what is left then goes, from the
    // replay under way, to the observer held by then.
    if (m_context && m_context != m_replayed)
        replayParkedRequests();
    LOG4CPLUS_INFO(Logger::logger(), "KTChannelManager::enterMainUI"
                                         << " leave");
}

void KTChannelManager::replayParkedRequests()
{
    const auto context = m_context;
    const QScopedValueRollback<std::shared_ptr<KTStartUpContext>> replaying(m_replayed, context);
    // Each request leaves the context before it is replayed, so that none is replayed twice.
    if (!context->skinName.empty() && m_observer && m_observer->onSkinChanged)
        changeSkin(std::exchange(context->skinName, {}));
    if (!context->shortcuts.empty() && m_observer && m_observer->onShortcutChanged)
        callCopy(m_observer->onShortcutChanged, std::exchange(context->shortcuts, {}));
    if (!context->hotKeys.empty() && m_observer && m_observer->onHotKeyChanged)
        callCopy(m_observer->onHotKeyChanged, std::exchange(context->hotKeys, {}));
    if (context->windowType > 0 && m_observer && m_observer->onOpenLXWindow)
        callCopy(m_observer->onOpenLXWindow, std::exchange(context->windowType, 0),
                 context->windowText1, context->windowText2);
    if (!context->groupText2.empty() && m_observer && m_observer->onOpenLXGroup)
        callCopy(m_observer->onOpenLXGroup, context->groupText1,
                 std::exchange(context->groupText2, {}));
    if (m_context == context)
        m_context.reset();
}
