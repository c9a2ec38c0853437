#pragma once

#include "platform/HostPipe.h"
#include "tools/pavo-host/PipeThread.h"

#include <QByteArrayList>
#include <QObject>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

/// The pipe that the workbench reads, written on a thread of its own, since a write waits for a
/// workbench that does not read.
class PipeWriter : public QObject
{
    Q_OBJECT

public:
    explicit PipeWriter(const QString& name);
    ~PipeWriter() override;

    bool isOpen() const { return m_pipe.isOpen(); }
    QString fullName() const { return m_pipe.fullName(); }

    void start();
    /// Has the pieces written in this order, each in one go; written() or failed() answers.
    void write(const QByteArrayList& pieces);
    /// Drops what has not been written yet.
    void close();

Q_SIGNALS:
    void opened();
    void written();
    /// The workbench reads no more. Nothing else will be written.
    void failed();

private:
    void run();
    /// Waits for something to write; nothing when the pipe is being closed.
    std::optional<QByteArrayList> next();

    pavo::HostPipe m_pipe;
    std::mutex m_mutex; ///< Guards the next three.
    std::condition_variable m_changed;
    std::deque<QByteArrayList> m_queue;
    bool m_closing = false;
    std::optional<PipeThread> m_thread;
};
