#include "tests/support/WorkbenchProcess.h"

#include "ipc/MultiAccount/MAManager.h"
#include "platform/MessageWindow.h"
#include "tests/support/AccountTexts.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <algorithm>
#include <random>
#include <sstream>

namespace {

/// Of each part of a reply, in none of which it occurs.
constexpr char kEnd = '|';

using Arguments = std::vector<int>;

class Workbench : public QAbstractNativeEventFilter
{
public:
    explicit Workbench(int number)
        : identity(workbenchIdentity(number))
        , window(QString::fromStdString(identity.className), QString::fromStdString(identity.title))
    {
        observe();
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    ~Workbench() override { manager.removeObserver(); }

    int serve()
    {
        sayToParent(window.handle() ? "ready" : "no window");
        std::string line;
        while (!(line = nextLineFromParent()).empty()) {
            std::string reply = perform(line) + kEnd;
            for (const std::string& each : m_heard)
                reply += each + kEnd;
            m_heard.clear();
            sayToParent(reply);
        }
        return 0;
    }

    void observe()
    {
        auto* observer = new MAObserver;
        observer->messageCallback = [this](int code, MASelectedAccount& selected,
                                           std::list<MAAccountInfo>& accounts) {
            m_heard.push_back(callText(code, selected, accounts));
        };
        observer->loginStateCallback = [this](int state) {
            m_heard.push_back(loginCallText(state));
        };
        manager.addObserver(observer);
    }

    /// False when that did not come about.
    bool deliver()
    {
        m_isMarked = false;
        // A window's messages keep their order: what is before the mark was posted before it.
        return PostMessageA(window.handle(), m_mark, 0, 0) &&
               waitUntil([this] { return m_isMarked; });
    }

    std::string rush(int count, int seed, int all)
    {
        std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
        std::ptrdiff_t shown = 0;
        for (int i = 0; i < count; ++i) {
            manager.switchToAccount(
                account(static_cast<int>(random() % static_cast<unsigned>(all))));
            manager.changeCurrentUnread(static_cast<int>(random() % 10));
            deliver();
            shown += std::count_if(m_heard.begin(), m_heard.end(), [](const std::string& each) {
                return each.substr(0, 2) == std::to_string(kMAShow) + ' ';
            });
            m_heard.clear();
        }
        return std::to_string(shown);
    }

    /// Of no number: one without a pin.
    static MAAccountInfo account(int number)
    {
        const WorkbenchIdentity other =
            number < 0 ? WorkbenchIdentity{} : workbenchIdentity(number);
        MAAccountInfo result;
        result.setAccount(other.appID, other.pin, other.className, other.title, 0, 0);
        return result;
    }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message, long* /*result*/) override
    {
        const auto* posted = static_cast<const MSG*>(message);
        // Windows sends messages of its own, too.
        if (posted->hwnd != window.handle())
            return false;
        const auto code = static_cast<long>(posted->wParam);
        const auto value = static_cast<long>(posted->lParam);
        if (posted->message == m_mark) {
            m_isMarked = true;
            return true;
        }
        // In front of the calls that it leads to.
        const std::size_t before = m_heard.size();
        m_heard.push_back(messageText(code, value));
        const bool isOurs = manager.handleNativeEvent(posted->message, code, value);
        if (!isOurs)
            m_heard.resize(before);
        return isOurs;
    }

    const WorkbenchIdentity identity;
    const std::shared_ptr<MAManager> managerHolder = MAManager::Instance();
    MAManager& manager = *managerHolder;
    pavo::MessageWindow window;

private:
    std::string perform(const std::string& line);

