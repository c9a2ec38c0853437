#pragma once

#include "platform/Win32.h"

#include <memory>

namespace pavo {

/// Grants a pipe to the current user alone. Where pipes belong to their user anyway there is
/// nothing to grant.
class PipeSecurity
{
public:
    PipeSecurity();
    ~PipeSecurity();
    PipeSecurity(const PipeSecurity&) = delete;
    PipeSecurity& operator=(const PipeSecurity&) = delete;

    /// For CreateNamedPipeA; valid as long as this object. May be null.
    LPSECURITY_ATTRIBUTES currentUserOnly();

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace pavo
