#include "tools/pavo-workbench/Screen.h"

#include <QtGlobal>

#include <algorithm>
#include <iterator>

bool Screen::hasDisplay()
{
    // Qt ends the process when it finds none. The platform may also be one without displays.
    constexpr const char* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::any_of(std::begin(kVariables), std::end(kVariables),
                       [](const char* name) { return !qEnvironmentVariableIsEmpty(name); });
}
