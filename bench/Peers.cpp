#include "bench/Peers.h"

#include "bench/Targets.h"

std::vector<Transport> withPeers(std::vector<Transport> own)
{
    own.push_back({kLocalSocket, &makeLocalSocketHost, &makeLocalSocketEnd});
    own.push_back({kZeroMq, &makeZeroMqHost, &makeZeroMqEnd});
    own.push_back({kDBus, &makeDBusHost, &makeDBusEnd});
    return own;
}

std::vector<MemberKind> withPeers(std::vector<MemberKind> own)
{
    own.push_back({kDBus, &makeDBusMember, &makeKeptBus});
    own.push_back({kFreeDBus, &makeFreeDBusMember, &makeBus});
    return own;
}

std::vector<StoreKind> withPeers(std::vector<StoreKind> own)
{
    own.push_back({kBoostSegment, &joinBoostStore});
    return own;
}