    const UINT m_mark = RegisterWindowMessageW(L"pavo-test-mark");
    bool m_isMarked = false;
    std::vector<std::string> m_heard;
};

std::string text(int number)
{
    return std::to_string(number);
}

/// What a command results in when there is nothing to tell.
const std::string kDone = "done";

struct Operation
{
    const char* name;
    std::string (*run)(Workbench& own, const Arguments& with);
};

const Operation kOperations[] = {
    {"initManager",
     [](Workbench& own, const Arguments& with) {
         const WorkbenchIdentity& id = own.identity;
         return text(own.manager.initManager(id.appID, id.pin, id.className, id.title, with.at(0)));
     }},
    {"quitCurrentAccount",
     [](Workbench& own, const Arguments&) { return text(own.manager.quitCurrentAccount()); }},
    {"switchToAccount",
     [](Workbench& own, const Arguments& with) {
         return text(own.manager.switchToAccount(Workbench::account(with.at(0))));
     }},
    {"switchToCurrentPin",
     [](Workbench& own, const Arguments&) { return text(own.manager.switchToCurrentPin()); }},
    {"popupMainWindow",
     [](Workbench& own, const Arguments& with) {
         return text(own.manager.popupMainWindow(with.at(0) != 0));
     }},
    {"switchShowState",
     [](Workbench& own, const Arguments&) {
         own.manager.switchShowState();
         return kDone;
     }},
    {"switchedHide",
     [](Workbench& own, const Arguments&) {
         own.manager.switchedHide();
         return kDone;
     }},
    {"windowStateChanged",
     [](Workbench& own, const Arguments& with) {
         own.manager.windowStateChanged(with.at(0),
                                        QRect(with.at(1), with.at(2), with.at(3), with.at(4)));
         return kDone;
     }},
    {"changeMergeMode",
     [](Workbench& own, const Arguments& with) {
         own.manager.changeMergeMode(with.at(0), with.at(1) != 0);
         return kDone;
     }},
    {"changeCurrentSkin",
     [](Workbench& own, const Arguments& with) {
         own.manager.changeCurrentSkin(with.at(0));
         return kDone;
     }},
    {"changeCurrentUnread",
     [](Workbench& own, const Arguments& with) {
         own.manager.changeCurrentUnread(with.at(0));
         return kDone;
     }},
    {"changeCurrentUnreadMark",
     [](Workbench& own, const Arguments& with) {
         own.manager.changeCurrentUnreadMark(with.at(0));
         return kDone;
     }},
    {"changeLoginState",
     [](Workbench& own, const Arguments& with) {
         own.manager.changeLoginState(with.at(0));
         return kDone;
     }},
    {"switchLoginState",
     [](Workbench& own, const Arguments& with) {
         return text(own.manager.switchLoginState(with.at(0)));
     }},
    {"sortAllAccount",
     [](Workbench& own, const Arguments& with) {
         std::map<std::string, int> positions;
         for (std::size_t i = 0; i + 1 < with.size(); i += 2)
             positions[workbenchIdentity(with[i]).pin] = with[i + 1];
         return text(own.manager.sortAllAccount(positions));
     }},
    {"selectedAccount",
     [](Workbench& own, const Arguments&) {
         MASelectedAccount selected;
         const bool isRead = own.manager.selectedAccount(selected);
         return text(isRead) + ' ' + selectedText(selected);
     }},
    {"checkWindowVisible",
     [](Workbench& own, const Arguments&) { return text(own.manager.checkWindowVisible()); }},
    {"isSelectedAccount",
     [](Workbench& own, const Arguments&) { return text(own.manager.isSelectedAccount()); }},
    {"loginAccountCount",
     [](Workbench& own, const Arguments&) { return text(own.manager.loginAccountCount()); }},
    {"isInit", [](Workbench& own, const Arguments&) { return text(own.manager.isInit()); }},
    {"currentPin", [](Workbench& own, const Arguments&) { return own.manager.currentPin(); }},
    {"deliver",
     [](Workbench& own, const Arguments&) { return own.deliver() ? kDone : "not delivered"; }},
    {"observe",
     [](Workbench& own, const Arguments& with) {
         if (with.at(0) != 0)
             own.observe();
         else
             own.manager.removeObserver();
         return kDone;
     }},
    {"show",
     [](Workbench& own, const Arguments& with) {
         own.window.setVisible(with.at(0) != 0);
         return kDone;
     }},
    {"rush", [](Workbench& own,
                const Arguments& with) { return own.rush(with.at(0), with.at(1), with.at(2)); }},
};

std::string Workbench::perform(const std::string& line)
{
    std::istringstream words(line);
    std::string name;
    words >> name;
    Arguments arguments;
    for (int number = 0; words >> number;)
        arguments.push_back(number);
    for (const Operation& operation : kOperations) {
        if (name == operation.name)
            return operation.run(*this, arguments);
    }
    return "unknown operation " + name;
}

const Role kWorkbenchRole("workbench", [](const QStringList& arguments) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[0]);
    return Workbench(arguments[1].toInt()).serve();
});

} // namespace

WorkbenchIdentity workbenchIdentity(int number)
{
    const int titled = number == 3 ? 2 : number;
    return {number % 2 == 0 ? "one" : "two", "pin-" + std::to_string(number / 2),
            "class-" + std::to_string(number),
            QCoreApplication::applicationName().toStdString() + " \u5ba2\u670d " +
                std::to_string(titled)};
}

std::string commandLine(const std::string& operation, const std::vector<int>& arguments)
{
    std::string line = operation;
    for (const int argument : arguments)
        line += ' ' + std::to_string(argument);
    return line;
}

WorkbenchProcess::WorkbenchProcess(int number)
    : m_process("workbench", {QCoreApplication::applicationName(), QString::number(number)})
{
}

std::vector<std::string> WorkbenchProcess::reply(int deadlineMs)
{
    std::istringstream line(m_process.nextLine(deadlineMs));
    std::vector<std::string> parts;
    for (std::string part; std::getline(line, part, kEnd);)
        parts.push_back(part);
    return parts;
}

std::vector<std::string> WorkbenchProcess::ask(const std::string& command)
{
    say(command);
    return reply();
}

int WorkbenchProcess::end()
{
    m_process.say("");
    return m_process.waitForExit();
}
