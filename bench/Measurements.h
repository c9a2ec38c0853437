#pragma once

#include "bench/Figures.h"

/// How much a run does of everything. Each round lets every contestant have its turn.
struct Effort
{
    int rounds;
    int quietMessages;
    int floodMessages;
    int switches;
    int changes; ///< of the store, by each process; fewer where the list is long
    int merges;
    int starts;
    int soakMessages;
};

// Many short rounds: what else the machine does then falls on all contestants alike.
constexpr Effort kQuick{6, 40, 5000, 8, 20, 2, 3, 100000};
constexpr Effort kFull{30, 60, 8000, 15, 30, 2, 2, 1000000};

void measureMessages(const Effort& effort, Figures& figures);
void measureSwitch(const Effort& effort, Figures& figures);
void measureStore(const Effort& effort, Figures& figures);
void measureGroup(const Effort& effort, Figures& figures);
void measureStart(const Effort& effort, Figures& figures);
void measureMemory(const Effort& effort, Figures& figures);
