#include "tools/pavo-workbench/Screen.h"

bool Screen::hasDisplay()
{
    // Every session of Windows has a desktop.
    return true;
}
