#pragma once

#include "platform/MessageWindow.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/Wait.h"

#include <QAbstractNativeEventFilter>

#include <memory>

/// A manager with the window of its account and an observer that writes down what it is told.
class Workbench
{
public:
    explicit Workbench(std::string name)
        : pin(std::move(name))
        , window(QString::fromStdString("class " + pin), title())
    {
        auto* observer = new MAObserver;
        observer->messageCallback = [this](int code, MASelectedAccount& selected,
                                           std::list<MAAccountInfo>& accounts) {
            std::string call = std::to_string(code) + ' ' + selected.pin + ' ' +
                               std::to_string(selected.windowState) + " [";
            for (const MAAccountInfo& account : accounts)
                call += (call.back() == '[' ? "" : " ") + account.pin;
            calls.push_back(call + ']');
        };
        observer->loginStateCallback = [this](int state) {
            calls.push_back("login state " + std::to_string(state));
        };
        manager.addObserver(observer);
    }

    bool join()
    {
        return manager.initManager("app", pin, "class " + pin, title().toStdString(), 1);
    }

    const MAAccountInfo listed()
    {
        for (const MAAccountInfo& account : manager.accounts()) {
            if (account.pin == pin)
                return account;
        }
        return {};
    }

    std::string pin;
    std::vector<std::string> calls;    ///< of the observer
    std::vector<std::string> received; ///< window messages, as "code lParam"
    MAManagerProbe manager;
    pavo::MessageWindow window;

private:
    [[nodiscard]] QString title() const
    {
        // Windows are seen by every process of the user.
        return QCoreApplication::applicationName() + QLatin1Char(' ') + QString::fromStdString(pin);
    }
};

/// Three workbenches in one process, each with its own messages.
class WorkbenchesFixture : public AccountsFixture, public QAbstractNativeEventFilter
{
protected:
    using Calls = std::vector<std::string>;

    WorkbenchesFixture()
        : a("a")
        , b("b")
        , c("c")
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    void joinAll()
    {
        ASSERT_TRUE(a.join() && b.join() && c.join());
        forget();
    }

    void joinSeparately()
    {
        joinAll();
        a.manager.changeMergeMode(0, false);
        settle();
        // All of them have taken the front, in whatever order their messages arrived.
        c.manager.switchToCurrentPin();
        forget();
    }

    void forget()
    {
        settle();
        for (Workbench* each : {&a, &b, &c}) {
            each->calls.clear();
            each->received.clear();
        }
        log.clear();
    }

    /// Has every message handled that was posted so far.
    void settle()
    {
        const unsigned int mark = RegisterWindowMessageW(L"pavo-test-mark");
        for (Workbench* each : {&a, &b, &c}) {
            m_marked = nullptr;
            ASSERT_TRUE(PostMessageA(each->window.handle(), mark, 0, 0));
            ASSERT_TRUE(waitUntil([&] { return m_marked == each->window.handle(); }));
        }
    }

    /// What the three windows have received since forget(), as "a: 1 0, 2 0; b: ; c: ".
    std::string received()
    {
        settle();
        std::string text;
        for (Workbench* each : {&a, &b, &c}) {
            text += (text.empty() ? "" : "; ") + each->pin + ':';
            for (const std::string& message : each->received)
                text += ' ' + message;
        }
        return text;
    }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message, long* /*result*/) override
    {
        const auto* posted = static_cast<const MSG*>(message);
        for (Workbench* each : {&a, &b, &c}) {
            if (posted->hwnd != each->window.handle())
                continue;
            const auto code = static_cast<long>(posted->wParam);
            const auto value = static_cast<long>(posted->lParam);
            if (posted->message == RegisterWindowMessageW(L"pavo-test-mark"))
                m_marked = posted->hwnd;
            // Windows send messages of their own, too.
            else if (each->manager.messageId() != 0 &&
                     each->manager.handleNativeEvent(posted->message, code, value))
                each->received.push_back(std::to_string(code) + '/' + std::to_string(value));
            else
                return false;
            return true;
        }
        return false;
    }

    Workbench a;
    Workbench b;
    Workbench c;

private:
    HWND m_marked = nullptr;
};
