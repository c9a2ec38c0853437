#include "tests/documents/Page.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QRegularExpression>

#include <set>
#include <string>

// Every text that the sources log, with its level, has a row in docs/logs.md, and no row tells of a
// text that none logs.

namespace {

using Texts = std::set<std::string>;

/// Stands for what is known only when it is logged.
const QString kAny = QStringLiteral("…");

/// The pieces between the `<<` of a log record, from `at` to the parenthesis that closes it.
QStringList pieces(const QString& source, int at)
{
    QStringList found{QString()};
    for (int depth = 1; depth > 0 && at < source.size(); ++at) {
        const QChar c = source[at];
        if (c == QLatin1Char('"')) {
            const int end = source.indexOf(QLatin1Char('"'), at + 1);
            found.last() += source.midRef(at, end - at + 1);
            at = end;
            continue;
        }
        if (depth == 1 && source.midRef(at, 2) == QLatin1String("<<")) {
            found << QString();
            ++at;
            continue;
        }
        depth += c == QLatin1Char('(') ? 1 : c == QLatin1Char(')') ? -1 : 0;
        if (depth > 0)
            found.last() += c;
    }
    return found;
}

/// A piece as the page has it: a literal or a constant by its text.
QString shown(const QString& piece, const QString& source)
{
    QString literals = piece.trimmed();
    if (literals.startsWith(QLatin1Char('k'))) {
        const QRegularExpression constant(QStringLiteral("\\b%1 = (\".*\");").arg(literals));
        literals = constant.match(source).captured(1);
    }
    if (!literals.startsWith(QLatin1Char('"')))
        return kAny;
    QString text;
    const QStringList parts = literals.split(QLatin1Char('"'));
    for (int i = 1; i < parts.size(); i += 2)
        text += parts[i];
    return text;
}

Texts loggedBySources()
{
    static const QRegularExpression record(
        QStringLiteral("LOG4CPLUS_([A-Z]+)\\(\\s*Logger::logger\\(\\),"));
    Texts texts;
    for (const char* folder : {"ipc", "platform", "framework"}) {
        QDirIterator files(sourceFile(QString::fromLatin1(folder)),
                           {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString source =
                readSource(QDir(sourceFile(QString())).relativeFilePath(files.next()));
            auto records = record.globalMatch(source);
            while (records.hasNext()) {
                const auto match = records.next();
                QString text;
                for (const QString& piece : pieces(source, match.capturedEnd()))
                    text += shown(piece, source);
                texts.insert((match.captured(1) + QLatin1Char(' ') + text).toStdString());
            }
        }
    }
    return texts;
}

} // namespace

TEST(LogsPageTest, HasEveryTextThatIsLoggedAndNoOther)
{
    Texts onThePage;
    const Page page(QStringLiteral("logs.md"));
    for (const Section& section : page.sections()) {
        for (const QStringList& row : section.rows()) {
            ASSERT_EQ(row.size(), 4) << qPrintable(row.join(QLatin1Char('|')));
            const QString text = codeSpans(row[1]).value(0);
            EXPECT_FALSE(row[2].isEmpty() || row[3].isEmpty()) << qPrintable(text);
            EXPECT_TRUE(
                onThePage.insert((row[0].toUpper() + QLatin1Char(' ') + text).toStdString()).second)
                << qPrintable(text);
        }
    }
    const Texts logged = loggedBySources();
    EXPECT_GT(logged.size(), 50U);
    EXPECT_EQ(onThePage, logged);
}
