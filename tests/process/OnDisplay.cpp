#include "tests/process/OnDisplay.h"

#include "tests/process/Display.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/RuntimeFolder.h"
#include "tools/pavo-workbench/Screen.h"

#include <QCoreApplication>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

/// The tests themselves, where there is a display.
const Role onDisplay("on-display", [](const QStringList& arguments) {
    QList<QByteArray> words{"on-display"};
    for (const QString& argument : arguments)
        words << argument.toLocal8Bit();
    std::vector<char*> pointers;
    pointers.reserve(static_cast<std::size_t>(words.size()));
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    int argc = static_cast<int>(pointers.size());
    const auto application = Screen::makeApplication(argc, pointers.data());
    testing::InitGoogleTest(&argc, pointers.data());
    return RUN_ALL_TESTS();
});

} // namespace

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (Role::runAsAsked(argc, argv, exitCode))
        return exitCode;
    const RuntimeFolder folder;
    const QCoreApplication application(argc, argv);
    const Display display;
    QStringList arguments = QCoreApplication::arguments();
    const QString program = arguments.takeFirst();
    arguments = QStringList{QStringLiteral("--role"), QStringLiteral("on-display")} + arguments;
    const QList<DisplayVariant> variants = displayVariants();
    for (const DisplayVariant& variant : variants) {
        for (const auto& [name, value] : variant) {
            qputenv(name, value);
            std::printf("%s=%s\n", name.constData(), value.constData());
        }
        std::fflush(stdout);
        exitCode = std::max(exitCode, std::abs(QProcess::execute(program, arguments)));
    }
    return exitCode;
}
