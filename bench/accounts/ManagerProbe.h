#pragma once

#include "ipc/MultiAccount/MAManager.h"

#include <QCoreApplication>

/// The measurements' view of what a manager keeps to itself.
class MAManagerProbe : public MAManager
{
public:
    MAAccountInfo& own() { return m_ownAccount; }
    void seed(const std::list<MAAccountInfo>& accounts)
    {
        modify([&](std::list<MAAccountInfo>& list) { list = accounts; });
    }
    template<typename Edit>
    void modify(Edit edit)
    {
        MASelectedAccount selected;
        std::list<MAAccountInfo> accounts;
        modifyShareMemory(selected, accounts, nullptr, edit);
    }
};

constexpr const char* kAppID = "app";
constexpr const char* kClassName = "WorkbenchWindow";

inline std::string pinOf(int number)
{
    const std::string digits = std::to_string(number);
    return "account-" + std::string(6 - digits.size(), '0') + digits;
}

/// Windows are seen by every process of the user: the title names the installation, too.
inline std::string titleOf(const std::string& pin)
{
    return QCoreApplication::applicationName().toStdString() + ' ' + pin;
}

inline std::list<MAAccountInfo> accountsUpTo(int count)
{
    std::list<MAAccountInfo> accounts;
    for (int i = 0; i < count; ++i) {
        const std::string pin = pinOf(i);
        accounts.emplace_back().setAccount(kAppID, pin, kClassName, titleOf(pin), 1, 0);
        accounts.back().idx = i;
    }
    return accounts;
}
