#include "tools/pavo-workbench/Screen.h"

#include "tools/pavo-workbench/ChineseTexts.h"
#include "tools/pavo-workbench/WorkbenchWindow.h"

#include <QApplication>
#include <QLocale>

namespace {

class WidgetScreen : public Screen
{
public:
    explicit WidgetScreen(Workbench& workbench)
        : m_window(workbench)
    {
    }

    bool save(const QString& fileName) override
    {
        // A text that has just changed may not have its room yet.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return m_window.grab().save(fileName);
    }

private:
    WorkbenchWindow m_window;
};

} // namespace

bool Screen::isBuiltIn()
{
    return true;
}

std::unique_ptr<QCoreApplication> Screen::makeApplication(int& argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    auto application = std::make_unique<QApplication>(argc, argv);
    // The same everywhere, and one that style sheets go with.
    QApplication::setStyle(QStringLiteral("Fusion"));
    QFont font = QApplication::font();
    font.setFamilies({QStringLiteral("Segoe UI"), QStringLiteral("Open Sans"), font.family()});
    QApplication::setFont(font);
    if (QLocale(QLocale::system().uiLanguages().value(0)).language() == QLocale::Chinese)
        QCoreApplication::installTranslator(new ChineseTexts(application.get()));
    return application;
}

std::unique_ptr<Screen> Screen::make(Workbench& workbench)
{
    return std::make_unique<WidgetScreen>(workbench);
}
