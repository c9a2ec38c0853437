#pragma once

#include "platform/Win32.h"

#include <QString>

#include <memory>

namespace pavo {

/// A top-level window without content, for tools and tests: other processes find it by class and
/// title and post messages to it, which reach Qt's native event filters on the thread that created
/// it. That has to be the one of the QCoreApplication. The window goes with its process, however
/// that ends.
class MessageWindow
{
public:
    /// Hidden at first. Check handle(): it is null when the system refused.
    MessageWindow(const QString& className, const QString& title);
    ~MessageWindow();
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    [[nodiscard]] HWND handle() const;
    void setVisible(bool visible);

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace pavo
