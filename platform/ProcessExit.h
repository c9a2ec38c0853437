#pragma once

namespace pavo {

/// Runs close() once, while Qt and the logger still live: when the QCoreApplication is destroyed
/// or, where the system allows it, when the process leaves through exit() without that. What was
/// registered last is closed first, what was registered twice only once. May be called from any
// thread.
void closeAtProcessExit(void (*close)());

} // namespace pavo
