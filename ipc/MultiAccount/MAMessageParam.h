#pragma once

#include "MAAccountInfo.h"
#include "MASelectedAccount.h"

/// What accompanies a message of the manager. A plain value.
struct PAVO_IPC_EXPORT MAMessageParam
{
    MASelectedAccount selected;        ///< The account in front.
    std::list<MAAccountInfo> accounts; ///< All accounts, in their order.
};
