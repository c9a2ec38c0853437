// Windows and their messages, across processes where that matters.

#include "platform/MessageWindow.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/RuntimeFolder.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace {

QString unique(const QString& role)
{
    static int number = 0;
    return QStringLiteral("pavo-%1-%2-%3")
        .arg(role)
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}

HWND find(const QString& className, const QString& title)
{
    return FindWindowW(className.toStdWString().c_str(), title.toStdWString().c_str());
}

UINT registerMessage(const QString& name)
{
    return RegisterWindowMessageW(name.toStdWString().c_str());
}

/// Collects the messages of one number.
class Receiver : public QAbstractNativeEventFilter
{
public:
    explicit Receiver(UINT message)
        : m_message(message)
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& type, void* message, long* /*result*/) override
    {
        const auto* posted = static_cast<const MSG*>(message);
        if (type != "windows_generic_MSG" || posted->message != m_message)
            return false;
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        messages.push_back(*posted);
        return true;
    }

    std::vector<MSG> messages;

private:
    UINT m_message;
};

const Role kRegister("register-message", [](const QStringList& arguments) {
    sayToParent(std::to_string(registerMessage(arguments[0])));
    return 0;
});

const Role kFind("find-window", [](const QStringList& arguments) {
    // In digits: a command line does not carry every character everywhere.
    const QString title = QString::fromUtf8(QByteArray::fromHex(arguments[1].toLatin1()));
    HWND window = find(arguments[0], title);
    sayToParent(!window ? "none" : IsWindowVisible(window) ? "visible" : "hidden");
    return 0;
});

const Role kOwn("own-window", [](const QStringList& arguments) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const pavo::MessageWindow window(arguments[0], arguments[0]);
    sayToParent("ready");
    return QCoreApplication::exec();
});

const Role kPost("post-messages", [](const QStringList& arguments) {
    const UINT message = registerMessage(arguments[0]);
    HWND window = find(arguments[0], arguments[0]);
    bool posted = true;
    for (unsigned i = 0; i < arguments[1].toUInt() && posted; ++i)
        posted = PostMessageA(window, message, i, -1) != 0;
    return posted ? 0 : 1;
});

/// Windows come and go on one thread while another posts to whichever is there. Says how many posts
/// were taken.
const Role kComeAndGo("windows-come-and-go", [](const QStringList& arguments) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const UINT message = registerMessage(arguments[0]);
    std::atomic<bool> isOver{false};
    std::atomic<int> taken{0};
    std::thread poster([&] {
        while (!isOver) {
            if (PostMessageA(find(arguments[0], arguments[0]), message, 1, 2))
                ++taken;
        }
    });
    for (unsigned i = 0; i < arguments[1].toUInt() || taken == 0; ++i)
        const pavo::MessageWindow window(arguments[0], arguments[0]);
    isOver = true;
    poster.join();
    sayToParent(std::to_string(taken));
    return 0;
});

class WindowTest : public testing::Test
{
protected:
    /// What another process sees.
    static std::string lookedUp(const QString& className, const QString& title)
    {
        return RoleProcess("find-window", {className, QString::fromLatin1(title.toUtf8().toHex())})
            .nextLine();
    }

private:
    RuntimeFolder m_folder;
};

} // namespace

TEST_F(WindowTest, SameNameHasTheSameNumberInEveryProcess)
{
    const QString name = unique(QStringLiteral("message"));
    const UINT number = registerMessage(name);
    EXPECT_GE(number, 0xC000U);
    EXPECT_LE(number, 0xFFFFU);
    EXPECT_EQ(registerMessage(name), number);
    EXPECT_EQ(registerMessage(name.toUpper()), number);
    EXPECT_EQ(RoleProcess("register-message", {name}).nextLine(), std::to_string(number));
}

TEST_F(WindowTest, DifferentNamesHaveDifferentNumbersWhoeverRegistersThem)
{
    std::unique_ptr<RoleProcess> peers[8];
    std::set<std::string> numbers;
    for (auto& peer : peers)
        peer = std::make_unique<RoleProcess>("register-message",
                                             QStringList{unique(QStringLiteral("message"))});
    for (const auto& peer : peers)
        numbers.insert(peer->nextLine());
    EXPECT_EQ(numbers.size(), std::size(peers));
}

TEST_F(WindowTest, ImpossibleNamesAreRefused)
{
    EXPECT_EQ(registerMessage(QString()), 0U);
    EXPECT_EQ(registerMessage(QString(300, QLatin1Char('x'))), 0U);
    EXPECT_NE(registerMessage(unique(QString(200, QChar(0x5f20)))), 0U);
}

