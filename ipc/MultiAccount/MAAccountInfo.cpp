#include "ipc/MultiAccount/MAAccountInfo.h"

#include "pavo_base/JSONUtils.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

/// A member of the record in JSON, a text or a number; in the order of their keys.
struct Member
{
    std::string_view key;
    std::string MAAccountInfo::*text;
    int MAAccountInfo::*number;
};
constexpr Member kMembers[] = {{"appID", &MAAccountInfo::appID, nullptr},
                               {"className", &MAAccountInfo::className, nullptr},
                               {"idx", nullptr, &MAAccountInfo::idx},
                               {"loginState", nullptr, &MAAccountInfo::loginState},
                               {"pin", &MAAccountInfo::pin, nullptr},
                               {"skin", nullptr, &MAAccountInfo::skin},
                               {"title", &MAAccountInfo::title, nullptr},
                               {"unread", nullptr, &MAAccountInfo::unread},
                               {"unreadMark", nullptr, &MAAccountInfo::unreadMark}};

std::string_view keyAt(const Json::Value::const_iterator& place)
{
    const char* end = nullptr;
    const char* const begin = place.memberName(&end);
    return {begin, static_cast<std::size_t>(end - begin)};
}

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
        MAAccountInfo& account = out.emplace_back();
        if (!JSONUtils::isJSONObject(element))
            continue;
        // Both go through their keys in the same order, so that one pass finds all.
        const Member* next = std::begin(kMembers);
        const auto end = element.end();
        for (auto value = element.begin(); value != end; ++value) {
            const auto* const member =
                std::find_if(next, std::end(kMembers),
                             [key = keyAt(value)](const Member& each) { return each.key == key; });
            if (member == std::end(kMembers))
                continue;
            next = member + 1;
            if (member->text && value->isString())
                account.*member->text = value->asString();
            else if (member->number && value->isInt())
                account.*member->number = value->asInt();
        }
    }
    return true;
}

std::string MAAccountInfo::toJSON(const std::list<MAAccountInfo>& list)
{
    if (list.empty())
        return JSONUtils::stringFromJSON({});
    // One element after the other in the same value, whose members are made and found only once.
    Json::Value element;
    Json::Value* values[std::size(kMembers)];
    std::transform(std::begin(kMembers), std::end(kMembers), values,
                   [&](const Member& each) { return &element[each.key.data()]; });
    std::string text;
    for (const MAAccountInfo& account : list) {
        for (std::size_t i = 0; i < std::size(kMembers); ++i) {
            if (const Member& member = kMembers[i]; member.text)
                *values[i] = account.*member.text;
            else
                *values[i] = account.*member.number;
        }
        text += text.empty() ? '[' : ',';
        text += JSONUtils::stringFromJSON(element);
    }
    text += ']';
    return text;
}
