#pragma once

#include "tools/pavo-host/Event.h"

/// How a kind of event is named and shown.
struct EventKind
{
    const char* name;   ///< For filters and in JSON.
    const char* column; ///< In the time line.
    const char* colour; ///< Of the column: what a terminal's colour sequence says.
};

/// By Event::Kind. Only the first ones, which have a column or are a heading, can be filtered.
constexpr EventKind kEventKinds[] = {
    {"host", "host", "2"},         {"sent", "host -->", "36"}, {"received", "host <--", "32"},
    {"output", "workbench", "34"}, {"log", "its log", "33"},   {"accounts", "accounts", "35"},
    {"heading", "", "1"},          {"problem", "", ""},        {"text", "", ""},
};
constexpr int kFilteredKinds = Event::Heading + 1;
