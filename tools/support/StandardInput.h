#pragma once

#include <QByteArray>
#include <QObject>

#include <memory>

/// Standard input as it comes, read on a thread of its own.
///
/// That thread is never waited for: no call frees a thread from reading a terminal on every system.
/// It owns nothing that the process needs to end, holds no lock while it reads (a C stream's would
/// hold up the exit), and knows this object only until it is destroyed.
class StandardInput : public QObject
{
    Q_OBJECT

public:
    StandardInput();
    ~StandardInput() override;

    /// To be called once, after the signals have been connected.
    void start();

    static bool isTerminal();

Q_SIGNALS:
    void received(QByteArray bytes);
    void ended();

private:
    struct Link;
    static void run(const std::shared_ptr<Link>& link);

    const std::shared_ptr<Link> m_link;
};
