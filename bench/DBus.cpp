#include "bench/DBus.h"

#include <QDBusMessage>

namespace {

constexpr const char* kPath = "/bench";
constexpr const char* kInterface = "local.pavo.bench";

} // namespace

PrivateBus::PrivateBus()
{
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(-1))
        continue;
    m_address = QString::fromLocal8Bit(m_daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus()
{
    m_daemon.terminate();
    m_daemon.waitForFinished(-1);
}

BusMember::BusMember(const QString& address, const QString& name, QObject* object)
    : m_bus(QDBusConnection::connectToBus(address, name))
{
    m_bus.registerObject(QLatin1String(kPath), QLatin1String(kInterface), object,
                         QDBusConnection::ExportAllSlots);
    m_bus.registerService(name);
}

BusMember::~BusMember()
{
    // Qt keeps a connection under its name: who comes next under that would get this one.
    QDBusConnection::disconnectFromBus(m_bus.name());
}

void BusMember::call(const QString& name, const char* slot, const QVariantList& arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        name, QLatin1String(kPath), QLatin1String(kInterface), QLatin1String(slot));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    m_bus.send(message);
}
