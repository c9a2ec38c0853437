// Members that talk over a bus: with a process in between that keeps the list and the front for
// everybody, or, as the least that a bus can do, without shared state.

#include "bench/DBus.h"
#include "bench/Process.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/Member.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr const char* kRole = "dbus-keeper";
constexpr const char* kKeeperName = "local.pavo.Keeper";

QString busName(const QString& pin)
{
    return QStringLiteral("local.pavo.") + QString(pin).replace(QLatin1Char('-'), QLatin1Char('_'));
}

QString textOf(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QJsonObject frontOf(const std::string& pin)
{
    return {
        {QStringLiteral("mode"), 1},        {QStringLiteral("pin"), QString::fromStdString(pin)},
        {QStringLiteral("windowState"), 1}, {QStringLiteral("x"), 100},
        {QStringLiteral("y"), 100},         {QStringLiteral("w"), 800},
        {QStringLiteral("h"), 600}};
}

/// Keeps the front and the list.
class Keeper : public QObject
{
    Q_OBJECT

public:
    explicit Keeper(const QString& bus)
        : m_bus(bus, QLatin1String(kKeeperName), this)
    {
    }

public Q_SLOTS:
    void setList(const QString& list) { m_list = list; }
    void switchTo(const QString& pin, const QString& front)
    {
        m_front = front;
        m_bus.call(busName(pin), "show", {m_front, m_list});
    }
    void takeFront(const QString& previous, const QString& front)
    {
        m_front = front;
        m_bus.call(busName(previous), "stepBack", {m_front});
    }

private:
    const BusMember m_bus;
    QString m_front;
    QString m_list;
};

int beKeeper(const QStringList& arguments)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const Keeper keeper(arguments[0]);
    sayToParent("ready");
    return QCoreApplication::exec();
}

const Role keeperRole(kRole, &beKeeper);

class DBusMember : public QObject, public Member
{
    Q_OBJECT

public:
    DBusMember(std::string pin, const std::string& bus)
        : m_pin(std::move(pin))
        , m_bus(QString::fromStdString(bus), busName(QString::fromStdString(m_pin)), this)
    {
    }
    void join() override {}
    void quit() override {}
    void changeMode(int mode) override { Q_UNUSED(mode) }

protected:
    const std::string m_pin;
    const BusMember m_bus;
};

class KeptMember : public DBusMember
{
    Q_OBJECT

public:
    using DBusMember::DBusMember;

    void seed(int accounts) override
    {
        call("setList", {QString::fromStdString(MAAccountInfo::toJSON(accountsUpTo(accounts)))});
    }
    void switchTo(const std::string& pin) override
    {
        call("switchTo", {QString::fromStdString(pin), textOf(frontOf(m_pin))});
    }

public Q_SLOTS:
    void show(const QString& front, const QString& list)
    {
        const QJsonObject previous = QJsonDocument::fromJson(front.toUtf8()).object();
        const QJsonArray accounts = QJsonDocument::fromJson(list.toUtf8()).array();
        call("takeFront",
             {previous.value(QLatin1String("pin")).toString(), textOf(frontOf(m_pin))});
        if (!accounts.isEmpty())
            onTold(kMAShow);
    }
    void stepBack(const QString& front)
    {
        if (QJsonDocument::fromJson(front.toUtf8()).object().value(QLatin1String("mode")) == 1)
            onTold(kMAStepBack);
    }

private:
    void call(const char* slot, const QVariantList& arguments) const
    {
        m_bus.call(QLatin1String(kKeeperName), slot, arguments);
    }
};

class FreeMember : public DBusMember
{
    Q_OBJECT

public:
    using DBusMember::DBusMember;

    void seed(int accounts) override { Q_UNUSED(accounts) }
    void switchTo(const std::string& pin) override
    {
        m_bus.call(busName(QString::fromStdString(pin)), "show", {textOf(frontOf(m_pin))});
    }

public Q_SLOTS:
    void show(const QString& front)
    {
        const QJsonObject previous = QJsonDocument::fromJson(front.toUtf8()).object();
        m_bus.call(busName(previous.value(QLatin1String("pin")).toString()), "stepBack", {});
        onTold(kMAShow);
    }
    void stepBack() { onTold(kMAStepBack); }
};

class Bus : public MeetingPlace
{
public:
    [[nodiscard]] QString address() const override { return m_bus.address(); }

private:
    const PrivateBus m_bus;
};

class KeptBus : public Bus
{
public:
    KeptBus() { m_keeper.nextLine(); }

private:
    RoleProcess m_keeper{kRole, {address()}};
};

} // namespace

std::unique_ptr<MeetingPlace> makeBus()
{
    return std::make_unique<Bus>();
}

std::unique_ptr<MeetingPlace> makeKeptBus()
{
    return std::make_unique<KeptBus>();
}

std::unique_ptr<Member> makeDBusMember(const std::string& pin, const std::string& address)
{
    return std::make_unique<KeptMember>(pin, address);
}

std::unique_ptr<Member> makeFreeDBusMember(const std::string& pin, const std::string& address)
{
    return std::make_unique<FreeMember>(pin, address);
}

#include "DBusMember.moc"
