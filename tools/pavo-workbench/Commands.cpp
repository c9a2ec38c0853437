#include "tools/pavo-workbench/Commands.h"

#include "ipc/KTChannelManager.h"
#include "tools/pavo-workbench/Say.h"
#include "tools/pavo-workbench/Screen.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/support/Tool.h"

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

using Commands::Target;
using Action = std::function<bool(const Target& target, const QStringList& words)>;

/// Calls `function` with the words as its parameters; false when they are not such.
template<typename... Parameters, typename Function>
bool call(const Function& function, const QStringList& words)
{
    std::tuple<std::decay_t<Parameters>...> values;
    const bool ok = std::apply(
        [&words](auto&... value) {
            [[maybe_unused]] auto word = words.begin();
            return words.size() == static_cast<int>(sizeof...(value)) &&
                   (convert(*word++, value) && ...);
        },
        values);
    if (ok)
        std::apply(function, values);
    return ok;
}

/// Whom a command's member function is called for.
template<typename Class>
Class& receiverOf(const Target& target)
{
    if constexpr (std::is_same_v<Class, KTChannelManager>)
        return *KTChannelManager::sharedInstance();
    else if constexpr (std::is_same_v<Class, Accounts>)
        return target.workbench.accounts();
    else
        return target.workbench;
}

template<typename Class, typename... Parameters>
Action action(void (Class::*function)(Parameters...))
{
    return [function](const Target& target, const QStringList& words) {
        const auto run = [&](const auto&... values) {
            (receiverOf<Class>(target).*function)(values...);
        };
        return call<Parameters...>(run, words);
    };
}

template<typename Class>
Action action(void (Class::*function)() const)
{
    return [function](const Target& target, const QStringList& words) {
        return call<>([&] { (receiverOf<Class>(target).*function)(); }, words);
    };
}

template<typename... Parameters>
Action action(void (*function)(Parameters...))
{
    return [function](const Target& /*target*/, const QStringList& words) {
        return call<Parameters...>(function, words);
    };
}

bool enter(const Target& target, const QStringList& words)
{
    return action(&Workbench::enterMainWindow)(
        target, words.isEmpty() ? QStringList{QStringLiteral("0")} : words);
}

bool sort(const Target& target, const QStringList& words)
{
    target.workbench.accounts().sort(words);
    return true;
}

bool takeScreenshot(const Target& target, const QStringList& words)
{
    const auto take = [&](const QString& fileName) {
        if (!target.screen)
            say(QStringLiteral("no screenshot, as there is no window"));
        else if (target.screen->save(fileName))
            say(QStringLiteral("screenshot in %1").arg(fileName));
        else
            complain(QStringLiteral("cannot write %1").arg(fileName));
    };
    return call<QString>(take, words);
}

void printHelp()
{
    say(Commands::help());
}

struct Command
{
    const char* name;
    const char* parameters;
    Action action;
};

const Command kCommands[] = {
    {"account-login-state", "PRESENCE", action(&Accounts::switchOthersLoginState)},
    {"account-mark", "MARK", action(&Accounts::changeUnreadMark)},
    {"account-skin", "INDEX", action(&Accounts::changeSkin)},
    {"account-unread", "COUNT", action(&Accounts::changeUnread)},
    {"active", "", action(&KTChannelManager::activePlatform)},
    {"base-info", "TEXT", action(&KTChannelManager::baseInfoChanged)},
    {"cef-exception", "CODE TEXT TEXT TEXT TEXT TEXT",
     action(&KTChannelManager::UploadCefException)},
    {"enter", "[CODE]", &enter},
    {"front", "", action(&Accounts::bringToFront)},
    {"help", "", action(&printHelp)},
    {"hide", "", action(&Accounts::hide)},
    {"interface-exception", "CODE TEXT TEXT TEXT",
     action(&KTChannelManager::UploadInterfaceException)},
    {"list", "", action(&Accounts::sayList)},
    {"login-failure", "PIN CODE TEXT", action(&KTChannelManager::loginFailure)},
    {"login-status", "STATUS", action(&KTChannelManager::changeLoginInitStatus)},
    {"maximise", "", action(&Accounts::maximise)},
    {"merge", "FLAG", action(&Accounts::setMerged)},
    {"minimise", "", action(&Accounts::minimise)},
    {"place", "X Y WIDTH HEIGHT", action(&Accounts::place)},
    {"plugin", "TEXT FLAG", action(&KTChannelManager::openPlugin)},
    {"popup", "FLAG", action(&Accounts::popUp)},
    {"presence", "PRESENCE", action(&Workbench::setPresence)},
    {"quit", "", action(&QCoreApplication::quit)},
    {"quit-account", "", action(&Accounts::quit)},
    {"screenshot", "FILE", &takeScreenshot},
    {"sel", "", action(&Accounts::sayFront)},
    {"setting", "TEXT", action(&KTChannelManager::openSetting)},
    {"skin", "INDEX", action(&KTChannelManager::changeSkinCallback)},
    {"sort", "[PIN...]", &sort},
    {"status", "PRESENCE", action(&KTChannelManager::changeStatusCallback)},
    {"switch", "PIN", action(&Accounts::switchTo)},
    {"toggle", "", action(&Accounts::toggle)},
    {"tray", "FLAG TEXT NUMBER", action(&KTChannelManager::trayIconAction)},
    {"unread", "COUNT", action(&KTChannelManager::unreadMsgChanged)},
    {"url", "LINK FLAG", action(&KTChannelManager::openUrl)},
    {"visible", "", action(&Accounts::sayVisible)},
};

QString usage(const Command& command)
{
    return QStringLiteral("%1 %2")
        .arg(QLatin1String(command.name), QLatin1String(command.parameters))
        .trimmed();
}

} // namespace

bool Commands::run(const Target& target, const QString& line, QString& problem)
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
    if (!command->action(target, words)) {
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
