#pragma once

#include "ipc/KTChannelManager.h"
#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <string>
#include <vector>

/// This process is the workbench, and its host a process that does what the test says, line by
/// line:
///   create-in NAME, create-out NAME    makes the pipe that the workbench reads, or writes
///   accept-in, accept-out              waits for the workbench
///   write HEX                          writes these bytes
///   read COUNT                         reads "message 0" and those after it; others are a failure
///   read-end                           reads until the workbench has gone
///   close-in, close-out                closes the pipe
/// Each is answered with "ok" or "failed".
class HostProcessFixture : public testing::Test
{
protected:
    inline static const QString kPrefix = QStringLiteral("\\\\.\\pipe\\");
    using Lines = std::vector<std::string>;

    static KTChannelManager& channel() { return *KTChannelManager::sharedInstance(); }

    /// Has the host do what the line says; whether it could.
    bool tell(const QByteArray& line)
    {
        host.say(line.toStdString());
        return host.nextLine() == "ok";
    }

    bool connect() { return createPipes() && startUp() && tell("accept-in") && tell("accept-out"); }

    bool createPipes()
    {
        return tell("create-in " + in.toUtf8()) && tell("create-out " + out.toUtf8());
    }

    bool startUp()
    {
        return channel().startUp(
            QStringLiteral("pipe?param=") + kPrefix + in + QLatin1Char('&') + kPrefix + out,
            [this](int code, const std::string&, const QString&) { codes.push_back(code); },
            nullptr);
    }

    void enterMainWindow()
    {
        auto* observer = new KTChannelObserver;
        observer->onPipeClosed = [this] { ++closed; };
        observer->onOpenBaseInfoSetting = [this] { ++settings; };
        channel().enterMainUI(0, observer);
    }

    /// The complaints without those of writes, of which there may be any number.
    Lines complaintsButWrites() const
    {
        Lines lines;
        for (const std::string& line : log.complaints()) {
            if (line.rfind("ERROR write data failed ", 0) != 0)
                lines.push_back(line);
        }
        return lines;
    }

    void TearDown() override
    {
        channel().enterMainUI(0, nullptr);
        channel().startUp(QString(), nullptr, nullptr);
    }

    LogRecorder log;
    RoleProcess host{"host", {}};
    const QString in = uniquePipeName(QStringLiteral("in"));
    const QString out = uniquePipeName(QStringLiteral("out"));
    std::vector<int> codes;
    int closed = 0;
    int settings = 0;
};
