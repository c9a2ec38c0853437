#include "tests/documents/Page.h"
#include "tests/support/Workbenches.h"

#include <QRegularExpression>

#include <map>
#include <set>

// docs/window-messages.md has every number that the workbenches exchange, and what each code does
// to its receiver.

namespace {

const Page& page()
{
    static const Page page(QStringLiteral("window-messages.md"));
    return page;
}

using Numbers = std::map<std::string, int>;

/// The enumerators of an enumeration of MACodes.h.
Numbers enumerators(const QString& enumeration)
{
    const QString source = readSource(QStringLiteral("ipc/MultiAccount/MACodes.h"));
    const QRegularExpression body(QStringLiteral("enum %1 \\{(.*?)\\};").arg(enumeration),
                                  QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression enumerator(QStringLiteral("(kMA\\w+) = (\\d+)"));
    Numbers numbers;
    auto matches = enumerator.globalMatch(body.match(source).captured(1));
    while (matches.hasNext()) {
        const auto match = matches.next();
        numbers[match.captured(1).toStdString()] = match.captured(2).toInt();
    }
    return numbers;
}

/// Name and number as the first two columns of a section's table have them.
Numbers numbersOn(const char* title)
{
    Numbers numbers;
    for (const QStringList& row : page().section(QLatin1String(title)).rows())
        numbers[codeSpans(row[0]).value(0).toStdString()] = row[1].toInt();
    return numbers;
}

class WindowMessagesPageTest : public WorkbenchesFixture
{
protected:
    /// What the second workbench's observer is told of a message while the first one is in front.
    QStringList told(int code, int value)
    {
        a.manager.switchToCurrentPin();
        forget();
        EXPECT_TRUE(b.manager.handleNativeEvent(b.manager.messageId(), code, value));
        QStringList calls;
        for (const std::string& each : b.calls) {
            const QString call = QString::fromStdString(each);
            const QString state = QStringLiteral("login state ");
            calls << (call.startsWith(state)
                          ? QStringLiteral("loginStateCallback(%1)").arg(call.mid(state.size()))
                          : QStringLiteral("messageCallback(%1)")
                                .arg(call.section(QLatin1Char(' '), 0, 0)));
        }
        return calls;
    }
};

} // namespace

TEST_F(WindowMessagesPageTest, HasEveryNumberThatIsExchanged)
{
    EXPECT_EQ(numbersOn("Codes"), enumerators(QStringLiteral("MACode")));
    EXPECT_EQ(numbersOn("Window states"), enumerators(QStringLiteral("MAWindowState")));
    EXPECT_EQ(numbersOn("Modes"), enumerators(QStringLiteral("MAMode")));
    EXPECT_EQ(numbersOn("Codes").size(), 8U);
}

TEST_F(WindowMessagesPageTest, TellsWhatEachCodeDoes)
{
    const Section section = page().section(QStringLiteral("What the receiver's observer is told"));
    joinAll();
    std::set<int> codes;
    for (const int mode : {kMAMerged, kMASeparate}) {
        b.manager.changeMergeMode(mode, false);
        settle();
        for (const QStringList& row : section.rows()) {
            const int code = row[0].toInt();
            EXPECT_EQ(codeSpans(row[mode == kMAMerged ? 2 : 3]), told(code, row[1].toInt()))
                << qPrintable(row.join(QLatin1Char('|')));
            codes.insert(code);
        }
    }
    EXPECT_EQ(codes.size(), numbersOn("Codes").size());
}
