#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

bool waitUntil(const std::function<bool()>& condition, int deadlineMs)
{
    const QDeadlineTimer deadline(deadlineMs);
    // What another thread changes wakes no event loop: the timer has the condition looked at again.
    QTimer lookAgain;
    lookAgain.start(1);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}
