#include "tests/model/AccountsModel.h"

#include "tests/model/ModelTerms.h"
#include "tests/support/AccountTexts.h"

#include <algorithm>
#include <utility>

using namespace terms;

AccountsModel::AccountsModel(int processes)
    : m_processes(static_cast<std::size_t>(processes))
{
}

AccountsModel::Process& AccountsModel::process(int number)
{
    return m_processes.at(static_cast<std::size_t>(number));
}

int AccountsModel::numberOf(const Process& own) const
{
    return static_cast<int>(&own - m_processes.data());
}

bool AccountsModel::isAlive(int number) const
{
    return m_processes.at(static_cast<std::size_t>(number)).isAlive;
}

bool AccountsModel::isJoined(int number) const
{
    return m_processes.at(static_cast<std::size_t>(number)).isJoined;
}

bool AccountsModel::hasMail(int number) const
{
    return !m_processes.at(static_cast<std::size_t>(number)).mail.empty();
}

bool AccountsModel::hasSegment() const
{
    return std::any_of(m_processes.begin(), m_processes.end(),
                       [](const Process& each) { return each.isJoined; });
}

std::string AccountsModel::segmentText() const
{
    return ::segmentText(m_selected, m_accounts);
}

std::string AccountsModel::stateText() const
{
    std::string text = segmentText();
    for (const Process& each : m_processes) {
        text += '\n' + accountText(each.own) + ' ' + number(each.windowState);
        for (const Message& message : each.mail)
            text += ' ' + messageText(message.code, message.value);
    }
    return text;
}

Selected AccountsModel::readSelected(const Process& own) const
{
    return own.isJoined ? m_selected : Selected{};
}

Accounts AccountsModel::readAccounts(const Process& own) const
{
    return own.isJoined ? m_accounts : Accounts{};
}

Account* AccountsModel::findOwn(const Process& own)
{
    const auto found = std::find_if(m_accounts.begin(), m_accounts.end(),
                                    [&](const Account& each) { return isSame(each, own.own); });
    return own.isJoined && found != m_accounts.end() ? &*found : nullptr;
}

void AccountsModel::detach(Process& own)
{
    own.isJoined = false;
    // The segment goes with the last one that is attached to it.
    if (!hasSegment()) {
        m_selected = {};
        m_accounts.clear();
    }
}

void AccountsModel::post(const Process& own, const Identity& to, int code, int value)
{
    if (!own.isJoined || to.title.empty() || to.title == own.own.title)
        return;
    for (int i = 0; i < count(); ++i) {
        const Identity window = workbenchIdentity(i);
        if (isAlive(i) && window.className == to.className && window.title == to.title)
            process(i).mail.push_back({code, value});
    }
}

void AccountsModel::tell(Process& own, int code, Selected selected, const Accounts& accounts)
{
    if (code == kShow && selected.w >= 1 && selected.h >= 1) {
        own.windowState = selected.windowState;
        own.rect = selected;
    }
    if (!own.hasObserver)
        return;
    if (selected.mode == 0) {
        static_cast<Identity&>(selected) = own.own;
        m_heard.push_back(callText(code, selected, Accounts{own.own}));
    } else {
        m_heard.push_back(callText(code, selected, accounts));
    }
}

void AccountsModel::relay(Process& own, int code, bool withAccounts)
{
    const Selected selected = readSelected(own);
    if (isMerged(selected))
        tell(own, code, selected, withAccounts ? readAccounts(own) : Accounts{});
}

void AccountsModel::handle(Process& own, const Message& message)
{
    switch (message.code) {
    case kShow:
        showCurrentAccount(own);
        break;
    case kStepBack:
    case kPopUp:
        relay(own, message.code, false);
        break;
    case kMarkChanged:
        relay(own, kListChanged, true);
        if (message.value == 1)
            relay(own, kMarkChanged, true);
        break;
    case kLogin:
        if (own.hasObserver)
            m_heard.push_back(loginCallText(message.value));
        break;
    default:
        relay(own, message.code, true);
        break;
    }
}

AccountsModel::Records AccountsModel::deliverOne(int number)
{
    Process& own = process(number);
    const Message message = own.mail.front();
    own.mail.pop_front();
    m_heard.clear();
    if (own.isListening) {
        m_heard.push_back(messageText(message.code, message.value));
        handle(own, message);
    }
    return std::exchange(m_heard, {});
}

void AccountsModel::showCurrentAccount(Process& own)
{
    own.own.unreadMark = 0;
    const Selected previous = readSelected(own);
    Selected next;
    if (own.isJoined) {
        static_cast<Identity&>(m_selected) = own.own;
        next = m_selected;
        if (Account* const listed = findOwn(own))
            listed->unreadMark = 0;
    }
    own.windowState = previous.windowState;
    if (isMerged(previous))
        post(own, previous, kStepBack);
    tell(own, kShow, next, readAccounts(own));
}

void AccountsModel::changeMergeMode(Process& own, int mode, bool notify)
{
    own.mode = mode;
    if (!own.isJoined || m_selected.mode == mode)
        return;
    m_selected.mode = mode;
    if (isMerged(m_selected)) {
        placeWindow(m_selected, own);
        static_cast<Identity&>(m_selected) = own.own;
    }
    for (const Account& each : m_accounts) {
        if (!isMerged(m_selected))
            post(own, each, kShow);
        else if (!isSame(each, m_selected))
            post(own, each, kStepBack);
    }
    if (notify)
        tell(own, kShow, m_selected, m_accounts);
}

bool AccountsModel::switchToAccount(Process& own, const Identity& to)
{
    if (!own.isJoined || to.pin.empty())
        return false;
    placeWindow(m_selected, own);
    if (isMerged(m_selected))
        post(own, to, kShow);
    return true;
}

void AccountsModel::changeOwn(Process& own, int Account::*field, int value)
{
    if (own.own.*field == value)
        return;
    own.own.*field = value;
    if (Account* const listed = findOwn(own))
        listed->*field = value;
    const Selected selected = readSelected(own);
    if (isMerged(selected))
        post(own, selected, kListChanged);
    tell(own, kListChanged, selected, readAccounts(own));
}

bool AccountsModel::isPossible(const Step& step) const
{
    return isAlive(step.process) != (step.operation == "start");
}
