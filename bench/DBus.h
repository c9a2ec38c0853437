#pragma once

#include <QDBusConnection>
#include <QProcess>

/// A bus of our own, for as long as this lives.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] QString address() const { return m_address; }

private:
    QProcess m_daemon;
    QString m_address;
};

/// This process's connection to the bus at `address`, known there as `name`, with `object`'s slots
/// open to everybody.
QDBusConnection joinBus(const QString& address, const QString& name, QObject* object);

/// Calls a slot of another process's object without waiting for anything.
void callOverBus(const QDBusConnection& bus, const QString& name, const char* slot,
                 const QVariantList& arguments);
