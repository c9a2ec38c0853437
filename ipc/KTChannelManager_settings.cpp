// Skins: their names on both sides, and following the one that the host sets.

#include "ipc/KTChannelManager.h"

#include "ipc/CallCopy.h"
#include "pavo_base/Logger.h"

#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <iterator>

namespace {

/// The workbench's skin names; a skin's index is its place.
constexpr const char* kSkinNames[] = {"blue", "orange", "green", "red", "geekblue", "purple"};
/// The host's names of the same skins, in the same order.
constexpr const char* kHostSkinNames[] = {"blue",   "orange",   "emerald",
                                          "garnet", "lakeblue", "violet"};

} // namespace

void KTChannelManager::changeSkin(const std::string& skinName)
{
    const auto* const end = std::end(kSkinNames);
    const auto* const name = std::find(std::begin(kSkinNames), end, skinName);
    if (name == end) {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Skin" << skinName);
        return;
    }
    LOG4CPLUS_DEBUG(Logger::logger(), "change skin " << skinName);
    if (m_observer && m_observer->onSkinChanged) {
        callCopy(m_observer->onSkinChanged, static_cast<int>(name - std::begin(kSkinNames)));
    } else {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Skin" << skinName);
    }
}

QString KTChannelManager::skin2HBXSkinName(int index)
{
    const bool known = index >= 0 && index < static_cast<int>(std::size(kHostSkinNames));
    return QString::fromUtf8(kHostSkinNames[known ? index : 0]);
}
