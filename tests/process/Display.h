#pragma once

#include <QProcess>

/// The display of whoever runs the test is left alone.
void forgetDisplays();

/// While it lives, what this process starts has a display.
class Display
{
public:
    Display();
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

private:
    QProcess m_server;
};
