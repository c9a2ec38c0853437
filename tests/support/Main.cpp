// Every test executable's start. It is its own child process, too.

#include "tests/support/RoleProcess.h"
#include "tests/support/RuntimeFolder.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (Role::runAsAsked(argc, argv, exitCode))
        return exitCode;
    // A killed host leaves its socket behind. Static, as what is destroyed at exit still uses it.
    static const RuntimeFolder folder;
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
