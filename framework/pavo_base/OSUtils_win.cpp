#include "pavo_base/OSUtils.h"

#include <windows.h>

bool OSUtils::changeWindowMessageFilter(unsigned int message, unsigned long action)
{
    return ChangeWindowMessageFilter(message, action) != FALSE;
}
