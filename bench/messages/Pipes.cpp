// The library's own way, and the same system calls and thread hops without the library.

#include "bench/Process.h"
#include "bench/messages/Json.h"
#include "bench/messages/Transport.h"
#include "ipc/KTChannelManager.h"
#include "pavo_base/JSONUtils.h"
#include "platform/HostPipe.h"
#include "platform/UniqueHandle.h"

#include <QObject>
#include <QThread>

#include <algorithm>
#include <cstring>
#include <thread>

namespace {

class PipeHost : public HostEnd
{
public:
    PipeHost() { m_message.reserve(64 * 1024); }

    QString address() const override
    {
        return m_toWorkbench.fullName() + QLatin1Char('&') + m_fromWorkbench.fullName();
    }
    void awaitWorkbench() override
    {
        m_toWorkbench.awaitClient();
        m_fromWorkbench.awaitClient();
    }
    void request(const std::string& link) override { write(framed(requestText(link))); }
    std::string nextLink() override
    {
        std::string link;
        while (link.empty() && m_fromWorkbench.read(m_message))
            link = linkIn(m_message.constData(), m_message.size());
        return link;
    }

protected:
    void write(const QByteArray& bytes) { m_toWorkbench.write(bytes); }

private:
    pavo::HostPipe m_toWorkbench{uniqueName(QStringLiteral("in")),
                                 pavo::HostPipe::Direction::HostWrites};
    pavo::HostPipe m_fromWorkbench{uniqueName(QStringLiteral("out")),
                                   pavo::HostPipe::Direction::HostReads};
    QByteArray m_message;
};

class GatheringHost : public PipeHost
{
public:
    void flood(const std::string& link, int count) override
    {
        constexpr int kEnough = 2048;
        QByteArray bytes;
        for (int i = 0; i < count; ++i) {
            bytes += framed(requestText(link));
            if (bytes.size() >= kEnough || i + 1 == count) {
                write(bytes);
                bytes.resize(0);
            }
        }
    }
};

class LibraryEnd : public WorkbenchEnd
{
public:
    explicit LibraryEnd(const QString& address)
    {
        KTChannelManager* const channel = KTChannelManager::sharedInstance();
        channel->startUp(QStringLiteral("pipe?param=") + address, nullptr, nullptr);
        auto* observer = new KTChannelObserver;
        observer->onRequest = [this](const std::string& link) { onRequest(link); };
        channel->enterMainUI(0, observer);
    }
    void openUrl(const std::string& link) override
    {
        KTChannelManager::sharedInstance()->openUrl(link, false);
    }
};

class FloorEnd : public WorkbenchEnd, public QObject
{
public:
    explicit FloorEnd(const QString& address)
        : m_reader([this, name = address.section(QLatin1Char('&'), 0, 0)] {
            read(open(name, GENERIC_READ));
        })
    {
        m_writer.moveToThread(&m_writerThread);
        m_writerThread.start();
        QMetaObject::invokeMethod(&m_writer, [this, name = address.section(QLatin1Char('&'), 1)] {
            m_toHost = open(name, GENERIC_WRITE);
        });
    }
    ~FloorEnd() override
    {
        m_writerThread.quit();
        m_writerThread.wait();
        m_reader.join(); // the host has gone
    }

    void openUrl(const std::string& link) override
    {
        QMetaObject::invokeMethod(
            &m_writer, [this, bytes = framed(JSONUtils::stringFromJSON(openUrlMessage(link)))] {
                DWORD written = 0;
                WriteFile(m_toHost.get(), bytes.constData(), static_cast<DWORD>(bytes.size()),
                          &written, nullptr);
            });
    }

private:
    static pavo::UniqueHandle open(const QString& name, DWORD access)
    {
        const HANDLE handle = CreateFileA(name.toUtf8().constData(), access, 0, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        return pavo::UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
    }

    void read(const pavo::UniqueHandle& fromHost)
    {
        char buffer[4096];
        std::size_t filled = 0;
        DWORD count = 0;
        while (ReadFile(fromHost.get(), buffer + filled, 2048, &count, nullptr) && count > 0) {
            filled += count;
            std::size_t done = 0;
            for (std::uint32_t length = 0; filled - done >= sizeof length;
                 done += sizeof length + length) {
                std::memcpy(&length, buffer + done, sizeof length);
                if (filled - done < sizeof length + length)
                    break;
                QMetaObject::invokeMethod(
                    this,
                    [this,
                     text = QByteArray(buffer + done + sizeof length, static_cast<int>(length))] {
                        Json::Value message;
                        JSONUtils::parseJSON(text.constData(), text.size(), message);
                        onRequest(requestedLink(message));
                    },
                    Qt::QueuedConnection);
            }
            filled -= done;
            std::memmove(buffer, buffer + done, filled);
        }
    }

    QThread m_writerThread;
    QObject m_writer;
    pavo::UniqueHandle m_toHost;
    std::thread m_reader;
};

} // namespace

std::unique_ptr<HostEnd> makePipeHost()
{
    return std::make_unique<PipeHost>();
}

std::unique_ptr<HostEnd> makeGatheringHost()
{
    return std::make_unique<GatheringHost>();
}

std::unique_ptr<WorkbenchEnd> makeLibraryEnd(const QString& address)
{
    return std::make_unique<LibraryEnd>(address);
}

std::unique_ptr<WorkbenchEnd> makeFloorEnd(const QString& address)
{
    return std::make_unique<FloorEnd>(address);
}
