#include "tools/pavo-accounts/Report.h"

#include "ipc/MultiAccount/MACodes.h"
#include "pavo_base/JSONUtils.h"

#include <sstream>

namespace {

const char* nameOf(WindowPresence presence)
{
    constexpr const char* kNames[] = {"missing", "hidden", "visible"};
    return kNames[static_cast<int>(presence)];
}

std::string nameOfState(int state)
{
    constexpr const char* kNames[] = {"unknown", "normal", "minimised", "maximised", "hidden"};
    const bool isKnown = state >= 0 && state < static_cast<int>(std::size(kNames));
    return isKnown ? kNames[state] : std::to_string(state);
}

bool isSelected(const MAAccountInfo& account, const Store::Content& content)
{
    return account.equalAccount(content.selected.appID, content.selected.pin);
}

/// The text's JSON, so that whatever stands in it, a line stays a line.
std::string quoted(const std::string& text)
{
    return JSONUtils::stringFromJSON(text);
}

Json::Value parsed(const std::string& text)
{
    Json::Value value;
    JSONUtils::parseJSON(text, value);
    return value;
}

} // namespace

std::string reportAsText(const QString& application, const Store::Content& content)
{
    const MASelectedAccount& selected = content.selected;
    std::ostringstream text;
    text << application.toStdString() << ": " << content.accounts.size() << " accounts, "
         << (selected.mergeWindow() ? "one merged window" : "separate windows") << " (mode "
         << selected.mode << ")\n";
    if (!selected.pin.empty())
        text << "selected " << quoted(selected.appID) << ' ' << quoted(selected.pin) << ": "
             << nameOfState(selected.windowState) << ", " << selected.w << 'x' << selected.h
             << " at " << selected.x << ',' << selected.y << ", window "
             << nameOf(windowPresence(selected.className, selected.title)) << '\n';
    for (const MAAccountInfo& account : content.accounts)
        text << (isSelected(account, content) ? "* " : "  ") << account.idx << ' '
             << quoted(account.appID) << ' ' << quoted(account.pin) << ' ' << quoted(account.title)
             << ", window " << nameOf(windowPresence(account.className, account.title))
             << ", unread " << account.unread << (account.unreadMark != 0 ? " (marked)" : "")
             << ", skin " << account.skin << ", login state " << account.loginState << '\n';
    return text.str();
}

std::string reportAsJson(const QString& application, const Store::Content& content)
{
    Json::Value root;
    JSONUtils::put("application", application.toStdString(), root);
    Json::Value selected = parsed(content.selected.toJSON());
    JSONUtils::put("window",
                   nameOf(windowPresence(content.selected.className, content.selected.title)),
                   selected);
    JSONUtils::put("selected", selected, root);
    Json::Value accounts(Json::arrayValue);
    for (const MAAccountInfo& account : content.accounts) {
        Json::Value element = parsed(MAAccountInfo::toJSON({account}))[0];
        JSONUtils::put("window", nameOf(windowPresence(account.className, account.title)), element);
        JSONUtils::put("selected", isSelected(account, content), element);
        accounts.append(element);
    }
    JSONUtils::put("accounts", accounts, root);
    return JSONUtils::stringFromJSON(root) + '\n';
}
