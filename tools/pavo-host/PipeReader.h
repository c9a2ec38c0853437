#pragma once

#include "platform/HostPipe.h"
#include "tools/pavo-host/PipeThread.h"

#include <QByteArray>
#include <QObject>

#include <atomic>
#include <optional>

/// The pipe that the workbench writes, read by message boundary on a thread of its own.
class PipeReader : public QObject
{
    Q_OBJECT

public:
    explicit PipeReader(const QString& name);
    ~PipeReader() override;

    bool isOpen() const { return m_pipe.isOpen(); }
    QString fullName() const { return m_pipe.fullName(); }

    void start();
    /// Once the workbench is no more: delivers what it has left in the pipe.
    void drain();
    /// Leaves unread what the workbench may still write.
    void close();

Q_SIGNALS:
    void opened();
    void received(QByteArray message);
    void ended();

private:
    void run();

    pavo::HostPipe m_pipe;
    std::atomic<bool> m_closing{false};
    std::optional<PipeThread> m_thread;
};
