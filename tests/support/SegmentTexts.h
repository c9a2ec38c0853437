#pragma once

#include <optional>
#include <string>

/// The bytes of both regions of an installation's segment.
struct SegmentTexts
{
    std::string selected;
    std::string accounts;
};

/// Looks into the segment of the application's name as a process that comes, which is to say that
/// it is blank when nobody is there, whatever crashed processes may have left. Nothing when it
/// cannot be used.
std::optional<SegmentTexts> readSegmentTexts();
