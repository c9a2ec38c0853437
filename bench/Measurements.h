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

constexpr Effort kQuick{3, 100, 10000, 20, 40, 3, 5, 100000};
constexpr Effort kFull{7, 300, 30000, 60, 100, 5, 10, 1000000};

void measureMessages(const Effort& effort, Figures& figures);
void measureSwitch(const Effort& effort, Figures& figures);
void measureStore(const Effort& effort, Figures& figures);
void measureGroup(const Effort& effort, Figures& figures);
void measureStart(const Effort& effort, Figures& figures);
void measureMemory(const Effort& effort, Figures& figures);
