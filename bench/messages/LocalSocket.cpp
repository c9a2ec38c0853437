#include "bench/Process.h"
#include "bench/messages/Transport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtEndian>

namespace {

/// Whole texts over a stream.
class Stream
{
public:
    explicit Stream(QLocalSocket* socket)
        : m_socket(socket)
    {
    }

    void send(const std::string& text)
    {
        m_socket->write(framed(text));
        m_socket->flush();
        while (m_socket->bytesToWrite() > 0)
            m_socket->waitForBytesWritten(-1);
    }

    /// False when no whole text has arrived.
    bool next(QByteArray& text)
    {
        constexpr int kLengthSize = 4;
        if (m_length < 0 && m_socket->bytesAvailable() >= kLengthSize)
            m_length = qFromLittleEndian<qint32>(m_socket->read(kLengthSize).constData());
        if (m_length < 0 || m_socket->bytesAvailable() < m_length)
            return false;
        text = m_socket->read(m_length);
        m_length = -1;
        return true;
    }

    void wait() { m_socket->waitForReadyRead(-1); }

private:
    QLocalSocket* m_socket;
    int m_length = -1;
};

class LocalSocketHost : public HostEnd
{
public:
    LocalSocketHost() { m_server.listen(uniqueName(QStringLiteral("socket"))); }

    QString address() const override { return m_server.fullServerName(); }
    void awaitWorkbench() override
    {
        m_server.waitForNewConnection(-1);
        m_stream = std::make_unique<Stream>(m_server.nextPendingConnection());
    }
    void request(const std::string& link) override { m_stream->send(requestText(link)); }
    std::string nextLink() override
    {
        QByteArray text;
        while (!m_stream->next(text))
            m_stream->wait();
        return linkIn(text.constData(), text.size());
    }

private:
    QLocalServer m_server;
    std::unique_ptr<Stream> m_stream;
};

class LocalSocketEnd : public WorkbenchEnd
{
public:
    explicit LocalSocketEnd(const QString& address)
    {
        m_socket.connectToServer(address);
        QObject::connect(&m_socket, &QLocalSocket::readyRead, [this] {
            QByteArray text;
            while (m_stream.next(text)) {
                const QJsonObject root = QJsonDocument::fromJson(text).object();
                if (root.value(QLatin1String("name")) == QLatin1String("Request"))
                    onRequest(root.value(QLatin1String("arguments"))
                                  .toArray()
                                  .at(0)
                                  .toObject()
                                  .value(QLatin1String("url"))
                                  .toString()
                                  .toStdString());
            }
        });
        m_socket.waitForConnected(-1);
    }

    void openUrl(const std::string& link) override
    {
        const QJsonObject root{
            {QStringLiteral("name"), QStringLiteral("OpenUrl")},
            {QStringLiteral("source"), QStringLiteral("lx")},
            {QStringLiteral("sequence"), 0},
            {QStringLiteral("arguments"), QJsonArray{QString::fromStdString(link), false}}};
        m_stream.send(QJsonDocument(root).toJson(QJsonDocument::Compact).toStdString());
    }

private:
    QLocalSocket m_socket;
    Stream m_stream{&m_socket};
};

} // namespace

std::unique_ptr<HostEnd> makeLocalSocketHost()
{
    return std::make_unique<LocalSocketHost>();
}

std::unique_ptr<WorkbenchEnd> makeLocalSocketEnd(const QString& address)
{
    return std::make_unique<LocalSocketEnd>(address);
}
