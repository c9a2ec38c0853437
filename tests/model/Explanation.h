#pragma once

#include "tests/model/AccountsModel.h"

/// Whether the processes can have handled all their mail in some order so that each of them
/// reports, and the segment holds, what is given. Leaves the model as it is after that order; if
/// there is none, as it was.
bool explain(AccountsModel& model, const std::vector<AccountsModel::Records>& reports,
             const std::string& segment);
