#include "tools/pavo-workbench/Screen.h"

#include "tools/pavo-workbench/WorkbenchWindow.h"

#include <QApplication>

#include <algorithm>
#include <iterator>

namespace {

class WidgetScreen : public Screen
{
public:
    explicit WidgetScreen(Workbench& workbench)
        : m_window(workbench)
    {
    }

    bool save(const QString& fileName) override { return m_window.grab().save(fileName); }

private:
    WorkbenchWindow m_window;
};

} // namespace

bool Screen::isBuiltIn()
{
    return true;
}

bool Screen::hasDisplay()
{
    // Qt ends the process when it finds none. The platform may also be one without displays.
    constexpr const char* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::any_of(std::begin(kVariables), std::end(kVariables),
                       [](const char* name) { return !qEnvironmentVariableIsEmpty(name); });
}

std::unique_ptr<QCoreApplication> Screen::makeApplication(int& argc, char** argv)
{
    return std::make_unique<QApplication>(argc, argv);
}

std::unique_ptr<Screen> Screen::make(Workbench& workbench)
{
    return std::make_unique<WidgetScreen>(workbench);
}
