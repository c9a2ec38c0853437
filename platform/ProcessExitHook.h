#pragma once

namespace pavo {

/// Has the system run the routine when the process leaves through exit(), if that is of any use.
void hookProcessExit(void (*routine)());

} // namespace pavo
