// What each operation does, and results in.

#include "tests/model/ModelTerms.h"
#include "tests/support/AccountTexts.h"

#include <algorithm>
#include <map>
#include <utility>

using namespace terms;

namespace {

const std::string kDone = "done";

} // namespace

struct ModelOperations
{
    static std::string initManager(AccountsModel& model, Process& own, const Arguments& with)
    {
        static_cast<Identity&>(own.own) = workbenchIdentity(model.numberOf(own));
        own.own.skin = with.at(0);
        own.own.unread = 0;
        own.isListening = own.isJoined = true;
        int position = 0;
        for (Account& each : model.m_accounts)
            each.idx = position++;
        if (Account* const listed = model.findOwn(own)) {
            listed->unread = 0;
            listed->unreadMark = own.own.unreadMark;
            listed->skin = own.own.skin;
        } else {
            own.own.idx = position + 1;
            model.m_accounts.push_back(own.own);
        }
        if (model.m_selected.pin.empty()) {
            static_cast<Identity&>(model.m_selected) = own.own;
            model.m_selected.mode = own.mode;
        }
        model.changeMergeMode(own, own.mode, false);
        return "1";
    }

    static std::string quit(AccountsModel& model, Process& own, const Arguments& /*with*/)
    {
        if (!own.isJoined)
            return "-1";
        Accounts& accounts = model.m_accounts;
        const auto place = model.findOwn(own) - accounts.data();
        accounts.erase(accounts.begin() + place);
        const bool isFront = isSame(model.m_selected, own.own);
        if (isMerged(model.m_selected) && isFront && !accounts.empty())
            model.switchToAccount(own,
                                  accounts[static_cast<std::size_t>(place > 0 ? place - 1 : 0)]);
        else
            model.post(own, model.m_selected, kListChanged);
        model.detach(own);
        return "1";
    }

    static std::string switchToAccount(AccountsModel& model, Process& own, const Arguments& with)
    {
        const Identity to = with.at(0) < 0 ? Identity{} : workbenchIdentity(with.at(0));
        return number(model.switchToAccount(own, to));
    }

    static std::string switchToCurrentPin(AccountsModel& model, Process& own, const Arguments&)
    {
        model.showCurrentAccount(own);
        return "1";
    }

    static std::string popup(AccountsModel& model, Process& own, const Arguments& with)
    {
        const Selected selected = model.readSelected(own);
        const bool isFront = selected.pin == own.own.pin;
        const bool isHidden =
            (isMerged(selected) ? selected.windowState : own.windowState) == kHiddenState;
        if (with.at(0) == 0) {
            if (isHidden && isMerged(selected) && !isFront)
                model.post(own, selected, kPopUp);
            else if (isHidden)
                model.tell(own, kPopUp, selected, model.readAccounts(own));
        } else if (!isMerged(selected) || isHidden || selected.windowState == kMinimised) {
            model.showCurrentAccount(own);
        } else if (isFront) {
            model.tell(own, kShow, selected, model.readAccounts(own));
        } else {
            model.post(own, selected, kShow);
        }
        return "1";
    }

    static std::string switchShowState(AccountsModel& model, Process& own, const Arguments&)
    {
        model.post(own, model.m_selected, kToggle);
        return kDone;
    }

    static std::string switchedHide(AccountsModel& model, Process& own, const Arguments&)
    {
        own.windowState = kHiddenState;
        model.post(own, model.m_selected, kHidden);
        return kDone;
    }

    /// Whether the normal window has another place now.
    static bool updateWindowSize(Process& own, int state, const Rect& rect)
    {
        if (rect.w == 0 && rect.h == 0)
            return false;
        if (state == kMaximised) {
            own.largestWidth = rect.w;
            own.largestHeight = rect.h;
        }
        const bool isAsLargeAsMaximised = own.largestWidth > 0 && own.largestHeight > 0 &&
                                          rect.w >= own.largestWidth && rect.h >= own.largestHeight;
        const bool isSamePlace = rect.x == own.rect.x && rect.y == own.rect.y &&
                                 rect.w == own.rect.w && rect.h == own.rect.h;
        if (state != kNormal || isAsLargeAsMaximised || isSamePlace)
            return false;
        own.rect = rect;
        return true;
    }

