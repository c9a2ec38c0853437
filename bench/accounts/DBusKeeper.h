#pragma once

#include "bench/Process.h"

/// The process that keeps the list and the front for the members on the bus.
Child startDBusKeeper(const QString& bus);
