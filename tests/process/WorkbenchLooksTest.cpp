// What the sample workbench's window looks like, at three scales and in both languages.

#include "pavo_core/SimulatedLoginService.h"
#include "platform/HostPipe.h"
#include "tests/process/OnDisplay.h"
#include "tests/support/Host.h"
#include "tests/support/Wait.h"
#include "tools/pavo-workbench/ActivityDelegate.h"
#include "tools/pavo-workbench/ChineseTexts.h"
#include "tools/pavo-workbench/ElidingLabel.h"
#include "tools/pavo-workbench/Screen.h"
#include "tools/pavo-workbench/Theme.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/pavo-workbench/WorkbenchWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QtTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace {

constexpr int kSkins = 6;
/// What is readable for people who see less than others, as is agreed on widely.
constexpr double kReadable = 4.5;
/// Likewise of what is no text.
constexpr double kVisible = 3;
/// That a user can make the window, and one that another account may hand on.
constexpr QSize kSmallest(720, 400);
constexpr QSize kTiny(300, 200);
const QRegularExpression kChinese(QStringLiteral("\\p{Han}"));

double luminance(const QColor& colour)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

/// Between what most of a picture is and what differs most from that.
double contrastIn(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    const QList<QRgb> colours = counts.keys();
    const QRgb ground = *std::max_element(colours.begin(), colours.end(),
                                          [&](QRgb a, QRgb b) { return counts[a] < counts[b]; });
    double result = 1;
    for (const QRgb colour : colours)
        result = std::max(result, contrast(ground, colour));
    return result;
}

/// Where two pictures of one size differ most.
double contrastBetween(const QImage& one, const QImage& other)
{
    double result = 1;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            result = std::max(result, contrast(one.pixel(x, y), other.pixel(x, y)));
    }
    return result;
}

/// One workbench for all tests: there is one manager of the accounts in a process.
class WorkbenchLooks : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
        auto service = std::make_shared<SimulatedLoginService>();
        service->addAccount("waiter", "secret");
        s_workbench = std::make_unique<Workbench>(service);
        s_window = std::make_unique<WorkbenchWindow>(*s_workbench);
        s_workbench->logIn("waiter", "secret");
        s_workbench->accounts().enterMainWindow();
    }

    static void TearDownTestSuite()
    {
        s_window.reset();
        s_workbench.reset();
    }

    void SetUp() override
    {
        place(kSmallest);
        ASSERT_TRUE(waitUntil([this] { return m_window->isVisible() && accounts().count() == 1; }));
        QApplication::setActiveWindow(m_window);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window));
    }

    void place(const QSize& size)
    {
        m_workbench->accounts().place(100, 80, size.width(), size.height());
        EXPECT_EQ(m_window->size(), size);
    }

    QListWidget& accounts()
    {
        return *m_window->findChild<QListWidget*>(QStringLiteral("accounts"));
    }

    QListWidget& activities()
    {
        return *m_window->findChild<QListWidget*>(QStringLiteral("activity"));
    }

    /// With the ground that is not the widget's own.
    QImage picture(const QWidget& widget) const
    {
        return m_window->grab({widget.mapTo(m_window, QPoint(0, 0)), widget.size()}).toImage();
    }

    /// What has a text of its own, and the text.
    QList<QPair<QWidget*, QString>> texts()
    {
        QList<QPair<QWidget*, QString>> found;
        for (QLabel* label : m_window->findChildren<QLabel*>())
            found << qMakePair(label, label->text());
        for (QAbstractButton* button : m_window->findChildren<QAbstractButton*>())
            found << qMakePair(button, button->text());
        return found;
    }

    static std::unique_ptr<Workbench> s_workbench;
    static std::unique_ptr<WorkbenchWindow> s_window;
    Workbench* const m_workbench = s_workbench.get();
    WorkbenchWindow* const m_window = s_window.get();
};

std::unique_ptr<Workbench> WorkbenchLooks::s_workbench;
std::unique_ptr<WorkbenchWindow> WorkbenchLooks::s_window;

} // namespace

QList<DisplayVariant> displayVariants()
{
    QList<DisplayVariant> variants;
    for (const char* const scale : {"1", "1.5", "2"}) {
        for (const char* const language : {"en_GB.UTF-8", "zh_CN.UTF-8"})
            variants.push_back({{"QT_SCALE_FACTOR", scale}, {"LC_ALL", language}});
    }
    return variants;
}

