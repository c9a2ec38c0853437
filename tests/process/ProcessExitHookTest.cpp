#include "platform/ProcessExit.h"
#include "tests/support/RoleProcess.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

void closeFirst()
{
    sayToParent(QCoreApplication::instance() ? "first, with Qt" : "first, without Qt");
}

void closeSecond()
{
    sayToParent(QCoreApplication::instance() ? "second, with Qt" : "second, without Qt");
}

int endApplication(const QStringList& /*arguments*/)
{
    {
        int argc = 1;
        char name[] = "role";
        char* argv[] = {name, nullptr};
        const QCoreApplication application(argc, argv);
        pavo::closeAtProcessExit(closeSecond);
        pavo::closeAtProcessExit(closeFirst);
        pavo::closeAtProcessExit(closeSecond); // The last time counts.
        sayToParent("ending");
    }
    sayToParent("ended");
    return 0;
}
const Role kEndApplicationRole("end-application", endApplication);

int leaveThroughExit(const QStringList& /*arguments*/)
{
    static int argc = 1;
    static char name[] = "role";
    static char* argv[] = {name, nullptr};
    // Never destroyed, as where exit() is called below main().
    static const auto* application = new QCoreApplication(argc, argv);
    static_cast<void>(application);
    pavo::closeAtProcessExit(closeFirst);
    pavo::closeAtProcessExit(closeSecond);
    sayToParent("leaving");
    std::exit(0);
}
const Role kLeaveThroughExitRole("leave-through-exit", leaveThroughExit);

} // namespace

TEST(ProcessExit, closesOnceWhenTheApplicationEnds)
{
    RoleProcess process("end-application", {});
    EXPECT_EQ(process.nextLine(), "ending");
    EXPECT_EQ(process.nextLine(), "second, with Qt");
    EXPECT_EQ(process.nextLine(), "first, with Qt");
    EXPECT_EQ(process.nextLine(), "ended");
    EXPECT_EQ(process.nextLine(), "");
    EXPECT_EQ(process.waitForExit(), 0);
}

TEST(ProcessExit, exitWithoutEndingTheApplicationIsOrderly)
{
    RoleProcess process("leave-through-exit", {});
    EXPECT_EQ(process.nextLine(), "leaving");
#ifndef Q_OS_WIN
    // Windows has ended the process's threads by then: nothing is left to close there.
    EXPECT_EQ(process.nextLine(), "second, with Qt");
    EXPECT_EQ(process.nextLine(), "first, with Qt");
#endif
    EXPECT_EQ(process.nextLine(), "");
    EXPECT_EQ(process.waitForExit(), 0);
}
