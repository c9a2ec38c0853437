#include "bench/Peers.h"

std::vector<Transport> withPeers(std::vector<Transport> own)
{
    return own;
}

std::vector<MemberKind> withPeers(std::vector<MemberKind> own)
{
    return own;
}

std::vector<StoreKind> withPeers(std::vector<StoreKind> own)
{
    return own;
}