TEST_F(WorkbenchLooks, EveryTextHasRoom)
{
    EXPECT_EQ(m_window->devicePixelRatioF(), qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
    for (const auto& [merged, size] :
         {std::pair(false, kSmallest), std::pair(true, kSmallest), std::pair(true, kTiny)}) {
        m_workbench->accounts().setMerged(merged);
        place(size);
        QCoreApplication::sendPostedEvents();
        for (const auto& [widget, text] : texts()) {
            const QSize needed = widget->hasHeightForWidth()
                                     ? QSize(widget->minimumSizeHint().width(),
                                             widget->heightForWidth(widget->width()))
                                     : widget->sizeHint();
            EXPECT_GE(widget->width(), needed.width()) << text.toStdString();
            EXPECT_GE(widget->height(), needed.height()) << text.toStdString();
            EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()))
                << text.toStdString();
        }
    }
}

TEST_F(WorkbenchLooks, PictureIsTakenOfWhatHasItsRoom)
{
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("picture.png"));
    const std::unique_ptr<Screen> screen = Screen::make(*m_workbench);
    place(kSmallest);
    const auto picture = [&] {
        EXPECT_TRUE(screen->save(fileName));
        return QImage(fileName);
    };
    for (const bool merged : {false, true}) {
        QCoreApplication::sendPostedEvents();
        m_workbench->accounts().setMerged(merged);
        const QImage atOnce = picture();
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(atOnce, picture());
    }
}

TEST_F(WorkbenchLooks, TextsAreReadableInEverySkin)
{
    for (int skin = 0; skin < kSkins; ++skin) {
        m_workbench->accounts().changeSkin(skin);
        for (const auto& [widget, text] : texts()) {
            EXPECT_GE(contrastIn(picture(*widget)), kReadable)
                << skin << ": " << text.toStdString();
        }
    }
}

TEST_F(WorkbenchLooks, TextsFromElsewhereAreOneLineAndNoMarkup)
{
    const QString text = QStringLiteral("\"<h1>first</h1>\nsecond &amp; %1\"");
    Q_EMIT m_workbench->hostAsked(QStringLiteral("asked"), text);
    QListWidgetItem* const activity = activities().item(0);
    QTextDocument toolTip;
    ASSERT_TRUE(Qt::mightBeRichText(activity->toolTip()));
    toolTip.setHtml(activity->toolTip());
    EXPECT_EQ(toolTip.toPlainText(), text.simplified());

    const QImage picture = this->picture(activities());
    activity->setData(ActivityDelegate::DetailRole, text.simplified());
    EXPECT_EQ(picture, this->picture(activities()));

    ElidingLabel label;
    const auto height = [&label](const QString& shown) {
        label.setText(shown);
        return label.sizeHint().height();
    };
    EXPECT_EQ(height(QStringLiteral("<h1>waiter</h1>")), height(QStringLiteral("waiter")));
}

TEST_F(WorkbenchLooks, LongTextsAreCut)
{
    const QString longest(1000, QLatin1Char('x'));
    for (const auto& [text, shown] :
         {std::pair(longest, longest),
          std::pair(longest + longest, longest + QStringLiteral("..."))}) {
        Q_EMIT m_workbench->hostAsked(QStringLiteral("asked"), text);
        EXPECT_EQ(activities().item(0)->data(ActivityDelegate::DetailRole), shown);
    }
}

TEST(WorkbenchTheme, ColoursAreReadableOnEachOther)
{
    for (int skin = 0; skin < kSkins; ++skin) {
        const Theme& theme = Theme::of(skin);
        const QColor grounds[] = {theme.ground, theme.card};
        for (const QColor& ground : grounds) {
            EXPECT_GE(contrast(ground, theme.text), kReadable) << skin;
            EXPECT_GE(contrast(ground, theme.dim), kReadable) << skin;
        }
        const QColor sides[] = {theme.side, theme.sideHover(), theme.sideFront()};
        for (const QColor& side : sides) {
            EXPECT_GE(contrast(side, Qt::white), kReadable) << skin;
            EXPECT_GE(contrast(side, theme.sideDim()), kReadable) << skin;
        }
        EXPECT_GE(contrast(theme.accent, Qt::white), kReadable) << skin;
        EXPECT_GE(contrast(theme.sideBadge(), Qt::white), kReadable) << skin;
        EXPECT_GE(contrast(theme.card, theme.focus), kReadable) << skin;
    }
    EXPECT_GE(contrast(Theme::kMarked, Qt::white), kReadable);
}

