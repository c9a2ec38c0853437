#include "platform/ProcessExitHook.h"

namespace pavo {

// By the time a DLL's exit handlers run, the system has ended every other thread of the process:
// there is nothing left to close, and waiting for such a thread's last word could hang for ever.
void hookProcessExit(void (* /*routine*/)()) {}

} // namespace pavo
