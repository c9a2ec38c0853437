#include <pavo_core/PAVOCore.h>
#include <pavo_core/SimulatedLoginService.h>
#include <pavo_ipc/KTChannelManager.h>
#include <pavo_ipc/KTChannelObserver.h>
#include <pavo_ipc/KTKeyInfo.h>
#include <pavo_ipc/KTStartUpContext.h>
#include <pavo_ipc/MultiAccount/MAAccountInfo.h>
#include <pavo_ipc/MultiAccount/MACodes.h>
#include <pavo_ipc/MultiAccount/MAManager.h>
#include <pavo_ipc/MultiAccount/MAMessageParam.h>
#include <pavo_ipc/MultiAccount/MAObserver.h>
#include <pavo_ipc/MultiAccount/MASelectedAccount.h>
#include <pavo_ipc/PavoIpcExport.h>
#include <pavo_ipc/PavoIpcVersion.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(PAVO_IPC_VERSION));
    PAVOCore core(std::make_shared<SimulatedLoginService>());
    PAVOCore::setShareInstance(&core);
    KTChannelManager* channel = KTChannelManager::sharedInstance();
    const bool started = channel->startUp(
        QStringLiteral("no pipes here"), [](int, std::string, const QString) {},
        [](std::string, const QString) {});
    channel->enterMainUI(0, new KTChannelObserver);
    channel->unreadMsgChanged(3);
    return started || MAManager::Instance()->isInit() ? 1 : 0;
}
