#include "bench/DBus.h"
#include "bench/Process.h"
#include "bench/messages/Transport.h"

#include <deque>

namespace {

constexpr const char* kHostName = "local.pavo.Host";
constexpr const char* kWorkbenchName = "local.pavo.Workbench";

class DBusHost : public QObject, public HostEnd
{
    Q_OBJECT

public:
    QString address() const override { return m_daemon.address(); }
    void awaitWorkbench() override {}
    void request(const std::string& link) override
    {
        m_bus.call(QLatin1String(kWorkbenchName), "show", {QString::fromStdString(link)});
    }
    std::string nextLink() override
    {
        handleEventsUntil([this] { return !m_links.empty(); });
        std::string link = m_links.front();
        m_links.pop_front();
        return link;
    }

public Q_SLOTS:
    void openUrl(const QString& link, bool flag)
    {
        Q_UNUSED(flag)
        m_links.push_back(link.toStdString());
        QCoreApplication::quit();
    }

private:
    PrivateBus m_daemon;
    const BusMember m_bus{m_daemon.address(), QLatin1String(kHostName), this};
    std::deque<std::string> m_links;
};

class DBusEnd : public QObject, public WorkbenchEnd
{
    Q_OBJECT

public:
    explicit DBusEnd(const QString& address)
        : m_bus(address, QLatin1String(kWorkbenchName), this)
    {
    }
    void openUrl(const std::string& link) override
    {
        m_bus.call(QLatin1String(kHostName), "openUrl", {QString::fromStdString(link), false});
    }

public Q_SLOTS:
    void show(const QString& link) { onRequest(link.toStdString()); }

private:
    const BusMember m_bus;
};

} // namespace

std::unique_ptr<HostEnd> makeDBusHost()
{
    return std::make_unique<DBusHost>();
}

std::unique_ptr<WorkbenchEnd> makeDBusEnd(const QString& address)
{
    return std::make_unique<DBusEnd>(address);
}

#include "DBusEnds.moc"