    static std::string windowStateChanged(AccountsModel& model, Process& own, const Arguments& with)
    {
        if (!own.isJoined)
            return kDone;
        const int state = with.at(0);
        const bool isMoved =
            updateWindowSize(own, state, {with.at(1), with.at(2), with.at(3), with.at(4)});
        if (state == own.windowState && !isMoved)
            return kDone;
        own.windowState = state;
        if (isSame(model.m_selected, own.own))
            placeWindow(model.m_selected, own);
        return kDone;
    }

    static std::string changeMergeMode(AccountsModel& model, Process& own, const Arguments& with)
    {
        model.changeMergeMode(own, with.at(0), with.at(1) != 0);
        return kDone;
    }

    static std::string changeSkin(AccountsModel& model, Process& own, const Arguments& with)
    {
        model.changeOwn(own, &Account::skin, with.at(0));
        return kDone;
    }

    static std::string changeLoginState(AccountsModel& model, Process& own, const Arguments& with)
    {
        model.changeOwn(own, &Account::loginState, with.at(0));
        return kDone;
    }

    static std::string changeUnread(AccountsModel& model, Process& own, const Arguments& with)
    {
        const int before = std::exchange(own.own.unread, with.at(0));
        const bool isMore = own.own.unread > before;
        if (isMore)
            own.own.unreadMark = 1;
        if (own.own.unread == before || !own.isJoined)
            return kDone;
        const bool isFront = isSame(model.m_selected, own.own);
        if (isFront)
            own.own.unreadMark = 0;
        if (Account* const listed = model.findOwn(own)) {
            listed->unread = own.own.unread;
            listed->unreadMark = own.own.unreadMark;
        }
        if (isMerged(model.m_selected))
            model.post(own, model.m_selected, kMarkChanged, isMore ? 1 : 0);
        if (!isMerged(model.m_selected) || isFront)
            model.tell(own, kListChanged, model.m_selected, model.m_accounts);
        return kDone;
    }

    static std::string changeMark(AccountsModel& model, Process& own, const Arguments& with)
    {
        const int before = std::exchange(own.own.unreadMark, with.at(0));
        if (own.own.unreadMark == before || !own.isJoined)
            return kDone;
        if (isSame(model.m_selected, own.own))
            own.own.unreadMark = 0;
        if (Account* const listed = model.findOwn(own))
            listed->unreadMark = own.own.unreadMark;
        if (isMerged(model.m_selected) && own.own.unreadMark == 1)
            model.post(own, model.m_selected, kMarkChanged, 1);
        return kDone;
    }

    static std::string switchLoginState(AccountsModel& model, Process& own, const Arguments& with)
    {
        for (const Account& each : model.readAccounts(own))
            model.post(own, each, kLogin, with.at(0));
        return number(own.isJoined);
    }

    static std::string sort(AccountsModel& model, Process& own, const Arguments& with)
    {
        if (!own.isJoined)
            return number(false);
        std::map<std::string, int> positions;
        for (std::size_t i = 0; i + 1 < with.size(); i += 2)
            positions[workbenchIdentity(with[i]).pin] = with[i + 1];
        int behind = static_cast<int>(positions.size());
        for (Account& each : model.m_accounts)
            each.idx = positions.count(each.pin) != 0 ? positions[each.pin] : behind++;
        std::stable_sort(model.m_accounts.begin(), model.m_accounts.end(),
                         [](const Account& a, const Account& b) { return a.idx < b.idx; });
        return number(true);
    }

    static std::string selectedAccount(AccountsModel& model, Process& own, const Arguments&)
    {
        return number(own.isJoined) + ' ' + selectedText(model.readSelected(own));
    }

