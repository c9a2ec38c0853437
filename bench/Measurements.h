#pragma once

#include "bench/Figures.h"

/// How much a run does of everything. In each round every contestant is started anew and has its
/// turn: which processors its threads are put on lasts as long as they do, and what else the
/// machine does falls on all contestants alike.
struct Effort
{
    int rounds;
    int quietMessages;
    int floodMessages;
    int switches;
    int changes; ///< of the store, by a process alone; fewer where the list is long
    int groups;  ///< The rounds of whole groups, which take long to start.
    int merges;
    int starts;
    int soakMessages;
    int processes; ///< at most, of a group or about the same store
};

constexpr Effort kFull{30, 60, 8000, 15, 30, 10, 6, 3, 1000000, 50};
constexpr Effort kQuick{6, 40, 5000, 8, 20, 2, 4, 3, 100000, 50};
/// Tells whether everything can be measured, and nothing else.
constexpr Effort kTrial{1, 2, 100, 1, 1, 1, 1, 1, 2000, 2};

void measureMessages(const Effort& effort, Figures& figures);
void measureSwitch(const Effort& effort, Figures& figures);
void measureStore(const Effort& effort, Figures& figures);
void measureGroup(const Effort& effort, Figures& figures);
void measureStart(const Effort& effort, Figures& figures);
void measureMemory(const Effort& effort, Figures& figures);