TEST_F(WindowTest, IsFoundByClassAndTitleWithoutRegardToCase)
{
    const QString className = unique(QStringLiteral("Class"));
    const QString title = unique(QStringLiteral("Title \u5f20\u4e09"));
    EXPECT_EQ(find(className, title), nullptr);
    {
        const pavo::MessageWindow window(className, title);
        ASSERT_NE(window.handle(), nullptr);
        EXPECT_EQ(find(className, title), window.handle());
        EXPECT_EQ(find(className.toUpper(), title.toLower()), window.handle());
        EXPECT_EQ(find(title, className), nullptr);
        EXPECT_EQ(find(className, title + QLatin1Char('x')), nullptr);
        EXPECT_TRUE(IsWindow(window.handle()));
        EXPECT_EQ(lookedUp(className, title), "hidden");
    }
    EXPECT_EQ(find(className, title), nullptr);
}

TEST_F(WindowTest, AnotherOfTheSameNameIsFoundWhenTheOneFoundHasGone)
{
    const QString name = unique(QStringLiteral("window"));
    const pavo::MessageWindow first(name, name);
    {
        const pavo::MessageWindow second(name, name);
        HWND found = find(name, name);
        EXPECT_TRUE(found == first.handle() || found == second.handle());
        EXPECT_TRUE(IsWindow(first.handle()));
        EXPECT_TRUE(IsWindow(second.handle()));
    }
    EXPECT_EQ(find(name, name), first.handle());
    RoleProcess peer("own-window", {name});
    ASSERT_EQ(peer.nextLine(), "ready");
    peer.kill();
    EXPECT_TRUE(waitUntil([&] { return find(name, name) == first.handle(); }));
    EXPECT_TRUE(PostMessageA(first.handle(), registerMessage(name), 1, 2));
}

TEST_F(WindowTest, OthersSeeWhetherItIsVisible)
{
    const QString name = unique(QStringLiteral("window"));
    pavo::MessageWindow window(name, name);
    EXPECT_FALSE(IsWindowVisible(window.handle()));
    window.setVisible(true);
    EXPECT_TRUE(IsWindowVisible(window.handle()));
    EXPECT_EQ(lookedUp(name, name), "visible");
    window.setVisible(false);
    EXPECT_FALSE(IsWindowVisible(window.handle()));
}

TEST_F(WindowTest, GoesWithItsProcessHoweverThatEnds)
{
    const QString name = unique(QStringLiteral("window"));
    RoleProcess peer("own-window", {name});
    ASSERT_EQ(peer.nextLine(), "ready");
    HWND window = find(name, name);
    ASSERT_NE(window, nullptr);
    peer.kill();
    EXPECT_TRUE(waitUntil([&] { return !find(name, name); }));
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(PostMessageA(window, registerMessage(name), 1, 2));
    EXPECT_EQ(GetLastError(), 1400U);
}

TEST_F(WindowTest, MayGoInTheMiddleOfAPost)
{
    // In a process that does nothing about signals, as this one does for its children.
    RoleProcess peer("windows-come-and-go",
                     {unique(QStringLiteral("window")), QStringLiteral("600")});
    const std::string taken = peer.nextLine(kBurstMs);
    EXPECT_EQ(peer.waitForExit(), 0);
    EXPECT_NE(taken, "0");
}

TEST_F(WindowTest, HandsPostedMessagesToTheNativeEventFilters)
{
    const QString name = unique(QStringLiteral("window"));
    Receiver receiver(registerMessage(name));
    const pavo::MessageWindow window(name, name);
    const RoleProcess peer("post-messages", {name, QStringLiteral("1")});
    ASSERT_TRUE(waitUntil([&] { return receiver.messages.size() == 1; }));
    const MSG& message = receiver.messages.front();
    EXPECT_EQ(message.hwnd, window.handle());
    EXPECT_EQ(message.wParam, 0U);
    EXPECT_EQ(message.lParam, -1);
}

TEST_F(WindowTest, BurstIsKeptInOrderWhileTheReceiverIsBusy)
{
    const QString name = unique(QStringLiteral("window"));
    Receiver receiver(registerMessage(name));
    const pavo::MessageWindow window(name, name);
    RoleProcess peer("post-messages", {name, QStringLiteral("9000")});
    ASSERT_EQ(peer.waitForExit(kBurstMs), 0)
        << "posting waits for nobody: no event was handled here so far";
    ASSERT_TRUE(waitUntil([&] { return receiver.messages.size() == 9000; }, kBurstMs));
    for (std::size_t i = 0; i < receiver.messages.size(); ++i)
        ASSERT_EQ(receiver.messages[i].wParam, i);
}

TEST_F(WindowTest, PostingToAFullQueueFailsAtOnce)
{
    const QString name = unique(QStringLiteral("window"));
    const UINT message = registerMessage(name);
    Receiver receiver(message);
    const pavo::MessageWindow window(name, name);
    std::size_t posted = 0;
    while (posted < 25000 && PostMessageA(window.handle(), message, posted, 0))
        ++posted;
    const DWORD error = GetLastError();
    EXPECT_GE(posted, 10000U);
    EXPECT_TRUE(posted == 25000 || error == 1816U) << error;
    EXPECT_TRUE(waitUntil([&] { return receiver.messages.size() == posted; }, kBurstMs));
}
