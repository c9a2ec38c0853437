#include "tools/pavo-workbench/Commands.h"

#include "ipc/KTChannelManager.h"
#include "tools/pavo-workbench/Workbench.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <tuple>
#include <type_traits>

namespace {

bool convert(const QString& word, int& value)
{
    bool ok = false;
    value = word.toInt(&ok);
    return ok;
}

bool convert(const QString& word, unsigned& value)
{
    bool ok = false;
    value = word.toUInt(&ok);
    return ok;
}

bool convert(const QString& word, long long& value)
{
    bool ok = false;
    value = word.toLongLong(&ok);
    return ok;
}

bool convert(const QString& word, bool& value)
{
    value = word == QLatin1String("true");
    return value || word == QLatin1String("false");
}

bool convert(const QString& word, std::string& value)
{
    value = word.toStdString();
    return true;
}

bool convert(const QString& word, QString& value)
{
    value = word;
    return true;
}

using Action = std::function<bool(const QStringList& words)>;

/// Calls `function` with the words as its parameters; false when they are not such.
template<typename... Parameters, typename Function>
bool call(const Function& function, const QStringList& words)
{
    std::tuple<std::decay_t<Parameters>...> values;
    const bool ok = std::apply(
        [&words](auto&... value) {
            auto word = words.begin();
            return words.size() == static_cast<int>(sizeof...(value)) &&
                   (convert(*word++, value) && ...);
        },
        values);
    if (ok)
        std::apply(function, values);
    return ok;
}

template<typename... Parameters>
Action action(void (*function)(Parameters...))
{
    return [function](const QStringList& words) { return call<Parameters...>(function, words); };
}

template<typename... Parameters>
Action action(void (KTChannelManager::*sender)(Parameters...))
{
    return [sender](const QStringList& words) {
        const auto send = [sender](const auto&... values) {
            (KTChannelManager::sharedInstance()->*sender)(values...);
        };
        return call<Parameters...>(send, words);
    };
}

bool enter(const QStringList& words)
{
    return words.isEmpty() ? call<>([] { Workbench::enterMainWindow(0); }, words)
                           : call<unsigned>(&Workbench::enterMainWindow, words);
}

void printHelp()
{
    Workbench::say(Commands::help());
}

struct Command
{
    const char* name;
    const char* parameters;
    Action action;
};

const Command kCommands[] = {
    {"active", "", action(&KTChannelManager::activePlatform)},
    {"base-info", "TEXT", action(&KTChannelManager::baseInfoChanged)},
    {"cef-exception", "CODE TEXT TEXT TEXT TEXT TEXT",
     action(&KTChannelManager::UploadCefException)},
    {"enter", "[CODE]", &enter},
    {"help", "", action(&printHelp)},
    {"interface-exception", "CODE TEXT TEXT TEXT",
     action(&KTChannelManager::UploadInterfaceException)},
    {"login-failure", "PIN CODE TEXT", action(&KTChannelManager::loginFailure)},
    {"login-status", "STATUS", action(&KTChannelManager::changeLoginInitStatus)},
    {"plugin", "TEXT FLAG", action(&KTChannelManager::openPlugin)},
    {"quit", "", action(&QCoreApplication::quit)},
    {"setting", "TEXT", action(&KTChannelManager::openSetting)},
    {"skin", "INDEX", action(&KTChannelManager::changeSkinCallback)},
    {"status", "PRESENCE", action(&KTChannelManager::changeStatusCallback)},
    {"tray", "FLAG TEXT NUMBER", action(&KTChannelManager::trayIconAction)},
    {"unread", "COUNT", action(&KTChannelManager::unreadMsgChanged)},
    {"url", "LINK FLAG", action(&KTChannelManager::openUrl)},
};

QString usage(const Command& command)
{
    return QStringLiteral("%1 %2")
        .arg(QLatin1String(command.name), QLatin1String(command.parameters))
        .trimmed();
}

} // namespace

bool Commands::run(const QString& line, QString& problem)
{
    QStringList words = QProcess::splitCommand(line);
    if (words.isEmpty())
        return true;
    const QString name = words.takeFirst();
    const auto* command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](const Command& c) { return name == QLatin1String(c.name); });
    if (command == std::end(kCommands)) {
        problem = QStringLiteral("no such command: %1").arg(name);
        return false;
    }
    if (!command->action(words)) {
        problem = QStringLiteral("usage: ") + usage(*command);
        return false;
    }
    return true;
}

QString Commands::help()
{
    QString text = QStringLiteral("commands; a text with blanks stands in double quotes, a flag is "
                                  "true or false:");
    for (const Command& command : kCommands)
        text += QStringLiteral("\n  ") + usage(command);
    return text;
}
