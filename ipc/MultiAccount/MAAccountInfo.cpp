#include "ipc/MultiAccount/MAAccountInfo.h"

#include "pavo_base/JSONUtils.h"

namespace {

struct TextMember
{
    const char* key;
    std::string MAAccountInfo::*member;
};
constexpr TextMember kTexts[] = {{"appID", &MAAccountInfo::appID},
                                 {"pin", &MAAccountInfo::pin},
                                 {"className", &MAAccountInfo::className},
                                 {"title", &MAAccountInfo::title}};

struct NumberMember
{
    const char* key;
    int MAAccountInfo::*member;
};
constexpr NumberMember kNumbers[] = {{"idx", &MAAccountInfo::idx},
                                     {"unread", &MAAccountInfo::unread},
                                     {"unreadMark", &MAAccountInfo::unreadMark},
                                     {"skin", &MAAccountInfo::skin},
                                     {"loginState", &MAAccountInfo::loginState}};

} // namespace

void MAAccountInfo::setAccount(const std::string& newAppID, const std::string& newPin,
                               const std::string& newClassName, const std::string& newTitle,
                               int newSkin, int newUnread)
{
    className = newClassName;
    title = newTitle;
    setAccount(newAppID, newPin, newSkin, newUnread);
}

void MAAccountInfo::setAccount(const std::string& newAppID, const std::string& newPin, int newSkin,
                               int newUnread)
{
    appID = newAppID;
    pin = newPin;
    skin = newSkin;
    unread = newUnread;
}

bool MAAccountInfo::equalAccount(const std::string& otherAppID, const std::string& otherPin) const
{
    return pin == otherPin && appID == otherAppID;
}

bool MAAccountInfo::compareByIndex(const MAAccountInfo& a, const MAAccountInfo& b)
{
    return a.idx < b.idx;
}

bool MAAccountInfo::parseJSON(const char* data, int length, std::list<MAAccountInfo>& out)
{
    Json::Value root;
    if (!JSONUtils::parseJSON(data, length, root) || !JSONUtils::isJSONArray(root))
        return false;
    for (const Json::Value& element : root) {
        MAAccountInfo account;
        for (const auto& [key, member] : kTexts)
            account.*member = JSONUtils::optString(key, element);
        for (const auto& [key, member] : kNumbers)
            account.*member = JSONUtils::optInt(key, element);
        out.push_back(std::move(account));
    }
    return true;
}

std::string MAAccountInfo::toJSON(const std::list<MAAccountInfo>& list)
{
    std::string text;
    // One element after the other in the same value, whose members are made only once.
    Json::Value element;
    for (const MAAccountInfo& account : list) {
        for (const auto& [key, member] : kTexts)
            JSONUtils::put(key, account.*member, element);
        for (const auto& [key, member] : kNumbers)
            JSONUtils::put(key, account.*member, element);
        text += text.empty() ? '[' : ',';
        text += JSONUtils::stringFromJSON(element);
    }
    return text.empty() ? JSONUtils::stringFromJSON(element) : text + ']';
}
