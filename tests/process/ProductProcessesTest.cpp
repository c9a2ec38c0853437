// Two products, which have an application name each, with workbenches in processes of their own.

#include "ipc/MultiAccount/MACodes.h"
#include "platform/Win32.h"
#include "tests/support/AccountTexts.h"
#include "tests/support/SegmentTexts.h"
#include "tests/support/WorkbenchProcess.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

/// A workbench of an installation, joined.
class Joined : public WorkbenchProcess
{
public:
    Joined(const QString& application, int number)
        : WorkbenchProcess((QCoreApplication::setApplicationName(application), number))
        , identity(workbenchIdentity(number))
    {
        EXPECT_EQ(reply(), Texts{"ready"});
        EXPECT_EQ(ask("initManager 1"), Texts{"1"});
    }

    const WorkbenchIdentity identity;
};

class ProductProcessesTest : public testing::Test
{
protected:
    /// The list of the installation that the process with this application name would see.
    static std::string listOf(const QString& application)
    {
        QCoreApplication::setApplicationName(application);
        const auto texts = readSegmentTexts();
        return texts ? texts->accounts.c_str() : "no segment";
    }

    /// Posts the message of an installation to a window and has its workbench look.
    static Texts heard(Joined& by, const QString& application, MACode code, int value)
    {
        const auto wide = [](const std::string& text) {
            return QString::fromStdString(text).toStdWString();
        };
        const HWND window =
            FindWindowW(wide(by.identity.className).c_str(), wide(by.identity.title).c_str());
        EXPECT_NE(window, nullptr);
        const UINT message = RegisterWindowMessageW(
            (application + QLatin1String(kMAMessageSuffix)).toStdWString().c_str());
        EXPECT_TRUE(PostMessageA(window, message, static_cast<WPARAM>(code), value));
        return by.ask("deliver");
    }

    const QString m_first =
        QStringLiteral("pavo-product-%1").arg(QCoreApplication::applicationPid());
    const QString m_second = m_first + QStringLiteral("-other");
    Joined m_a{m_first, 0};
    Joined m_b{m_first, 2};
    /// With the session and pin of a.
    Joined m_c{m_second, 0};
};

} // namespace

TEST_F(ProductProcessesTest, SegmentsAreTheirOwn)
{
    const std::string second = listOf(m_second);
    EXPECT_EQ(m_a.ask("loginAccountCount"), Texts{"2"});
    EXPECT_EQ(m_c.ask("loginAccountCount"), Texts{"1"});
    EXPECT_EQ(m_c.ask("isSelectedAccount"), Texts{"1"});
    EXPECT_EQ(m_b.ask("switchToCurrentPin").front(), "1");
    EXPECT_EQ(m_a.ask("isSelectedAccount"), Texts{"0"});
    EXPECT_EQ(m_c.ask("isSelectedAccount"), Texts{"1"}) << "each product has a front of its own";
    EXPECT_EQ(m_a.ask("quitCurrentAccount").front(), "1");
    m_b.kill();
    EXPECT_EQ(listOf(m_first), "") << "nobody is left, which is no concern of the other product";
    EXPECT_EQ(listOf(m_second), second);
    EXPECT_EQ(m_c.ask("loginAccountCount"), Texts{"1"});
}

TEST_F(ProductProcessesTest, MessagesAreTheirOwn)
{
    EXPECT_EQ(m_a.ask("switchLoginState 5"), Texts{"1"});
    EXPECT_EQ(m_b.ask("deliver"), (Texts{"done", messageText(kMALoginState, 5), loginCallText(5)}));
    EXPECT_EQ(m_c.ask("deliver"), Texts{"done"});
    // Also if one comes to the wrong window.
    EXPECT_EQ(heard(m_c, m_first, kMALoginState, 6), Texts{"done"});
    EXPECT_EQ(heard(m_c, m_second, kMALoginState, 7),
              (Texts{"done", messageText(kMALoginState, 7), loginCallText(7)}));
}
