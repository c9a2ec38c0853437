#pragma once

// What this process uses.

/// Processor time, in microseconds.
double processorTimeUs();

/// Memory, in kilobytes.
struct MemoryUse
{
    double resident;
    double own; ///< of no file and no other process
};
MemoryUse memoryUse();
