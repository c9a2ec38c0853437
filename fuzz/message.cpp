// What the host says, from its text through the parser and the dispatcher into every handler.
//
// An input is three bytes of flags and then lines, each a text from the host, but for ">", with
// which the workbench enters its main window, and "<", with which the host goes away.

#include "fuzz/support/Input.h"
#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/KTChannelManager.h"
#include "ipc/KTProcessMessage.h"
#include "ipc/pipe/NamedPipe_win.h"
#include "pavo_base/JSONUtils.h"
#include "pavo_core/LoginService.h"
#include "pavo_core/PAVOCore.h"
#include "pavo_core/QLoginObserver.h"

namespace {

// Of the first byte of flags.
constexpr int kContext = 1;
constexpr int kCore = 2;
constexpr int kLoginService = 4;
constexpr int kLogging = 8;
constexpr int kObserver = 16;
constexpr int kEnterOnLogin = 32;
// Of the second: what is read is written and read again.
constexpr int kRoundTrip = 32;
// Of the low five bits of the second and third together: the observer's callbacks, then this.
constexpr int kEnterOnCallback = 1 << 9;

/// A login service that has answered when the call returns, with what it was given.
class PromptLoginService : public LoginService
{
public:
    void hbxTokenLogin(const std::string& pin, const std::string& token, const std::string& client,
                       const std::string& /*extra*/, int mode,
                       std::function<void(int, std::string)> completion) override
    {
        if (m_observer)
            m_observer->onLoginFailure(pin, mode, token + client);
        if (completion)
            completion(mode, token);
    }
    void changeCurrentPin(const std::string& /*application*/, const std::string& /*pin*/,
                          std::function<void(int)> completion) override
    {
        if (completion)
            completion(0);
    }
    void switchPresence(int presence, int /*reason*/, std::function<void(int)> completion) override
    {
        if (m_observer)
            m_observer->onPresenceChanged({}, 0, presence);
        if (completion)
            completion(0);
    }
    void addLoginObserver(QLoginObserver* observer) override { m_observer = observer; }
    void removeLoginObserver(QLoginObserver* /*observer*/) override { m_observer = nullptr; }

private:
    QLoginObserver* m_observer = nullptr;
};

/// Everything that the channel meets in its process, made once.
struct Surroundings
{
    Surroundings()
    {
        core.getCoreConfig().clientVersion = "1.0";
        // What is sent is made in full and goes no further.
        writer.closePipe();
        PAVOCore::setShareInstance(&core);
        KTChannelManager::sharedInstance()->addLoginObserver();
    }

    PAVOCore core{std::make_shared<PromptLoginService>()};
    PAVOCore coreWithoutService;
    NamedPipe writer{NamedPipe::Writer};
};

Surroundings* surroundings = nullptr;
/// Everything that callbacks are given goes in here, so that it is read.
std::size_t seen = 0;

void see(int number)
{
    seen += static_cast<unsigned>(number);
}

void see(const std::string& text)
{
    seen += std::hash<std::string>()(text);
}

void see(const std::vector<KTKeyInfo>& keys)
{
    for (const KTKeyInfo& key : keys) {
        see(key.functionName);
        see(key.key);
        see(static_cast<int>(key.modifiers));
        see(key.valid ? 1 : 0);
    }
}

void see(const QRect& rectangle)
{
    see(rectangle.left() ^ rectangle.top() ^ rectangle.right() ^ rectangle.bottom());
}

KTChannelObserver* observerFor(int flags)
{
    auto* observer = new KTChannelObserver;
    const auto set = [&](int number, auto& callback) {
        if ((flags >> number & 1) == 0)
            return;
        callback = [flags](const auto&... values) {
            if ((flags & kEnterOnCallback) != 0)
                KTChannelManager::sharedInstance()->enterMainUI(2, observerFor(flags >> 1));
            // The observer that this is called for may be gone, and this has to go on.
            see(flags);
            (see(values), ...);
        };
    };
    set(0, observer->onOpenLXWindow);
    set(1, observer->onOpenLXGroup);
    set(2, observer->onShowUnreadMessageList);
    set(3, observer->onHotKeyChanged);
    set(4, observer->onShortcutChanged);
    set(5, observer->onSkinChanged);
    set(6, observer->onOpenBaseInfoSetting);
    set(7, observer->onRequest);
    set(8, observer->onPipeClosed);
    return observer;
}

void checkRoundTrip(const QString& text)
{
    KTProcessMessage message;
    if (!message.fromJson(text))
        return;
    Json::Value root;
    require(JSONUtils::parseJSON(message.toJson(), root), "what was written can be read");
    require(JSONUtils::optString("name", root) == message.name &&
                JSONUtils::optString("source", root) == message.source &&
                JSONUtils::optInt64("sequence", root) == message.sequence,
            "the envelope is read as it was written");
    const Json::Value& arguments = JSONUtils::optObject("arguments", root);
    require(message.arguments.isNull() ? arguments.isArray() && arguments.empty()
                                       : arguments == message.arguments,
            "the arguments are read as they were written");
}

} // namespace

