#pragma once

/// The names of contestants and units; what is measured under which name stands with its code.
constexpr const char* kLibrary = "library";
constexpr const char* kGathered = "library, gathered writes";
constexpr const char* kFloor = "floor";
constexpr const char* kLocalSocket = "QLocalSocket+QJsonDocument";
constexpr const char* kZeroMq = "ZeroMQ+jsoncpp";
constexpr const char* kDBus = "QtDBus";
constexpr const char* kFreeDBus = "QtDBus without a store";
constexpr const char* kBareLock = "floor without gate";
constexpr const char* kQtSegment = "QSharedMemory+QJsonDocument";
constexpr const char* kBoostSegment = "Boost.Interprocess";

constexpr const char* kMicroseconds = "us";
constexpr const char* kPerSecond = "messages/s";
constexpr const char* kChangesPerSecond = "changes/s";
constexpr const char* kProcessorTime = "CPU us/message";
constexpr const char* kHostProcessorTime = "host CPU us";
constexpr const char* kKilobytes = "kB";
constexpr const char* kOwnKilobytes = "kB own";

/// Stands for no contestant.
constexpr const char* kNothing = "-";

/// What the library is to reach: the ratio of its median to another's, or to its own at another
/// parameter; or to nothing, as it is. At another's other parameter it is the growth from there on
/// that is compared with the other's growth.
struct Target
{
    const char* measurement;
    int parameter;
    const char* unit;
    const char* other;
    int otherParameter;
    bool atLeast; ///< otherwise at most
    double limit;
};

constexpr bool kAtLeast = true;
constexpr bool kAtMost = false;

constexpr Target kTargets[] = {
    {"inbound flood", 0, kPerSecond, kFloor, 0, kAtLeast, 0.85},
    {"inbound flood", 0, kProcessorTime, kFloor, 0, kAtMost, 1.25},
    {"inbound flood", 0, kPerSecond, kLocalSocket, 0, kAtLeast, 1},
    {"inbound flood", 0, kPerSecond, kZeroMq, 0, kAtLeast, 1},
    {"inbound flood", 0, kPerSecond, kDBus, 0, kAtLeast, 1},
    {"inbound quiet", 0, kMicroseconds, kFloor, 0, kAtMost, 1.25},
    {"outbound flood", 0, kPerSecond, kFloor, 0, kAtLeast, 0.85},
    {"outbound flood", 0, kProcessorTime, kFloor, 0, kAtMost, 1.25},
    {"outbound flood", 0, kPerSecond, kLocalSocket, 0, kAtLeast, 1},
    {"outbound flood", 0, kPerSecond, kZeroMq, 0, kAtLeast, 1},
    {"outbound flood", 0, kPerSecond, kDBus, 0, kAtLeast, 1},
    {"outbound quiet", 0, kMicroseconds, kFloor, 0, kAtMost, 1.25},
    {"switch, shown", 10, kMicroseconds, kFloor, 10, kAtMost, 1.5},
    {"switch, done", 10, kMicroseconds, kFloor, 10, kAtMost, 1.5},
    {"switch, shown", 10, kMicroseconds, kDBus, 10, kAtMost, 0.5},
    {"switch, done", 10, kMicroseconds, kDBus, 10, kAtMost, 0.5},
    {"store", 1, kMicroseconds, kFloor, 1, kAtMost, 1.2},
    {"store", 10, kMicroseconds, kFloor, 10, kAtMost, 1.2},
    {"store", 100, kMicroseconds, kFloor, 100, kAtMost, 1.2},
    {"store", 500, kMicroseconds, kFloor, 500, kAtMost, 1.2},
    // In proportion, with a fifth for what does not shrink with the size: to the accounts; to the
    // processes that are told; and to those times the accounts that each of them reads.
    {"store", 500, kMicroseconds, kLibrary, 100, kAtMost, 1.2 * 500 / 100},
    {"group, separating", 50, kMicroseconds, kLibrary, 10, kAtMost, 1.2 * 49 * 50 / (9 * 10)},
    // In a large group processes wait for each other that in a small one run beside each other, and
    // how much is the machine's affair: it has the same say for the floor.
    {"group, merging", 50, kMicroseconds, kFloor, 10, kAtMost, 1.2},
    {"group, merging", 50, kMicroseconds, kLibrary, 10, kAtMost, 1.2 * 49 / 9},
    // Some pages, which the allocator keeps for the next time.
    {"memory, messages", 0, kKilobytes, kNothing, 0, kAtMost, 64},
};
