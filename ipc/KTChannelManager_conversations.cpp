// Conversations, groups and requests: what the host asks the main window to show.

#include "ipc/KTChannelManager.h"

#include "ipc/CallCopy.h"
#include "ipc/KTProcessMessage.h"
#include "pavo_base/JSONUtils.h"
#include "pavo_base/Logger.h"

#include <log4cplus/loggingmacros.h>

#include <utility>

namespace {

constexpr char kAccusationApi[] = "showLXAccusation";

/// The rectangle of which the host gives the edges. A QRect keeps its last pixel, which lies one
/// before the far edge; edges of any size wrap around.
QRect rectangleOfEdges(int left, int top, int right, int bottom)
{
    const auto before = [](int edge) { return static_cast<int>(static_cast<unsigned>(edge) - 1U); };
    return {QPoint(left, top), QPoint(before(right), before(bottom))};
}

} // namespace

void KTChannelManager::openLXWindow(KTProcessMessage& message)
{
    const Json::Value& arguments = message.arguments;
    if (message.argumentCount() < 2)
        return;
    const std::string first = JSONUtils::optString(0, arguments);
    const int number = JSONUtils::optInt(1, arguments);
    const std::string second = JSONUtils::optString(2, arguments);
    if (!second.empty())
        LOG4CPLUS_WARN(Logger::logger(),
                       "Open LX Session " << first << ", " << second << ", " << number);
    if (m_observer && m_observer->onOpenLXWindow) {
        callCopy(m_observer->onOpenLXWindow, number, second, first);
    } else if (m_context) {
        m_context->windowType = number;
        m_context->windowText1 = second;
        m_context->windowText2 = first;
        LOG4CPLUS_WARN(Logger::logger(), "Open LX Window， not initialized completed "
                                             << first << ", " << second << ", " << number);
    } else {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Open LX Window");
    }
}

void KTChannelManager::openLXGroup(KTProcessMessage& message)
{
    const Json::Value& arguments = message.arguments;
    if (message.argumentCount() < 2)
        return;
    const std::string first = JSONUtils::optString(0, arguments);
    const std::string second = JSONUtils::optString(1, arguments);
    if (m_observer && m_observer->onOpenLXGroup) {
        callCopy(m_observer->onOpenLXGroup, second, first);
    } else if (m_context) {
        m_context->groupText1 = second;
        m_context->groupText2 = first;
        LOG4CPLUS_WARN(Logger::logger(),
                       "Open LX Group， not initialized completed " << first << ", " << second);
    } else {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed Open LX Group " << first << ", " << second);
    }
}

void KTChannelManager::openBaseSetting(KTProcessMessage& message)
{
    Q_UNUSED(message)
    if (m_observer && m_observer->onOpenBaseInfoSetting)
        callCopy(m_observer->onOpenBaseInfoSetting);
}

void KTChannelManager::showTrayMessageList(KTProcessMessage& message)
{
    const Json::Value& arguments = message.arguments;
    if (message.argumentCount() < 5)
        return;
    const bool show = JSONUtils::optBool(0, arguments);
    const QRect rectangle =
        rectangleOfEdges(JSONUtils::optInt(1, arguments), JSONUtils::optInt(2, arguments),
                         JSONUtils::optInt(3, arguments), JSONUtils::optInt(4, arguments));
    if (m_observer && m_observer->onShowUnreadMessageList)
        callCopy(m_observer->onShowUnreadMessageList, show, rectangle);
}

void KTChannelManager::requestMessage(KTProcessMessage& message)
{
    const Json::Value& arguments = message.arguments;
    if (message.argumentCount() < 1)
        return;
    const Json::Value& request = JSONUtils::optObject(0, arguments);
    const std::string api = JSONUtils::optString("api", request);
    if (api != kAccusationApi) {
        LOG4CPLUS_ERROR(Logger::logger(), "api not implemented " << api);
        return;
    }
    std::string url = JSONUtils::optString("url", request);
    if (m_observer && m_observer->onRequest) {
        callCopy(m_observer->onRequest, std::move(url));
    } else {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed accusation detail, " << url);
    }
}
