#pragma once

#include "ipc/PavoIpcExport.h"

#include <string>

class QRect;

/// The account in front and the window that shows it. A plain value; texts are UTF-8.
class PAVO_IPC_EXPORT MASelectedAccount
{
public:
    /// 1 while all accounts share one merged main window.
    int mode = 1;
    std::string appID;
    std::string pin;
    std::string className;
    std::string title;
    /// 1 normal, 2 minimised, 3 maximised, 4 hidden; 0 while none was reported.
    int windowState = 0;
    /// The window's rectangle as it last was in state 1.
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;

    void setAccount(const std::string& newAppID, const std::string& newPin,
                    const std::string& newClassName, const std::string& newTitle);

    /// Remembers `rect` in state 1 only: in any other the window is not where it returns to.
    void setWindowRect(const QRect& rect, int state);

    [[nodiscard]] bool mergeWindow() const;

    /// Takes every field from a JSON document, which may be followed by NUL bytes. A missing or
    /// mistyped member reads as its default, so a document that is no object gives a default
    /// record. Returns false, with the record as it was, when the `length` bytes at `data` are no
    /// JSON document.
    bool parseJSON(const char* data, int length);
    [[nodiscard]] std::string toJSON() const;
};
