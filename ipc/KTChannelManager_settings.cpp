// Settings that the host changes: proxy, skin, keys and merge mode; and the skins' names.

#include "ipc/KTChannelManager.h"

#include "ipc/CallCopy.h"
#include "ipc/KTProcessMessage.h"
#include "ipc/MultiAccount/MAManager.h"
#include "pavo_base/JSONUtils.h"
#include "pavo_base/Logger.h"
#include "pavo_core/PAVOCore.h"
#include "pavo_ui_base/QHotkey.h"

#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

struct Skin
{
    const char* name;
    const char* hostName;
    /// What the host may call it as well. The workbench's own name but for one skin: the host has
    /// never had a "geekblue".
    const char* hostAlias;
};

/// A skin's index is its place.
constexpr Skin kSkins[] = {
    {"blue", "blue", "blue"}, {"orange", "orange", "orange"},       {"green", "emerald", "green"},
    {"red", "garnet", "red"}, {"geekblue", "lakeblue", "lakeblue"}, {"purple", "violet", "purple"},
};

template<typename Predicate>
const Skin* findSkin(Predicate isMeant)
{
    const auto* const skin = std::find_if(std::begin(kSkins), std::end(kSkins), isMeant);
    return skin == std::end(kSkins) ? nullptr : skin;
}

} // namespace

void KTChannelManager::changeSetting(KTProcessMessage& message)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "hbx change setting");
    if (message.argumentCount() == 0)
        return;
    const std::string text = JSONUtils::optString(0, message.arguments);
    LOG4CPLUS_DEBUG(Logger::logger(), "hbx change setting, " << text);
    Json::Value settings;
    if (!JSONUtils::parseJSON(text, settings) || !JSONUtils::isJSONObject(settings))
        return;

    if (JSONUtils::has("proxy", settings)) {
        const Json::Value& proxy = JSONUtils::optObject("proxy", settings);
        if (PAVOCore* core = PAVOCore::shareInstance())
            core->configProxy(
                JSONUtils::optInt("proxytype", proxy), JSONUtils::optString("proxyaddr", proxy),
                JSONUtils::optInt("proxyport", proxy), JSONUtils::optString("proxyuser", proxy),
                JSONUtils::optString("proxypass", proxy));
    }

    if (JSONUtils::has("skinName", settings)) {
        const std::string skinName = hbxSkin2LXSkinName(JSONUtils::optString("skinName", settings));
        if (m_observer)
            changeSkin(skinName);
        else if (m_context)
            m_context->skinName = skinName;
    }

    // A document without keys clears them: the host always sends all that are to be in force.
    std::vector<KTKeyInfo> hotKeys;
    parseKeyInfos(JSONUtils::optObject("hotKey", settings), hotKeys);
    if (m_observer && m_observer->onHotKeyChanged)
        callCopy(m_observer->onHotKeyChanged, std::move(hotKeys));
    else if (m_context)
        m_context->hotKeys = std::move(hotKeys);

    std::vector<KTKeyInfo> shortcuts;
    parseKeyInfos(JSONUtils::optObject("shortcut", settings), shortcuts);
    if (m_observer && m_observer->onShortcutChanged)
        callCopy(m_observer->onShortcutChanged, std::move(shortcuts));
    else if (m_context)
        m_context->shortcuts = std::move(shortcuts);

    if (JSONUtils::has("merge", settings))
        MAManager::Instance()->changeMergeMode(
            JSONUtils::optBool("merge", settings) ? kMAMerged : kMASeparate, false);
}

void KTChannelManager::changeSkin(KTProcessMessage& message)
{
    if (message.argumentCount() == 0)
        return;
    const std::string text = JSONUtils::optString(0, message.arguments);
    LOG4CPLUS_DEBUG(Logger::logger(), "kt change skin, " << text);
    Json::Value document;
    // A skin that comes alone is for the main window that is there: it is not parked.
    if (JSONUtils::parseJSON(text, document) && JSONUtils::isJSONObject(document))
        changeSkin(hbxSkin2LXSkinName(JSONUtils::optString("skinName", document)));
}

void KTChannelManager::changeSkin(const std::string& skinName)
{
    const Skin* const skin = findSkin([&](const Skin& s) { return skinName == s.name; });
    if (!skin) {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Skin" << skinName);
        return;
    }
    LOG4CPLUS_DEBUG(Logger::logger(), "change skin " << skinName);
    if (m_observer && m_observer->onSkinChanged) {
        callCopy(m_observer->onSkinChanged, static_cast<int>(skin - std::begin(kSkins)));
    } else {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Skin" << skinName);
    }
}

std::string KTChannelManager::hbxSkin2LXSkinName(const std::string& hostName)
{
    const Skin* const skin =
        findSkin([&](const Skin& s) { return hostName == s.hostName || hostName == s.hostAlias; });
    if (skin)
        return skin->name;
    LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Skin" << hostName);
    return {};
}

QString KTChannelManager::skin2HBXSkinName(int index)
{
    const bool known = index >= 0 && index < static_cast<int>(std::size(kSkins));
    return QString::fromUtf8(kSkins[known ? index : 0].hostName);
}

bool KTChannelManager::parseKeyInfos(const Json::Value& list, std::vector<KTKeyInfo>& out)
{
    if (!JSONUtils::isJSONArray(list))
        return false;
    for (const Json::Value& definition : list) {
        KTKeyInfo info;
        info.valid = JSONUtils::optBool("valid", definition);
        info.modifiers = QHotkey::nativeModifier2QT(JSONUtils::optUInt("modifiers", definition));
        info.key = QHotkey::nativeKey2QT(JSONUtils::optUInt("keyCode", definition));
        info.functionName = JSONUtils::optString("functionName", definition);
        LOG4CPLUS_DEBUG(Logger::logger(), "parse key " << info.functionName << ", "
                                                       << static_cast<int>(info.key) << ", "
                                                       << static_cast<int>(info.modifiers));
        out.push_back(std::move(info));
    }
    return true;
}
