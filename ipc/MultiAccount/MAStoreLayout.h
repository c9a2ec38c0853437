#pragma once

#include <QSharedMemory>

#include <algorithm>
#include <cstring>
#include <string>

/// A part of the shared segment, for one text, which ends at the first NUL in it or else with it.
struct MARegion
{
    int offset;
    int size;

    /// How much of it is there: another process may have made the segment shorter than it should
    /// be.
    [[nodiscard]] int presentIn(const QSharedMemory& memory) const
    {
        return memory.size() > offset ? std::min(memory.size() - offset, size) : 0;
    }

    /// Puts `text` at the start and zeroes up to the end. What is longer runs on into the next
    /// region, but never past the segment.
    void put(const std::string& text, QSharedMemory& memory) const
    {
        auto* const segment = static_cast<char*>(memory.data());
        const int present = presentIn(memory);
        const int room = std::max(memory.size() - offset, 0);
        const int length = static_cast<int>(std::min(text.size(), static_cast<std::size_t>(room)));
        // The text first and its end with it: a process that is killed here leaves a whole one.
        std::copy_n(text.c_str(), length < present ? length + 1 : length, segment + offset);
        if (length < present)
            std::memset(segment + offset + length, 0, static_cast<std::size_t>(present - length));
    }
};

// The layout of the segment, the same for every process that takes part. A spare that nothing uses
// follows the regions.
constexpr MARegion kMASelectedRegion{0, 1024};
constexpr MARegion kMAListRegion{1024, 102400};
constexpr int kMASegmentSize = 103434;

/// What follows the application's name in the segment's key.
constexpr const char* kMASegmentSuffix = "_MEM";
