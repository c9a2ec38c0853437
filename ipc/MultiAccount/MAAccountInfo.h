#pragma once

#include "ipc/PavoIpcExport.h"

#include <list>
#include <string>

/// One account in the list that the workbench processes share. A plain value; texts are UTF-8.
class PAVO_IPC_EXPORT MAAccountInfo
{
public:
    std::string appID;
    /// Tells accounts apart, together with `appID`.
    std::string pin;
    /// Class and title of the account's main window, by which other processes find it.
    std::string className;
    std::string title;
    /// Place in the shared order; smaller comes first.
    int idx = 0;
    int unread = 0;
    int unreadMark = 0;
    int skin = 0;
    int loginState = 0;

    /// Callers rely on `skin` coming before `unread`.
    void setAccount(const std::string& newAppID, const std::string& newPin,
                    const std::string& newClassName, const std::string& newTitle, int newSkin,
                    int newUnread);
    void setAccount(const std::string& newAppID, const std::string& newPin, int newSkin,
                    int newUnread);

    /// Compares byte for byte: neither case nor blanks are forgiven.
    [[nodiscard]] bool equalAccount(const std::string& otherAppID,
                                    const std::string& otherPin) const;

    /// The order of the shared list.
    static bool compareByIndex(const MAAccountInfo& a, const MAAccountInfo& b);

    /// Appends the accounts of a JSON array, which may be followed by NUL bytes, to `out`. A
    /// missing or mistyped member reads as empty or 0. Returns false, with `out` as it was, when
    /// the `length` bytes at `data` are no JSON array.
    static bool parseJSON(const char* data, int length, std::list<MAAccountInfo>& out);

    /// A JSON array of the accounts; for no accounts the text of JSON null, which parseJSON
    /// refuses.
    static std::string toJSON(const std::list<MAAccountInfo>& list);
};
