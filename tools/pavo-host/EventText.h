#pragma once

#include "tools/pavo-host/Event.h"

/// The lines in which people read an event, `seconds` after the start.
QString eventText(const Event& event, double seconds, bool colours);

/// The line in which programs read it: a JSON object.
QString eventJson(const Event& event, double seconds);
