#include "ipc/KTChannelManager.h"
#include "ipc/MultiAccount/MAManager.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    KTChannelManager* channel = KTChannelManager::sharedInstance();
    const bool started = channel->startUp(
        QStringLiteral("no pipes here"), [](int, std::string, const QString) {},
        [](std::string, const QString) {});
    channel->enterMainUI(0, new KTChannelObserver);
    channel->unreadMsgChanged(3);
    return started || MAManager::Instance()->isInit() ? 1 : 0;
}
