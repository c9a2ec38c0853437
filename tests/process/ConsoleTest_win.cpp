// What the tools write on a console, and how they leave it.

#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QProcess>
#include <QUrl>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

constexpr UINT kCodePage = 437;

/// Narrow ones, since systems differ in how many cells a wide one takes. No code page of one byte
/// has them all.
const QString kLetters = QStringLiteral("éЖλ");

/// What stands on the console.
QString readScreen(HANDLE console)
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(console, &info);
    QString text;
    for (SHORT row = 0; row <= info.dwCursorPosition.Y; ++row) {
        std::wstring line(static_cast<std::size_t>(info.dwSize.X), L'\0');
        DWORD count = 0;
        ReadConsoleOutputCharacterW(console, line.data(), static_cast<DWORD>(info.dwSize.X),
                                    {0, row}, &count);
        text += QString::fromStdWString(line.substr(0, count));
    }
    return text;
}

/// Runs a tool on this process's console; says what then stands there, and the code page.
const Role kOnConsole("on-console", [](const QStringList& words) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE console =
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    &inherited, OPEN_EXISTING, 0, nullptr);
    SetConsoleOutputCP(kCodePage);
    SetStdHandle(STD_OUTPUT_HANDLE, console);
    SetStdHandle(STD_ERROR_HANDLE, console);
    QStringList arguments;
    for (const QString& word : words)
        arguments << QUrl::fromPercentEncoding(word.toLatin1());
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedChannels);
    tool.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* process) {
        process->flags &= ~DWORD{CREATE_NO_WINDOW};
    });
    tool.setProgram(arguments.takeFirst());
    tool.setArguments(arguments);
    tool.start();
    tool.waitForFinished(kDeadlineMs);
    sayToParent(QUrl::toPercentEncoding(readScreen(console)).toStdString());
    sayToParent(std::to_string(GetConsoleOutputCP()));
    return 0;
});

class Console : public testing::Test
{
protected:
    /// Runs a tool on a console of its own.
    void run(const QString& tool, const QStringList& arguments)
    {
        QStringList words{QStringLiteral("--role"), QStringLiteral("on-console")};
        for (const QString& word : QStringList{siblingExecutable(tool)} + arguments)
            words << QString::fromLatin1(QUrl::toPercentEncoding(word));
        m_process.setCreateProcessArgumentsModifier(
            [](QProcess::CreateProcessArguments* process) { process->flags |= CREATE_NO_WINDOW; });
        m_process.start(QCoreApplication::applicationFilePath(), words);
        ASSERT_TRUE(m_process.waitForFinished(2 * kDeadlineMs));
    }

    QByteArray nextLine() { return m_process.readLine().trimmed(); }
    QString nextText() { return QUrl::fromPercentEncoding(nextLine()); }

private:
    QProcess m_process;
};

} // namespace

TEST_F(Console, ShowsEveryLetterAndIsLeftAsItWas)
{
    const struct
    {
        const char* tool;
        QStringList arguments;
        QString text;
    } cases[] = {
        {"pavo-accounts",
         {QStringLiteral("--application"), kLetters},
         kLetters + QStringLiteral(": 0 accounts")},
        {"pavo-accounts",
         {QLatin1String("--") + kLetters},
         QStringLiteral("unknown option '%1'").arg(kLetters)},
        {"pavo-host",
         {QStringLiteral("--name"), kLetters, QStringLiteral("--raw"), QStringLiteral("--"),
          kLetters},
         QStringLiteral("cannot start %1").arg(kLetters)},
        {"pavo-workbench",
         {QStringLiteral("--pin"), kLetters},
         QStringLiteral("not an account: %1").arg(kLetters)},
    };
    for (const auto& each : cases) {
        run(QLatin1String(each.tool), each.arguments);
        const QString shown = nextText();
        EXPECT_TRUE(shown.contains(each.text)) << shown.toUtf8().constData();
        EXPECT_EQ(nextLine().toUInt(), kCodePage);
    }
}