    static std::string checkWindowVisible(AccountsModel& model, Process& own, const Arguments&)
    {
        const Selected selected = model.readSelected(own);
        bool isVisible = false;
        for (int i = 0; i < model.count(); ++i) {
            if (model.isAlive(i) && isSame(workbenchIdentity(i), selected))
                isVisible = model.process(i).isVisible;
        }
        return number(isMerged(selected) && isVisible);
    }

    static std::string isSelectedAccount(AccountsModel& model, Process& own, const Arguments&)
    {
        return number(!own.isJoined || !isMerged(model.m_selected) ||
                      isSame(model.m_selected, own.own));
    }

    static std::string accountCount(AccountsModel& model, Process& own, const Arguments&)
    {
        return number(static_cast<int>(model.readAccounts(own).size()));
    }

    static std::string isInit(AccountsModel&, Process& own, const Arguments&)
    {
        return number(own.isJoined);
    }

    static std::string currentPin(AccountsModel&, Process& own, const Arguments&)
    {
        return own.own.pin;
    }

    static std::string deliver(AccountsModel& model, Process& own, const Arguments&)
    {
        AccountsModel::Records all;
        while (!own.mail.empty()) {
            const AccountsModel::Records records = model.deliverOne(model.numberOf(own));
            all.insert(all.end(), records.begin(), records.end());
        }
        model.m_heard = std::move(all);
        return kDone;
    }

    static std::string observe(AccountsModel&, Process& own, const Arguments& with)
    {
        own.hasObserver = with.at(0) != 0;
        return kDone;
    }

    static std::string show(AccountsModel&, Process& own, const Arguments& with)
    {
        own.isVisible = with.at(0) != 0;
        return kDone;
    }

    static std::string start(AccountsModel&, Process& own, const Arguments&)
    {
        own = {};
        own.isAlive = true;
        return "ready";
    }

    /// Leaves its record, and maybe the front, to nobody.
    static std::string kill(AccountsModel& model, Process& own, const Arguments&)
    {
        own.isAlive = false;
        own.mail.clear();
        model.detach(own);
        return "killed";
    }
};

AccountsModel::Records AccountsModel::perform(const Step& step)
{
    using Run = std::string (*)(AccountsModel&, Process&, const Arguments&);
    using Is = ModelOperations;
    static const std::map<std::string, Run> kOperations = {
        {"initManager", Is::initManager},
        {"quitCurrentAccount", Is::quit},
        {"switchToAccount", Is::switchToAccount},
        {"switchToCurrentPin", Is::switchToCurrentPin},
        {"popupMainWindow", Is::popup},
        {"switchShowState", Is::switchShowState},
        {"switchedHide", Is::switchedHide},
        {"windowStateChanged", Is::windowStateChanged},
        {"changeMergeMode", Is::changeMergeMode},
        {"changeCurrentSkin", Is::changeSkin},
        {"changeCurrentUnread", Is::changeUnread},
        {"changeCurrentUnreadMark", Is::changeMark},
        {"changeLoginState", Is::changeLoginState},
        {"switchLoginState", Is::switchLoginState},
        {"sortAllAccount", Is::sort},
        {"selectedAccount", Is::selectedAccount},
        {"checkWindowVisible", Is::checkWindowVisible},
        {"isSelectedAccount", Is::isSelectedAccount},
        {"loginAccountCount", Is::accountCount},
        {"isInit", Is::isInit},
        {"currentPin", Is::currentPin},
        {"deliver", Is::deliver},
        {"observe", Is::observe},
        {"show", Is::show},
        {"start", Is::start},
        {"kill", Is::kill},
    };
    m_heard.clear();
    std::string result =
        kOperations.at(step.operation)(*this, process(step.process), step.arguments);
    Records records = std::exchange(m_heard, {});
    records.insert(records.begin(), std::move(result));
    return records;
}