/// The host's side of the channel.
class KTChannelManagerProbe
{
public:
    /// Puts the channel in the state after a start-up, or before any.
    static void start(bool started, int callbackFlags, bool enterOnLogin)
    {
        KTChannelManager& channel = *KTChannelManager::sharedInstance();
        channel.m_started = started;
        channel.m_writer = &surroundings->writer;
        channel.m_observer.reset();
        channel.m_context.reset();
        if (!started)
            return;
        channel.m_context = std::make_shared<KTStartUpContext>();
        channel.m_context->startUpCallback = [=](int code, const std::string& pin,
                                                 const QString& skin) {
            see(code);
            see(pin + skin.toStdString());
            if (enterOnLogin)
                KTChannelManager::sharedInstance()->enterMainUI(1, observerFor(callbackFlags));
        };
        channel.m_context->pinChangedCallback = [](const std::string& application,
                                                   const QString& pin) {
            see(application + pin.toStdString());
        };
    }

    static void receive(const QString& text)
    {
        KTChannelManager::sharedInstance()->slotReadyRead(text);
    }

    static void goAway() { KTChannelManager::sharedInstance()->slotExitReadPipe(); }

    /// As a channel is that has been started and has entered its main window long since.
    static void forgetContext() { KTChannelManager::sharedInstance()->m_context.reset(); }
};

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    surroundings = new Surroundings;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int flags = input.byte();
    const int moreFlags = input.byte();
    const int callbacks = (moreFlags & 0x1F) | (input.byte() & 0x1F) << 5;
    setLogging((flags & kLogging) != 0);
    PAVOCore* const core =
        (flags & kLoginService) != 0 ? &surroundings->core : &surroundings->coreWithoutService;
    PAVOCore::setShareInstance((flags & kCore) != 0 ? core : nullptr);

    KTChannelManager& channel = *KTChannelManager::sharedInstance();
    KTChannelManagerProbe::start((flags & (kContext | kObserver)) != 0, callbacks,
                                 (flags & kEnterOnLogin) != 0);
    if ((flags & kContext) == 0)
        KTChannelManagerProbe::forgetContext();
    if ((flags & kObserver) != 0)
        channel.enterMainUI(0, observerFor(callbacks));

    while (!input.atEnd()) {
        const std::string line = input.line();
        if (line == ">") {
            channel.enterMainUI(0, observerFor(callbacks));
        } else if (line == "<") {
            KTChannelManagerProbe::goAway();
        } else {
            const QString text = QString::fromStdString(line);
            if ((moreFlags & kRoundTrip) != 0)
                checkRoundTrip(text);
            KTChannelManagerProbe::receive(text);
        }
    }
    channel.enterMainUI(0, nullptr);
    return 0;
}