TEST(WorkbenchTheme, SomeSkinsAreDark)
{
    QList<bool> dark;
    for (int skin = 0; skin < kSkins; ++skin)
        dark << (luminance(Theme::of(skin).ground) < luminance(Theme::of(skin).text));
    EXPECT_EQ(dark, (QList<bool>{false, false, false, false, true, true}));
}

TEST_F(WorkbenchLooks, TextsAreInTheUsersLanguage)
{
    const bool isChinese = qgetenv("LC_ALL").startsWith("zh");
    for (const auto& [widget, text] : texts()) {
        // Names and numbers are in no language.
        if (text == QLatin1String("waiter") || text == QLatin1String("1"))
            continue;
        EXPECT_EQ(text.contains(kChinese), isChinese) << text.toStdString();
    }
}

TEST_F(WorkbenchLooks, DetailsAreInTheUsersLanguage)
{
    pavo::HostPipe toWorkbench(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    const HostReader fromWorkbench(uniquePipeName());
    ASSERT_TRUE(Workbench::startUp(
        QStringLiteral("pipe?param=%1&%2").arg(toWorkbench.fullName(), fromWorkbench.fullName())));
    ASSERT_TRUE(toWorkbench.awaitClient() && fromWorkbench.waitForClient());
    m_workbench->enterMainWindow(0);

    const struct
    {
        const char* message;
        QString english;
        QString chinese;
    } asked[] = {
        {R"({"name":"OpenLXWindow","arguments":["%1",3,"b"]})",
         QStringLiteral("\"%1\", kind 3, \"b\""), QStringLiteral("\"%1\"，类型 3，\"b\"")},
        {R"({"name":"ShowUnreadMessageList","arguments":[true,10,20,30,60]})",
         QStringLiteral("at (10, 20), 20 x 40"), QStringLiteral("位于 (10, 20)，20 x 40")},
        {R"({"name":"ChangeSkin","arguments":["{\"skinName\":\"lakeblue\"}"]})",
         QStringLiteral("Geek blue"), QStringLiteral("极客蓝")},
        {R"({"name":"ChangeSetting","arguments":["{\"shortcut\":[]}"]})", QStringLiteral("none"),
         QStringLiteral("无")},
        {R"({"name":"ChangeSetting","arguments":["{\"shortcut\":[)"
         R"({\"valid\":true,\"modifiers\":15,\"keyCode\":112,\"functionName\":\"capture\"},)"
         R"({\"valid\":false,\"keyCode\":13,\"functionName\":\"send\"}]}"]})",
         QStringLiteral("capture (Ctrl+Alt+Shift+Meta+F1), send (Return, not in force)"),
         QStringLiteral("capture (Ctrl+Alt+Shift+Meta+F1), send（Return，未生效）")},
    };
    const bool isChinese = qgetenv("LC_ALL").startsWith("zh");
    for (const auto& [message, english, chinese] : asked) {
        activities().clear();
        ASSERT_TRUE(toWorkbench.write(frame(message)));
        ASSERT_TRUE(waitUntil([this] { return activities().count() > 0; })) << message;
        const QString detail = activities().item(0)->data(ActivityDelegate::DetailRole).toString();
        EXPECT_EQ(detail.toStdString(), (isChinese ? chinese : english).toStdString());
    }
    ASSERT_FALSE(Workbench::startUp({})) << "the channel is closed";
}

TEST_F(WorkbenchLooks, KeyboardReachesEverything)
{
    const auto name = [](const QWidget* widget) {
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        return button && button->isCheckable() ? QStringLiteral("presence") : widget->objectName();
    };
    const QStringList walk =
        QStringLiteral("accounts presence presence presence forAll activity merge minimise hide")
            .split(QLatin1Char(' '));
    QStringList there;
    QStringList back;
    accounts().setFocus();
    for (int i = 0; i < walk.size(); ++i) {
        there << name(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), &accounts());
    place(kTiny);
    for (int i = 0; i < walk.size(); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        back.prepend(name(QApplication::focusWidget()));
        EXPECT_FALSE(QApplication::focusWidget()->visibleRegion().isEmpty());
    }
    EXPECT_EQ(there, walk) << there.join(QLatin1Char(' ')).toStdString();
    EXPECT_EQ(back, walk) << back.join(QLatin1Char(' ')).toStdString();
}

