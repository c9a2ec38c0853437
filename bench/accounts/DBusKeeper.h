#pragma once

#include "bench/Process.h"

/// The process that keeps the list and the front for the members on the bus.
std::unique_ptr<RoleProcess> startDBusKeeper(const QString& bus);
