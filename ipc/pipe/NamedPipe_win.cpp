#include "ipc/pipe/NamedPipe_win.h"

#include "pavo_base/Logger.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int32_t kBufferSize = 4096; ///< The largest packet, length included.
constexpr std::int32_t kChunkSize = 2048;  ///< The most that one read asks for.
constexpr std::int32_t kLengthSize = 4;
/// The longest text that is written, in UTF-16 units: together with its length it is one byte
/// short of half the buffer.
constexpr int kMaxTextUnits = 2043;
constexpr DWORD kBusyWaitMs = 20000;
/// A thread that is not blocked ends within this time; one that is has its call cancelled, again
/// and again, since a cancellation that comes before the call is entered is lost.
constexpr int kCancelIntervalMs = 5;

std::uint32_t loadLength(const char* buffer, int offset)
{
    if (!buffer)
        return 0;
    std::uint32_t value = 0;
    for (int i = kLengthSize - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(buffer[offset + i]);
    return value;
}

void storeLength(char* bytes, std::uint32_t value)
{
    for (int i = 0; i < kLengthSize; ++i)
        bytes[i] = static_cast<char>(value >> (8 * i) & 0xFFU);
}

} // namespace

NamedPipe::NamedPipe(PipeRole role)
    : m_role(role)
{
}

NamedPipe::~NamedPipe()
{
    closePipe();
}

void NamedPipe::startReaderThread(const QString& name)
{
    connect(this, &NamedPipe::sigInitReader, this, &NamedPipe::initReader);
    startThread();
    Q_EMIT sigInitReader(name);
}

void NamedPipe::startWriterThread(const QString& name)
{
    connect(this, &NamedPipe::sigInitWriter, this, &NamedPipe::initWriter);
    // Also on the writer's own thread nobody waits for a write.
    connect(this, &NamedPipe::sigSendData, this, &NamedPipe::writePacket, Qt::QueuedConnection);
    startThread();
    Q_EMIT sigInitWriter(name);
}

void NamedPipe::startThread()
{
    m_thread = new QThread;
    moveToThread(m_thread);
    m_thread->start(QThread::InheritPriority);
}

void NamedPipe::sendData(const QString& text)
{
    if (m_closing)
        return;
    // Qt may not be posting to a thread while that ends, and the event queue of one that has ended
    // is never emptied: closePipe() sets its mark and then waits for those that did not see it.
    ++m_senders;
    if (!m_closing)
        Q_EMIT sigSendData(text);
    --m_senders;
}

void NamedPipe::initReader(QString name)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "init reader " << name.toStdString());
    if (initPipe(name, GENERIC_READ))
        readPacket();
}

void NamedPipe::initWriter(QString name)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "init writer " << name.toStdString());
    initPipe(name, GENERIC_WRITE);
}

bool NamedPipe::initPipe(const QString& name, unsigned long access)
{
    m_canceller = new pavo::ThreadCanceller;
    const QByteArray pipe = name.toUtf8();
    const auto open = [&] {
        const HANDLE handle = CreateFileA(pipe.constData(), static_cast<DWORD>(access), 0, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE)
            m_handle.reset(handle);
        return handle != INVALID_HANDLE_VALUE;
    };
    const auto waitUntilFree = [&] { return WaitNamedPipeA(pipe.constData(), kBusyWaitMs) != 0; };
    DWORD error = ERROR_SUCCESS;
    while (!blockingCall(Call::Open, error, open)) {
        if (cancelledByClose(error))
            return false;
        if (error != ERROR_PIPE_BUSY) {
            LOG4CPLUS_ERROR(Logger::logger(), "Could not open pipe. GLE=" << error);
            Q_EMIT sigExitPipe();
            return false;
        }
        if (blockingCall(Call::WaitUntilFree, error, waitUntilFree))
            continue;
        if (cancelledByClose(error))
            return false;
        LOG4CPLUS_WARN(Logger::logger(), "Could not open pipe: 20 second wait timed out.");
        Q_EMIT sigExitPipe();
        return false;
    }
    if (m_role == Writer) {
        DWORD mode = PIPE_READMODE_MESSAGE;
        if (!SetNamedPipeHandleState(m_handle.get(), &mode, nullptr, nullptr)) {
            LOG4CPLUS_ERROR(Logger::logger(), "set pipe state failed");
            closePipe();
            return false;
        }
    }
    m_buffer = std::make_unique<char[]>(kBufferSize);
    return true;
}

