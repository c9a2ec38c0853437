#pragma once

#include "../PavoIpcExport.h"

#include <string>

class QRect;

/// The account in front and the window that shows it. A plain value; texts are UTF-8.
class PAVO_IPC_EXPORT MASelectedAccount
{
public:
    int mode = 1;          ///< An MAMode: 1 while all accounts share one merged main window.
    std::string appID;     ///< The kind of session that the account has.
    std::string pin;       ///< The account's; empty when no account is in front.
    std::string className; ///< Class of the window, by which other processes find it.
    std::string title;     ///< Title of the window, likewise.
    int windowState = 0;   ///< An MAWindowState; 0 as long as none is reported.
    int x = 0;             ///< Left edge of the window when it last was normal.
    int y = 0;             ///< Its top edge then.
    int w = 0;             ///< Its width then; less than 1 as long as none is reported.
    int h = 0;             ///< Its height then.

    /// Puts an account in front; mode and window state stay.
    void setAccount(const std::string& newAppID, const std::string& newPin,
                    const std::string& newClassName, const std::string& newTitle);

    /// Sets the window's state, and its place only in state 1: in any other state the window is not
    /// where it will return to.
    void setWindowRect(const QRect& rect, int state);

    /// Whether all accounts share one merged main window.
    [[nodiscard]] bool mergeWindow() const;

    /// Takes every field from a JSON document, which may be followed by NUL bytes. A missing or
    /// mistyped member reads as its default, so a document that is not an object gives a default
    /// record. Returns false, with the record unchanged, if the `length` bytes at `data` are not a
    /// JSON document.
    bool parseJSON(const char* data, int length);
    /// Every field, as a compact JSON object.
    [[nodiscard]] std::string toJSON() const;
};
