#pragma once

#include <memory>
#include <string>

/// One process's way into a shared list of accounts.
class StoreUser
{
public:
    virtual ~StoreUser() = default;
    /// Fills the list anew.
    virtual void seed(int accounts) = 0;
    /// Reads the front account and the list and writes the list with the own account's new state.
    virtual void change(int loginState) = 0;
};

struct StoreKind
{
    const char* name;
    std::unique_ptr<StoreUser> (*join)(const std::string& pin);
};

std::unique_ptr<StoreUser> joinLibraryStore(const std::string& pin);
std::unique_ptr<StoreUser> joinFloorStore(const std::string& pin);
std::unique_ptr<StoreUser> joinUngatedFloorStore(const std::string& pin);
std::unique_ptr<StoreUser> joinQtStore(const std::string& pin);
std::unique_ptr<StoreUser> joinBoostStore(const std::string& pin);
