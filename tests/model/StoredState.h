#pragma once

#include "tests/model/AccountsModel.h"

#include <optional>

/// What a segment holds.
struct StoredState
{
    AccountsModel::Selected selected;
    AccountsModel::Accounts accounts;
};

/// What the segment of the application's name holds. Nothing when there is none, or not two valid
/// texts with nothing behind them.
std::optional<StoredState> storedState();
