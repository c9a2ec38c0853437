#include "platform/ProcessExitHook.h"

#include <cstdlib>

namespace pavo {

// Exit handlers run before whatever was constructed before their registration is destroyed.
void hookProcessExit(void (*routine)())
{
    std::atexit(routine);
}

} // namespace pavo
