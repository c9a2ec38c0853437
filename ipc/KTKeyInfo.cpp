#include "ipc/KTKeyInfo.h"

// Here, so that the library exports them and every user runs the same ones.
KTKeyInfo::KTKeyInfo() = default;
KTKeyInfo::KTKeyInfo(const KTKeyInfo& other) = default;
KTKeyInfo::KTKeyInfo(KTKeyInfo&& other) noexcept = default;
KTKeyInfo& KTKeyInfo::operator=(const KTKeyInfo& other) = default;
KTKeyInfo& KTKeyInfo::operator=(KTKeyInfo&& other) noexcept = default;
KTKeyInfo::~KTKeyInfo() = default;