int NamedPipe::readPacket()
{
    if (!m_buffer || !m_handle)
        return 0;
    const DWORD error = readUntilError();
    if (!cancelledByClose(error)) {
        LOG4CPLUS_ERROR(Logger::logger(), "read data error " << error);
        Q_EMIT sigExitPipe();
    }
    return 1;
}

DWORD NamedPipe::readUntilError()
{
    for (;;) {
        // There is room: what is left after extraction is less than one packet.
        const auto wanted = static_cast<DWORD>(std::min(kChunkSize, kBufferSize - m_buffered));
        char* const free = m_buffer.get() + m_buffered;
        DWORD delivered = 0;
        DWORD error = ERROR_SUCCESS;
        const auto read = [&] {
            return ReadFile(m_handle.get(), free, wanted, &delivered, nullptr) && delivered > 0;
        };
        if (!blockingCall(Call::Read, error, read))
            return error;
        m_buffered += static_cast<std::int32_t>(delivered);
        if (!extractPackets())
            return ERROR_INVALID_DATA;
    }
}

bool NamedPipe::extractPackets()
{
    std::int32_t position = 0;
    while (m_buffered - position >= kLengthSize) {
        const std::uint32_t length = loadLength(m_buffer.get(), position);
        if (length > kBufferSize - kLengthSize)
            return false; // It can never be completed: refused before its payload is awaited.
        const auto end = position + kLengthSize + static_cast<std::int32_t>(length);
        if (m_buffered < end)
            break;
        const char* text = m_buffer.get() + position + kLengthSize;
        Q_EMIT sigReadyRead(QString::fromUtf8(text, static_cast<int>(qstrnlen(text, length))));
        position = end;
    }
    m_buffered -= position;
    std::memmove(m_buffer.get(), m_buffer.get() + position, static_cast<std::size_t>(m_buffered));
    return true;
}

bool NamedPipe::writePacket(QString text)
{
    const int units = text.size();
    if (m_closing || units == 0 || !m_buffer || !m_handle || units > kMaxTextUnits)
        return false;
    const std::string bytes = text.toStdString();
    LOG4CPLUS_DEBUG(Logger::logger(), "write packet " << bytes);
    // The host expects the length field to count bytes, and what is written to be counted in UTF-16
    // units: a text with non-ASCII characters arrives without its end.
    const auto count = static_cast<DWORD>(units + kLengthSize);
    storeLength(m_buffer.get(), static_cast<std::uint32_t>(bytes.size()));
    std::memcpy(m_buffer.get() + kLengthSize, bytes.data(), static_cast<std::size_t>(units));
    DWORD written = 0;
    DWORD error = ERROR_SUCCESS;
    const auto write = [&] {
        return WriteFile(m_handle.get(), m_buffer.get(), count, &written, nullptr) != 0;
    };
    if (!blockingCall(Call::Write, error, write)) {
        if (!cancelledByClose(error))
            LOG4CPLUS_ERROR(Logger::logger(), "write data failed " << written);
        return false;
    }
    LOG4CPLUS_DEBUG(Logger::logger(), "write data " << bytes);
    return true;
}

template<typename Function>
bool NamedPipe::blockingCall(Call which, DWORD& error, Function call)
{
    // Only pipe calls are cancelled, and not what the thread's log records are written with.
    m_call = which;
    const bool done = !m_closing && call();
    if (!done)
        error = m_closing ? ERROR_OPERATION_ABORTED : GetLastError();
    m_call = Call::None;
    return done;
}

bool NamedPipe::cancelledByClose(DWORD error) const
{
    return m_closing && error == ERROR_OPERATION_ABORTED;
}

void NamedPipe::closePipe()
{
    LOG4CPLUS_INFO(Logger::logger(), "NamedPipe::closePipe"
                                         << " enter");
    m_closing = true;
    while (m_senders != 0)
        QThread::yieldCurrentThread();
    if (m_thread == QThread::currentThread())
        m_thread->quit();
    else if (m_thread)
        stopThread();
    m_handle.reset();
    m_buffer.reset();
    LOG4CPLUS_INFO(Logger::logger(), "NamedPipe::closePipe"
                                         << " leave");
}

void NamedPipe::stopThread()
{
    m_thread->quit();
    while (!m_thread->wait(QDeadlineTimer(kCancelIntervalMs))) {
        if (m_call != Call::None)
            m_canceller.load()->cancel();
    }
    // Without a canceller the thread has done nothing, and left nothing to be cleaned up.
    if (const std::unique_ptr<pavo::ThreadCanceller> canceller(m_canceller.exchange(nullptr));
        canceller)
        canceller->waitForEnd();
    QCoreApplication::removePostedEvents(this);
    m_thread->deleteLater();
    m_thread = nullptr;
}
