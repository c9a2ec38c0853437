#include "platform/PipeSecurity.h"

namespace pavo {

struct PipeSecurity::Data
{
};

PipeSecurity::PipeSecurity() = default;

PipeSecurity::~PipeSecurity() = default;

LPSECURITY_ATTRIBUTES PipeSecurity::currentUserOnly()
{
    return nullptr;
}

} // namespace pavo
