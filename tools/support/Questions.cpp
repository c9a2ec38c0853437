#include "tools/support/Questions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <pavo_ipc/PavoIpcVersion.h>

#include <cstdio>

Questions::Questions(QCommandLineParser& parser)
    : m_parser(parser)
    , m_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this."))
    , m_version({QStringLiteral("v"), QStringLiteral("version")},
                QStringLiteral("Show the version."))
{
    parser.addOptions({m_help, m_version});
}

bool Questions::areAnswered() const
{
    QString answer;
    if (m_parser.isSet(m_help))
        answer = m_parser.helpText();
    else if (m_parser.isSet(m_version))
        answer = QCoreApplication::applicationName() + QStringLiteral(" " PAVO_IPC_VERSION "\n");
    std::fputs(answer.toUtf8().constData(), stdout);
    return !answer.isEmpty();
}
