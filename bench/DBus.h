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

/// This process on a bus, known there by its name, with an object's slots open to everybody.
class BusMember
{
public:
    BusMember(const QString& address, const QString& name, QObject* object);
    ~BusMember();
    BusMember(const BusMember&) = delete;
    BusMember& operator=(const BusMember&) = delete;

    /// Calls a slot of another member's object without waiting for anything.
    void call(const QString& name, const char* slot, const QVariantList& arguments) const;

private:
    QDBusConnection m_bus;
};
