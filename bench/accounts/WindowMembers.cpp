// Members that talk by window messages: the library's, and the same calls by hand.

#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/Member.h"
#include "bench/accounts/RawStore.h"
#include "pavo_base/JSONUtils.h"
#include "platform/MessageWindow.h"

#include <QAbstractNativeEventFilter>

namespace {

/// A member with the window of its account.
class WindowMember : public Member, public QAbstractNativeEventFilter
{
public:
    explicit WindowMember(std::string pin)
        : m_pin(std::move(pin))
        , m_window(QLatin1String(kClassName), QString::fromStdString(titleOf(m_pin)))
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    bool nativeEventFilter(const QByteArray& type, void* message, long* result) override
    {
        Q_UNUSED(type)
        Q_UNUSED(result)
        return handle(*static_cast<const MSG*>(message));
    }

protected:
    virtual bool handle(const MSG& message) = 0;

    const std::string m_pin;

private:
    const pavo::MessageWindow m_window;
};

class LibraryMember : public WindowMember
{
public:
    explicit LibraryMember(const std::string& pin)
        : WindowMember(pin)
    {
        auto* observer = new MAObserver;
        observer->messageCallback = [this](int code, MASelectedAccount&,
                                           std::list<MAAccountInfo>&) { onTold(code); };
        observer->loginStateCallback = [](int) {};
        m_manager.addObserver(observer);
    }
    ~LibraryMember() override { m_manager.removeObserver(); }

    void join() override { m_manager.initManager(kAppID, m_pin, kClassName, titleOf(m_pin), 1); }
    void quit() override { m_manager.quitCurrentAccount(); }
    void seed(int accounts) override { m_manager.seed(accountsUpTo(accounts)); }
    void switchTo(const std::string& pin) override
    {
        MAAccountInfo account;
        account.setAccount(kAppID, pin, kClassName, titleOf(pin), 1, 0);
        m_manager.switchToAccount(account);
    }
    void changeMode(int mode) override { m_manager.changeMergeMode(mode, true); }

protected:
    bool handle(const MSG& message) override
    {
        return m_manager.handleNativeEvent(message.message, static_cast<long>(message.wParam),
                                           static_cast<long>(message.lParam));
    }

private:
    MAManagerProbe m_manager;
};

class FloorMember : public WindowMember
{
public:
    explicit FloorMember(const std::string& pin)
        : WindowMember(pin)
    {
        MAAccountInfo own;
        own.setAccount(kAppID, m_pin, kClassName, titleOf(m_pin), 1, 0);
        Json::Value list;
        JSONUtils::parseJSON(MAAccountInfo::toJSON({own}), list);
        m_own = list[0];
    }
    void join() override
    {
        m_message = RegisterWindowMessageW(messageName().c_str());
        m_store.emplace();
        m_store->lock();
        Json::Value list = m_store->read(kMAListRegion);
        if (!list.isArray())
            list = Json::Value(Json::arrayValue);
        list.append(m_own);
        m_store->write(kMAListRegion, list);
        if (m_store->read(kMASelectedRegion).isNull()) {
            MASelectedAccount selected;
            selected.setAccount(kAppID, m_pin, kClassName, titleOf(m_pin));
            selected.mode = kMAMerged;
            m_store->write(kMASelectedRegion, selected.toJSON());
        }
        m_store->unlock();
    }
    void quit() override
    {
        m_store->lock();
        const Json::Value list = m_store->read(kMAListRegion);
        Json::Value others(Json::arrayValue);
        for (const Json::Value& account : list) {
            if (account["pin"].asString() != m_pin)
                others.append(account);
        }
        m_store->write(kMAListRegion, others);
        m_store->unlock();
        m_store.reset();
    }
    void seed(int accounts) override
    {
        m_store->lock();
        m_store->write(kMAListRegion, MAAccountInfo::toJSON(accountsUpTo(accounts)));
        m_store->unlock();
    }
    void switchTo(const std::string& pin) override
    {
        m_store->lock();
        Json::Value selected = m_store->read(kMASelectedRegion);
        selected["windowState"] = 1;
        m_store->write(kMASelectedRegion, selected);
        m_store->unlock();
        post(titleOf(pin), kMAShow);
    }
    void changeMode(int mode) override
    {
        m_store->lock();
        Json::Value selected = m_store->read(kMASelectedRegion);
        selected["mode"] = mode;
        m_store->write(kMASelectedRegion, selected);
        const Json::Value list = m_store->read(kMAListRegion);
        m_store->unlock();
        for (const Json::Value& account : list) {
            if (account["pin"].asString() != m_pin)
                post(account["title"].asString(), mode == kMAMerged ? kMAStepBack : kMAShow);
        }
        onTold(kMAShow);
    }

protected:
    bool handle(const MSG& message) override
    {
        if (message.message != m_message)
            return false;
        m_store->lock();
        Json::Value selected = m_store->read(kMASelectedRegion);
        const std::string previous = selected["title"].asString();
        if (message.wParam == kMAShow) {
            selected["pin"] = m_pin;
            selected["title"] = titleOf(m_pin);
            m_store->write(kMASelectedRegion, selected);
            m_store->read(kMAListRegion);
        }
        m_store->unlock();
        if (message.wParam == kMAShow && selected["mode"].asInt() == kMAMerged)
            post(previous, kMAStepBack);
        onTold(static_cast<int>(message.wParam));
        return true;
    }

private:
    static std::wstring messageName()
    {
        return (QCoreApplication::applicationName() + QLatin1String(kMAMessageSuffix))
            .toStdWString();
    }
    void post(const std::string& title, unsigned code) const
    {
        HWND window = FindWindowW(QString::fromLatin1(kClassName).toStdWString().c_str(),
                                  QString::fromStdString(title).toStdWString().c_str());
        if (IsWindow(window))
            PostMessageA(window, m_message, code, 0);
    }

    UINT m_message = 0;
    Json::Value m_own;
    std::optional<RawStore> m_store;
};

} // namespace

std::unique_ptr<Member> makeLibraryMember(const std::string& pin, const std::string& address)
{
    Q_UNUSED(address);
    return std::make_unique<LibraryMember>(pin);
}

std::unique_ptr<Member> makeFloorMember(const std::string& pin, const std::string& address)
{
    Q_UNUSED(address);
    return std::make_unique<FloorMember>(pin);
}
