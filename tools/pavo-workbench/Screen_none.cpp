// Without Qt's widgets.

#include "tools/pavo-workbench/Screen.h"

#include <QCoreApplication>

bool Screen::isBuiltIn()
{
    return false;
}

bool Screen::hasDisplay()
{
    return false;
}

std::unique_ptr<QCoreApplication> Screen::makeApplication(int& argc, char** argv)
{
    return std::make_unique<QCoreApplication>(argc, argv);
}

std::unique_ptr<Screen> Screen::make(Workbench& /*workbench*/)
{
    return nullptr;
}
