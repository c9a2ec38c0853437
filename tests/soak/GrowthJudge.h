#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

/// Judges by the samples of processes that lived all the time whether anything grows. Of each
/// quantity the median early on, when everything has warmed up, is compared with the median at the
/// end: neither a single sample nor a burst counts.
class GrowthJudge
{
public:
    struct Quantity
    {
        const char* name;
        long long limit; ///< How much more the median may be.
    };
    static constexpr std::array<Quantity, 6> kQuantities{{
        {"resident KiB", 4096},
        {"heap KiB", 256},
        // A leak comes with what is done hundreds of times; the host's numbers also go with those
        // of the workbenches alive.
        {"handles", 16},
        {"threads", 4},
        // A queue that is filled faster than it is emptied; not what a busy machine does.
        {"inbound us", 1000000},
        {"switch us", 1000000},
    }};
    using Values = std::array<long long, kQuantities.size()>;
    static constexpr long long kNone = -1; ///< For a quantity that was not measured.

    void add(const std::string& process, double seconds, const Values& values);

    /// Whether nothing has grown by more than its limit in a run of this length.
    [[nodiscard]] bool isFlat(double seconds) const;
    /// The medians, a line for each process and quantity.
    [[nodiscard]] std::string report(double seconds) const;

private:
    struct Sample
    {
        double seconds;
        Values values;
    };
    struct Span
    {
        double from; ///< As parts of the run.
        double to;
    };
    static constexpr Span kEarly{0.15, 0.35};
    static constexpr Span kLate{0.80, 1.0};

    static long long median(const std::vector<Sample>& samples, std::size_t quantity, Span span,
                            double seconds);

    std::map<std::string, std::vector<Sample>> m_samples;
};
