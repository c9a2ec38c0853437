#pragma once

#include "../PavoIpcExport.h"

#include <list>
#include <string>

/// One account in the list that the workbench processes share. A plain value; texts are UTF-8.
class PAVO_IPC_EXPORT MAAccountInfo
{
public:
    std::string appID;     ///< The kind of session that the account has.
    std::string pin;       ///< Identifies the account, together with `appID`.
    std::string className; ///< Class of the account's main window, by which others find it.
    std::string title;     ///< Title of that window, likewise.
    int idx = 0;           ///< Place in the shared order; smaller comes first.
    int unread = 0;        ///< The number of unread messages.
    int unreadMark = 0;    ///< 1 if more have come since the account was in front, or else 0.
    int skin = 0;          ///< Index of the skin, 0 to 5.
    int loginState = 0;    ///< The account's presence, as the login service numbers it.

    /// Sets the members named. Callers rely on `newSkin` coming before `newUnread`.
    void setAccount(const std::string& newAppID, const std::string& newPin,
                    const std::string& newClassName, const std::string& newTitle, int newSkin,
                    int newUnread);
    /// The same, and leaves the window as it was.
    void setAccount(const std::string& newAppID, const std::string& newPin, int newSkin,
                    int newUnread);

    /// Compares byte for byte: case and blanks count.
    [[nodiscard]] bool equalAccount(const std::string& otherAppID,
                                    const std::string& otherPin) const;

    /// The order of the shared list.
    static bool compareByIndex(const MAAccountInfo& a, const MAAccountInfo& b);

    /// Appends the accounts of a JSON array, which may be followed by NUL bytes, to `out`. A
    /// missing or mistyped member reads as empty or 0. Returns false, with `out` unchanged, if the
    /// `length` bytes at `data` are not a JSON array.
    static bool parseJSON(const char* data, int length, std::list<MAAccountInfo>& out);

    /// A compact JSON array of the accounts; for no accounts the text of JSON null, which
    /// parseJSON() refuses.
    static std::string toJSON(const std::list<MAAccountInfo>& list);
};
