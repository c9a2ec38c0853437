#pragma once

#include <QString>

#include <memory>

class QCoreApplication;
class Workbench;

/// The workbench's main window on a screen.
class Screen
{
public:
    virtual ~Screen() = default;

    /// Saves a picture of the window, in the format that the file's name ends with.
    virtual bool save(const QString& fileName) = 0;

    /// Whether this program has been built with windows at all.
    static bool isBuiltIn();
    /// Whether there is a display to show a window on.
    static bool hasDisplay();
    /// The application that windows need, in the user's language where that is known here.
    static std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv);
    /// Shows the workbench, which has to outlive it.
    static std::unique_ptr<Screen> make(Workbench& workbench);
};
