#pragma once

#include "bench/accounts/Member.h"
#include "bench/accounts/StoreUser.h"
#include "bench/messages/Transport.h"

#include <vector>

// What one would use instead of the library, where it has been built: behind the library and its
// floor.

std::vector<Transport> withPeers(std::vector<Transport> own);
std::vector<MemberKind> withPeers(std::vector<MemberKind> own);
std::vector<StoreKind> withPeers(std::vector<StoreKind> own);
