#pragma once

#include "platform/SegmentGate.h"

#include <optional>

class QSharedMemory;

/// Keeps every other process out of the shared segment while it lives. Locks nothing when the
/// segment is null or not attached. Not to be nested over one segment.
///
/// Logs a warning when the lock took long, the wait for other processes included.
class MAMutex
{
public:
    explicit MAMutex(QSharedMemory* memory);
    ~MAMutex();
    MAMutex(const MAMutex&) = delete;
    MAMutex& operator=(const MAMutex&) = delete;

private:
    unsigned long long m_startTick = 0; ///< 0 when nothing was locked
    QSharedMemory* m_memory;
    std::optional<pavo::SegmentGate> m_gate;
};
