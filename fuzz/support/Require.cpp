#include "fuzz/support/Require.h"

#include <cstdio>
#include <cstdlib>

void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Not so: %s\n", what);
    std::abort();
}
