#include "platform/MessageWindow.h"

#include "platform/WindowClass.h"

namespace pavo {

struct MessageWindow::Data
{
    std::wstring className; ///< empty when it is none
    HWND handle = nullptr;
};

MessageWindow::MessageWindow(const QString& className, const QString& title)
    : m_data(std::make_unique<Data>())
{
    if (className.isEmpty() || className.size() > kLongestWindowClass)
        return;
    m_data->className = className.toStdWString();
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = m_data->className.c_str();
    // Fails when another window of the process has the class already, which serves as well.
    RegisterClassW(&windowClass);
    // Without a frame and of no size: a display without a window manager would take seconds to show
    // or hide a window that one has to decorate.
    m_data->handle =
        CreateWindowExW(0, m_data->className.c_str(), title.toStdWString().c_str(), WS_POPUP, 0, 0,
                        0, 0, nullptr, nullptr, windowClass.hInstance, nullptr);
}

MessageWindow::~MessageWindow()
{
    if (m_data->handle)
        DestroyWindow(m_data->handle);
    // Fails while another window of the process has the class.
    if (!m_data->className.empty())
        UnregisterClassW(m_data->className.c_str(), GetModuleHandleW(nullptr));
}

HWND MessageWindow::handle() const
{
    return m_data->handle;
}

void MessageWindow::setVisible(bool visible)
{
    ShowWindow(m_data->handle, visible ? SW_SHOWNOACTIVATE : SW_HIDE);
}

} // namespace pavo
