#include "pavo_base/OSUtils.h"

bool OSUtils::changeWindowMessageFilter(unsigned int /*message*/, unsigned long /*action*/)
{
    return true;
}
