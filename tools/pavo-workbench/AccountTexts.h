#pragma once

#include "ipc/MultiAccount/MAAccountInfo.h"
#include "ipc/MultiAccount/MASelectedAccount.h"

#include <QString>

/// How the shared records are shown in a line.
namespace AccountTexts {

/// Who is in front, in which mode, with which window.
QString front(const MASelectedAccount& selected);

/// The accounts in their order, with what is not 0 about them.
QString list(const std::list<MAAccountInfo>& accounts);

} // namespace AccountTexts
