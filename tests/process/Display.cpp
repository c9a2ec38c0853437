#include "tests/process/Display.h"

#include "tests/support/Wait.h"

#include <QStringList>

#include <gtest/gtest.h>

void forgetDisplays()
{
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        qunsetenv(name);
}

Display::Display()
{
    forgetDisplays();
    // The server chooses a number that is free and says so.
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-screen"), QStringLiteral("0"),
                    QStringLiteral("1280x800x24"), QStringLiteral("-dpi"), QStringLiteral("96")});
    const bool isUp =
        waitUntil([this] { return m_server.canReadLine(); }) && m_server.waitForStarted(0);
    EXPECT_TRUE(isUp) << m_server.readAllStandardError().constData();
    qputenv("DISPLAY", ':' + m_server.readLine().trimmed());
}

Display::~Display()
{
    forgetDisplays();
    m_server.terminate();
    m_server.waitForFinished(kDeadlineMs);
}
