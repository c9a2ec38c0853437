#pragma once

#include "platform/ThreadCanceller.h"
#include "platform/UniqueHandle.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>

class QThread;

/// One client end of a host pipe, reading or writing whole packets on a thread of its own.
///
/// A packet is a text's length in bytes, 32 bits little-endian, and the text in UTF-8. The owner
/// lives on another thread and talks to the pipe only through the functions and signals that say
/// so; no function called there waits for the host. A pipe is not opened twice.
class NamedPipe : public QObject
{
    Q_OBJECT

public:
    enum PipeRole : std::uint32_t { Reader = 1, Writer = 2 };

    explicit NamedPipe(PipeRole role);
    /// Closes the pipe.
    ~NamedPipe() override;

    /// Starts the pipe's thread, which opens the pipe `name` and reads it until it fails.
    void startReaderThread(const QString& name);
    /// Starts the pipe's thread, which opens the pipe `name` and writes what sendData() is given.
    void startWriterThread(const QString& name);

    /// Has the writer's thread write one packet. Any thread; packets of one thread keep their
    /// order. Dropped once closePipe() has begun.
    void sendData(const QString& text);

    /// Ends the thread, whatever pipe call it is blocked in, and releases handle and buffer. Texts
    /// not yet written are dropped. May be called again, and on the pipe's own
    /// thread too, where the thread is only asked to end: the next close from outside waits for it.
    void closePipe();

Q_SIGNALS:
    void sigInitReader(QString name);
    void sigInitWriter(QString name);
    void sigSendData(QString newValue);
    /// One complete inbound text. Emitted on the reader's thread.
    void sigReadyRead(QString);
    /// The pipe could not be opened, or the read loop has ended on its own. Emitted once, on the
    /// pipe's thread, and not when closePipe() cancelled the opening or reading.
    void sigExitPipe();

private:
    friend class NamedPipeProbe;

    /// What closePipe() may have to cancel.
    enum class Call { None, Open, WaitUntilFree, Read, Write };

    void startThread();
    void stopThread();
    void initReader(QString name);
    void initWriter(QString name);
    bool initPipe(const QString& name, unsigned long access);
    int readPacket();
    DWORD readUntilError();
    bool extractPackets();
    bool writePacket(QString text);
    /// Makes a pipe call that closePipe() may cancel and returns whether it succeeded; `error` is
    /// why it did not: ERROR_OPERATION_ABORTED from the moment that closing begins.
    template<typename Function>
    bool blockingCall(Call which, DWORD& error, Function call);
    /// Whether a call that ended with `error` was cancelled by closePipe().
    bool cancelledByClose(DWORD error) const;

    QThread* m_thread = nullptr;
    pavo::UniqueHandle m_handle;
    const PipeRole m_role;
    std::unique_ptr<char[]> m_buffer;
    std::int32_t m_buffered = 0;
    std::atomic<bool> m_closing{false};
    std::atomic<int> m_senders{0};        ///< Threads that are emitting sigSendData().
    std::atomic<Call> m_call{Call::None}; ///< That the pipe's thread is in.
    std::atomic<pavo::ThreadCanceller*> m_canceller{
        nullptr}; ///< Of the pipe's thread, once it runs.
};