TEST_F(WorkbenchLooks, IconIsTheAvatar)
{
    for (const int skin : {1, 0}) {
        m_workbench->accounts().changeSkin(skin);
        const QImage icon = m_window->windowIcon().pixmap(64, 64).toImage();
        EXPECT_EQ(icon.pixelColor(icon.width() / 2, icon.height() / 8), Theme::of(skin).accent);
        const QSize half = icon.size() / 2;
        EXPECT_GE(contrastIn(icon.copy({{half.width() / 2, half.height() / 2}, half})), kReadable);
    }
}

TEST_F(WorkbenchLooks, ScreenReadersSayWhatTheRowsShow)
{
    const bool isChinese = qgetenv("LC_ALL").startsWith("zh");
    m_workbench->accounts().changeUnread(120);
    const QAccessibleInterface* const account =
        QAccessible::queryAccessibleInterface(&accounts())->child(0);
    EXPECT_EQ(account->text(QAccessible::Name),
              isChinese ? QStringLiteral("waiter, 在线，当前账号, 120 条未读")
                        : QStringLiteral("waiter, Online, in front, 120 unread"));
    m_workbench->accounts().changeUnread(0);
    EXPECT_EQ(account->text(QAccessible::Name), isChinese
                                                    ? QStringLiteral("waiter, 在线，当前账号")
                                                    : QStringLiteral("waiter, Online, in front"));

    const auto spoken = [this](const QString& what, const QString& detail) {
        Q_EMIT m_workbench->hostAsked(what, detail);
        return activities().item(0)->data(Qt::AccessibleTextRole).toString();
    };
    const QRegularExpression time(QStringLiteral(", \\d\\d:\\d\\d:\\d\\d$"));
    EXPECT_EQ(spoken(QStringLiteral("asked"), {}).remove(time), QStringLiteral("asked"));
    EXPECT_EQ(spoken(QStringLiteral("asked"), QStringLiteral("for this")).remove(time),
              QStringLiteral("asked, for this"));
}

TEST_F(WorkbenchLooks, KeyboardFocusIsSeenInEverySkin)
{
    accounts().setFocus();
    for (int skin = 0; skin < kSkins; ++skin) {
        m_workbench->accounts().changeSkin(skin);
        QWidget* const first = QApplication::focusWidget();
        do {
            QWidget* const widget = QApplication::focusWidget();
            const QImage with = picture(*widget);
            QTest::keyClick(widget, Qt::Key_Tab);
            EXPECT_GE(contrastBetween(with, picture(*widget)), kVisible)
                << skin << ": " << widget->objectName().toStdString();
        } while (QApplication::focusWidget() != first);
    }
}

TEST_F(WorkbenchLooks, EveryLetterIsForOneControl)
{
    QHash<QString, QString> letters;
    for (const auto& [widget, text] : texts()) {
        const QString letter = QKeySequence::mnemonic(text).toString();
        if (letter.isEmpty())
            continue;
        EXPECT_FALSE(letters.contains(letter)) << letter.toStdString();
        letters.insert(letter, text);
    }
    EXPECT_EQ(letters.size(), 7) << "the two lists, the presence, and four buttons";
    QTest::keyClick(m_window, Qt::Key_T, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), QLatin1String("activity"));
    QTest::keyClick(m_window, Qt::Key_H, Qt::AltModifier);
    EXPECT_TRUE(waitUntil([this] { return !m_window->isVisible(); }));
}

TEST(WorkbenchTexts, AllAreThereInChinese)
{
    const ChineseTexts chinese;
    const QRegularExpression marked(QStringLiteral(
        "(?:\\btr\\(|TR_NOOP\\(|NOOP\\(\"\\w+\", |translate\\(\"\\w+\", )\"([^\"]+)\""));
    const QDir folder(QStringLiteral(PAVO_WORKBENCH_DIR));
    int count = 0;
    for (const QFileInfo& source : folder.entryInfoList({QStringLiteral("*.cpp")})) {
        QFile file(source.filePath());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        auto matches = marked.globalMatch(QString::fromUtf8(file.readAll()));
        for (; matches.hasNext(); ++count) {
            const QByteArray text = matches.next().captured(1).toUtf8();
            EXPECT_TRUE(chinese.translate("", text.constData(), nullptr, -1).contains(kChinese))
                << source.fileName().toStdString() << ": " << text.constData();
        }
    }
    EXPECT_GT(count, 30);
}
