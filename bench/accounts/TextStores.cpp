// The stores that hold JSON texts: the library's, and the same work by hand with either parser.

#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/RawStore.h"
#include "bench/accounts/StoreUser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

class LibraryStore : public StoreUser
{
public:
    explicit LibraryStore(const std::string& pin)
    {
        m_manager.initManager(kAppID, pin, kClassName, titleOf(pin), 1);
    }
    void seed(int accounts) override { m_manager.seed(accountsUpTo(accounts)); }
    void change(int loginState) override
    {
        m_manager.modify([&](std::list<MAAccountInfo>& list) {
            const MAAccountInfo& own = m_manager.own();
            for (MAAccountInfo& account : list) {
                if (account.equalAccount(own.appID, own.pin)) {
                    account.loginState = loginState;
                    break;
                }
            }
        });
    }

private:
    MAManagerProbe m_manager;
};

/// A raw store with the library's texts in it.
class RawUser : public StoreUser
{
public:
    RawUser(std::string pin, bool gated)
        : m_store(gated)
        , m_pin(std::move(pin))
    {
    }
    void seed(int accounts) override
    {
        MASelectedAccount selected;
        selected.setAccount(kAppID, pinOf(0), kClassName, titleOf(pinOf(0)));
        m_store.lock();
        m_store.write(kMASelectedRegion, selected.toJSON());
        m_store.write(kMAListRegion, MAAccountInfo::toJSON(accountsUpTo(accounts)));
        m_store.unlock();
    }

protected:
    RawStore m_store;
    const std::string m_pin;
};

class FloorStore : public RawUser
{
public:
    using RawUser::RawUser;
    void change(int loginState) override
    {
        m_store.lock();
        m_store.read(kMASelectedRegion);
        Json::Value list = m_store.read(kMAListRegion);
        for (Json::Value& account : list) {
            if (account["pin"].asString() == m_pin && account["appID"].asString() == kAppID) {
                account["loginState"] = loginState;
                break;
            }
        }
        m_store.write(kMAListRegion, list);
        m_store.unlock();
    }
};

class QtStore : public RawUser
{
public:
    using RawUser::RawUser;
    void change(int loginState) override
    {
        m_store.lock();
        parse(kMASelectedRegion);
        QJsonArray list = parse(kMAListRegion).array();
        const QString pin = QString::fromStdString(m_pin);
        for (auto account = list.begin(); account != list.end(); ++account) {
            QJsonObject record = account->toObject();
            if (record.value(QLatin1String("pin")) == pin &&
                record.value(QLatin1String("appID")) == QLatin1String(kAppID)) {
                record.insert(QStringLiteral("loginState"), loginState);
                *account = record;
                break;
            }
        }
        m_store.write(kMAListRegion,
                      QJsonDocument(list).toJson(QJsonDocument::Compact).toStdString());
        m_store.unlock();
    }

private:
    QJsonDocument parse(const MARegion& region) const
    {
        return QJsonDocument::fromJson(m_store.text(region));
    }
};

} // namespace

std::unique_ptr<StoreUser> joinLibraryStore(const std::string& pin)
{
    return std::make_unique<LibraryStore>(pin);
}

std::unique_ptr<StoreUser> joinFloorStore(const std::string& pin)
{
    return std::make_unique<FloorStore>(pin, true);
}

std::unique_ptr<StoreUser> joinUngatedFloorStore(const std::string& pin)
{
    return std::make_unique<FloorStore>(pin, false);
}

std::unique_ptr<StoreUser> joinQtStore(const std::string& pin)
{
    return std::make_unique<QtStore>(pin, false);
}
