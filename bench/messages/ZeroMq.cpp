#include "bench/Process.h"
#include "bench/messages/Json.h"
#include "bench/messages/Transport.h"

#include <QDir>
#include <QSocketNotifier>

#include <zmq.h>

namespace {

struct ContextCloser
{
    void operator()(void* context) const { zmq_ctx_term(context); }
};
struct SocketCloser
{
    void operator()(void* socket) const { zmq_close(socket); }
};

/// A socket for one other, in a context of its own.
class DealerSocket
{
public:
    DealerSocket()
        : m_context(zmq_ctx_new())
        , m_socket(zmq_socket(m_context.get(), ZMQ_DEALER))
    {
        constexpr int kDropUnsent = 0;
        zmq_setsockopt(m_socket.get(), ZMQ_LINGER, &kDropUnsent, sizeof kDropUnsent);
    }
    [[nodiscard]] void* get() const { return m_socket.get(); }
    void send(const std::string& text) const
    {
        zmq_send(m_socket.get(), text.data(), text.size(), 0);
    }
    /// Takes the next text, if any; `flags` says whether to wait for one.
    template<typename Take>
    bool receive(int flags, Take take) const
    {
        zmq_msg_t message;
        zmq_msg_init(&message);
        const int size = zmq_msg_recv(&message, m_socket.get(), flags);
        if (size >= 0)
            take(static_cast<const char*>(zmq_msg_data(&message)), size);
        zmq_msg_close(&message);
        return size >= 0;
    }

private:
    std::unique_ptr<void, ContextCloser> m_context;
    std::unique_ptr<void, SocketCloser> m_socket;
};

class ZeroMqHost : public HostEnd
{
public:
    ZeroMqHost() { zmq_bind(m_socket.get(), m_address.toUtf8().constData()); }

    QString address() const override { return m_address; }
    void awaitWorkbench() override {}
    void request(const std::string& link) override { m_socket.send(requestText(link)); }
    std::string nextLink() override
    {
        std::string link;
        m_socket.receive(0, [&](const char* text, int size) { link = linkIn(text, size); });
        return link;
    }

private:
    const QString m_address =
        QStringLiteral("ipc://") + QDir::temp().filePath(uniqueName(QStringLiteral("zeromq")));
    DealerSocket m_socket;
};

class ZeroMqEnd : public WorkbenchEnd
{
public:
    explicit ZeroMqEnd(const QString& address)
    {
        zmq_connect(m_socket.get(), address.toUtf8().constData());
        int descriptor = -1;
        std::size_t size = sizeof descriptor;
        zmq_getsockopt(m_socket.get(), ZMQ_FD, &descriptor, &size);
        m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        // It tells of changes only: whatever has arrived by then is taken.
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { takeAll(); });
    }

    void openUrl(const std::string& link) override
    {
        m_socket.send(writeByHand(openUrlMessage(link)));
        // Sending may have used up the notification of something received.
        takeAll();
    }

private:
    void takeAll()
    {
        while (m_socket.receive(ZMQ_DONTWAIT, [this](const char* text, int textSize) {
            Json::Value message;
            parseByHand(text, text + textSize, message);
            onRequest(requestedLink(message));
        }))
            continue;
    }

    DealerSocket m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace

std::unique_ptr<HostEnd> makeZeroMqHost()
{
    return std::make_unique<ZeroMqHost>();
}

std::unique_ptr<WorkbenchEnd> makeZeroMqEnd(const QString& address)
{
    return std::make_unique<ZeroMqEnd>(address);
}
