#pragma once

#include <string>

// Everything that a record holds, as one text. For any type with the fields of the record, so that
// what different sources hold can be compared.

template<typename Selected>
std::string selectedText(const Selected& selected)
{
    std::string text = std::to_string(selected.mode);
    for (const std::string& each :
         {selected.appID, selected.pin, selected.className, selected.title})
        text += ',' + each;
    for (const int each : {selected.windowState, selected.x, selected.y, selected.w, selected.h})
        text += ',' + std::to_string(each);
    return text;
}

template<typename Account>
std::string accountText(const Account& account)
{
    std::string text = account.appID;
    for (const std::string& each : {account.pin, account.className, account.title})
        text += ',' + each;
    for (const int each :
         {account.idx, account.unread, account.unreadMark, account.skin, account.loginState})
        text += ',' + std::to_string(each);
    return text;
}

template<typename Accounts>
std::string accountsText(const Accounts& accounts)
{
    std::string text = "[";
    for (const auto& account : accounts)
        text += (text.size() > 1 ? "; " : "") + accountText(account);
    return text + ']';
}

/// What a segment holds, as one text.
template<typename Selected, typename Accounts>
std::string segmentText(const Selected& selected, const Accounts& accounts)
{
    return selectedText(selected) + ' ' + accountsText(accounts);
}

/// What an observer is told, as one text.
template<typename Selected, typename Accounts>
std::string callText(int code, const Selected& selected, const Accounts& accounts)
{
    return std::to_string(code) + ' ' + segmentText(selected, accounts);
}

inline std::string loginCallText(int state)
{
    return "login " + std::to_string(state);
}

/// What a window has received, as one text.
inline std::string messageText(long code, long value)
{
    return "> " + std::to_string(code) + ' ' + std::to_string(value);
}
