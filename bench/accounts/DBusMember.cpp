// A member without shared memory: each knows the list, and the front goes over with the message.

#include "bench/DBus.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/Member.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString busName(const std::string& pin)
{
    return QStringLiteral("local.pavo.") +
           QString::fromStdString(pin).replace(QLatin1Char('-'), QLatin1Char('_'));
}

class DBusMember : public QObject, public Member
{
    Q_OBJECT

public:
    DBusMember(const std::string& pin, const std::string& bus)
        : m_pin(pin)
        , m_bus(joinBus(QString::fromStdString(bus), busName(pin), this))
    {
    }
    void join() override {}
    void quit() override {}
    void seed(int accounts) override { m_accounts = accountsUpTo(accounts); }
    void switchTo(const std::string& pin) override
    {
        const QJsonObject selected{{QStringLiteral("mode"), 1},
                                   {QStringLiteral("pin"), QString::fromStdString(m_pin)},
                                   {QStringLiteral("windowState"), 1},
                                   {QStringLiteral("x"), 100},
                                   {QStringLiteral("y"), 100},
                                   {QStringLiteral("w"), 800},
                                   {QStringLiteral("h"), 600}};
        callOverBus(m_bus, busName(pin), "show",
                    {QString::fromUtf8(QJsonDocument(selected).toJson(QJsonDocument::Compact))});
    }
    void changeMode(int mode) override { Q_UNUSED(mode) }

public Q_SLOTS:
    void show(const QString& front)
    {
        const QJsonObject previous = QJsonDocument::fromJson(front.toUtf8()).object();
        callOverBus(m_bus, busName(previous.value(QLatin1String("pin")).toString().toStdString()),
                    "stepBack", {});
        onTold(kMAShow);
    }
    void stepBack() { onTold(kMAStepBack); }

private:
    const std::string m_pin;
    QDBusConnection m_bus;
    std::list<MAAccountInfo> m_accounts;
};

} // namespace

std::unique_ptr<Member> makeDBusMember(const std::string& pin, const std::string& bus)
{
    return std::make_unique<DBusMember>(pin, bus);
}

#include "DBusMember.moc"
