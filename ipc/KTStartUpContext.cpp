#include "ipc/KTStartUpContext.h"

// Here, so that the library exports them and every user runs the same ones.
KTStartUpContext::KTStartUpContext() = default;
KTStartUpContext::KTStartUpContext(const KTStartUpContext& other) = default;
KTStartUpContext::KTStartUpContext(KTStartUpContext&& other) noexcept = default;
KTStartUpContext& KTStartUpContext::operator=(const KTStartUpContext& other) = default;
KTStartUpContext& KTStartUpContext::operator=(KTStartUpContext&& other) noexcept = default;
KTStartUpContext::~KTStartUpContext() = default;
