#include "ipc/MultiAccount/MASelectedAccount.h"

#include "ipc/MultiAccount/MACodes.h"
#include "pavo_base/JSONUtils.h"

#include <QRect>

namespace {

struct TextMember
{
    const char* key;
    std::string MASelectedAccount::*member;
};
constexpr TextMember kTexts[] = {{"appID", &MASelectedAccount::appID},
                                 {"pin", &MASelectedAccount::pin},
                                 {"className", &MASelectedAccount::className},
                                 {"title", &MASelectedAccount::title}};

struct NumberMember
{
    const char* key;
    int MASelectedAccount::*member;
};
constexpr NumberMember kNumbers[] = {
    {"mode", &MASelectedAccount::mode}, {"windowState", &MASelectedAccount::windowState},
    {"x", &MASelectedAccount::x},       {"y", &MASelectedAccount::y},
    {"w", &MASelectedAccount::w},       {"h", &MASelectedAccount::h}};

} // namespace

void MASelectedAccount::setAccount(const std::string& newAppID, const std::string& newPin,
                                   const std::string& newClassName, const std::string& newTitle)
{
    appID = newAppID;
    pin = newPin;
    className = newClassName;
    title = newTitle;
}

void MASelectedAccount::setWindowRect(const QRect& rect, int state)
{
    windowState = state;
    if (state == kMANormal) {
        x = rect.left();
        y = rect.top();
        w = rect.width();
        h = rect.height();
    }
}

bool MASelectedAccount::mergeWindow() const
{
    return mode == kMAMerged;
}

bool MASelectedAccount::parseJSON(const char* data, int length)
{
    Json::Value root;
    if (!JSONUtils::parseJSON(data, length, root))
        return false;
    const MASelectedAccount defaults;
    for (const auto& [key, member] : kTexts)
        this->*member = JSONUtils::optString(key, root);
    for (const auto& [key, member] : kNumbers)
        this->*member = JSONUtils::optInt(key, root, defaults.*member);
    return true;
}

std::string MASelectedAccount::toJSON() const
{
    Json::Value root;
    for (const auto& [key, member] : kTexts)
        JSONUtils::put(key, this->*member, root);
    for (const auto& [key, member] : kNumbers)
        JSONUtils::put(key, this->*member, root);
    return JSONUtils::stringFromJSON(root);
}
