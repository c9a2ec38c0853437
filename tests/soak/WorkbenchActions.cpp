// What a workbench does at random while the soak has it work.

#include "ipc/MultiAccount/MACodes.h"
#include "tests/soak/SoakWorkbench.h"

struct SoakWorkbench::Action
{
    double weight; ///< How often it is done, compared with the others.
    void (*act)(SoakWorkbench& workbench);
};

const std::vector<SoakWorkbench::Action>& SoakWorkbench::actions()
{
    using W = SoakWorkbench;
    static const std::vector<Action> all{
        // To the host.
        {1, [](W& w) { w.send([&] { w.m_channel.activePlatform(); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.baseInfoChanged(std::string(1500, 'b')); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.changeLoginInitStatus(w.any(5)); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.changeSkinCallback(w.any(7)); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.changeStatusCallback(w.any(9)); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.loginFailure("pin", 5, "text"); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.openPlugin("plugin", true); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.openSetting("page"); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.openUrl("https://example.com", false); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.trayIconAction(true, "text", w.any(9)); }); }},
        {1, [](W& w) { w.send([&] { w.m_channel.unreadMsgChanged(w.any(99)); }); }},
        {1,
         [](W& w) {
             const QString text = QStringLiteral("text");
             w.send([&] { w.m_channel.UploadCefException(1, text, text, text, text, {}); });
         }},
        {1,
         [](W& w) {
             const QString text = QString::fromUtf8("\xE9\x94\x99\xE8\xAF\xAF").repeated(w.any(2));
             w.send([&] { w.m_channel.UploadInterfaceException(1, text, text, text); });
         }},
        {1,
         [](W& w) {
             // Before the login it would be too early.
             if (w.m_isInMainWindow)
                 w.send([&] { w.m_channel.enterMainUI(0, w.m_observer); });
         }},
        // To the other workbenches.
        {3, [](W& w) { w.m_accounts->changeCurrentUnread(w.any(100)); }},
        {1, [](W& w) { w.m_accounts->changeCurrentUnreadMark(w.any(2)); }},
        {1, [](W& w) { w.m_accounts->changeCurrentSkin(w.any(6)); }},
        {1, [](W& w) { w.m_accounts->changeLoginState(w.any(5)); }},
        {.2, [](W& w) { w.m_accounts->switchLoginState(w.any(5)); }},
        {3, [](W& w) { w.m_accounts->switchToAccount(SoakAccount(w.any(w.m_seats)).record()); }},
        {1, [](W& w) { w.m_accounts->popupMainWindow(w.any(2) == 1); }},
        {.5, [](W& w) { w.m_accounts->switchedHide(); }},
        {.5, [](W& w) { w.m_accounts->switchShowState(); }},
        {2,
         [](W& w) {
             w.m_accounts->windowStateChanged(kMANormal + w.any(kMAHidden),
                                              QRect(w.any(100), w.any(100), 800, 600 + w.any(9)));
         }},
        {.1,
         [](W& w) {
             w.m_accounts->sortAllAccount({{SoakAccount(w.any(w.m_seats)).pin, 0}});
         }},
        {.1, [](W& w) { w.m_accounts->changeMergeMode(kMAMerged, true); }},
        {.02, [](W& w) { w.m_accounts->changeMergeMode(kMASeparate, true); }},
        // Questions.
        {1, [](W& w) { w.m_accounts->checkWindowVisible(); }},
        {1, [](W& w) { w.m_accounts->isSelectedAccount(); }},
        {1, [](W& w) { w.m_accounts->loginAccountCount(); }},
    };
    return all;
}

void SoakWorkbench::actAtRandom()
{
    static const auto weights = [] {
        std::vector<double> all;
        for (const Action& action : actions())
            all.push_back(action.weight);
        return std::discrete_distribution<std::size_t>(all.begin(), all.end()).param();
    }();
    constexpr int kActionsAtOnce = 2;
    std::discrete_distribution<std::size_t> distribution(weights);
    for (int i = 0; i < kActionsAtOnce; ++i)
        actions()[distribution(m_random)].act(*this);
}
