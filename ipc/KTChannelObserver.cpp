#include "ipc/KTChannelObserver.h"

// Here, so that the library exports them and every user runs the same ones.
KTChannelObserver::KTChannelObserver() = default;
KTChannelObserver::KTChannelObserver(const KTChannelObserver& other) = default;
KTChannelObserver::KTChannelObserver(KTChannelObserver&& other) noexcept = default;
KTChannelObserver& KTChannelObserver::operator=(const KTChannelObserver& other) = default;
KTChannelObserver& KTChannelObserver::operator=(KTChannelObserver&& other) noexcept = default;
KTChannelObserver::~KTChannelObserver() = default;
