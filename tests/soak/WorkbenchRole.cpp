// One workbench, on the command of the soak.

#include "tests/soak/SoakWorkbench.h"
#include "tests/support/RoleProcess.h"
#include "tools/support/Lines.h"
#include "tools/support/StandardInput.h"

#include <QCoreApplication>

namespace {

const Role kWorkbenchRole("workbench", [](const QStringList& arguments) {
    int argc = 1;
    char name[] = "workbench";
    char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(arguments[0]);

    SoakWorkbench workbench(arguments[1].toInt(), arguments[2].toInt(), arguments[3].toUInt());
    StandardInput input;
    QByteArray buffer;
    QObject::connect(&input, &StandardInput::received, &application, [&](const QByteArray& bytes) {
        buffer += bytes;
        for (const QString& line : takeLines(buffer))
            workbench.run(line.toStdString());
    });
    // Whoever gives the commands has died.
    QObject::connect(&input, &StandardInput::ended, &application, &QCoreApplication::quit);
    input.start();
    sayToParent("ready");
    return QCoreApplication::exec();
});

} // namespace
