#pragma once

#include <optional>
#include <string>

/// The bytes of both regions of an installation's segment.
struct SegmentTexts
{
    std::string selected;
    std::string accounts;
};

/// Looks into the segment of the application's name, attached for no longer than that. Nothing when
/// there is no segment.
std::optional<SegmentTexts> readSegmentTexts();
