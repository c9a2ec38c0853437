#pragma once

#include "pavo_base/TextUtils.h"
#include "platform/Win32.h"
#include "platform/WindowClass.h"

#include <string>

/// The top-level window of that class and title, both UTF-8, or null.
inline HWND findMAWindow(const std::string& className, const std::string& title)
{
    const QString wideClassName = TextUtils::utf8ToUnicode(className);
    if (wideClassName.size() > pavo::kLongestWindowClass)
        return nullptr;
    return FindWindowW(wideClassName.toStdWString().c_str(),
                       TextUtils::utf8ToUnicode(title).toStdWString().c_str());
}
