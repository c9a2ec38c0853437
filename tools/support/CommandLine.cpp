#include "tools/support/CommandLine.h"

#include "tools/support/Tool.h"

#include <pavo_ipc/PavoIpcVersion.h>

CommandLine::CommandLine(const QString& description)
    : m_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this."))
    , m_version({QStringLiteral("v"), QStringLiteral("version")},
                QStringLiteral("Show the version."))
{
    setApplicationDescription(description);
    addOptions({m_help, m_version});
}

bool CommandLine::read(const QStringList& arguments, int& exitCode)
{
    const bool isFine = parse(arguments);
    QString answer;
    if (isSet(m_help))
        answer = helpText();
    else if (isSet(m_version))
        answer = Tool::name() + QStringLiteral(" " PAVO_IPC_VERSION "\n");
    print(answer.toUtf8());
    if (!answer.isEmpty()) {
        exitCode = 0;
    } else if (!isFine) {
        // Qt's is a sentence.
        QString problem = errorText();
        problem.chop(1);
        complain(problem.left(1).toLower() + problem.mid(1) +
                 QStringLiteral("; --help shows what can be said"));
        exitCode = kWrongUsage;
    }
    return isFine && answer.isEmpty();
}
