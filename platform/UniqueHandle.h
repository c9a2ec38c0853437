#pragma once

#include "platform/Win32.h"

#include <memory>

namespace pavo {

struct HandleCloser
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// Owns a system handle. Null means none: INVALID_HANDLE_VALUE is never stored.
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

} // namespace pavo
