#pragma once

#include <array>
#include <map>
#include <ostream>
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
        {"inbound us", 200000},
        {"switch us", 200000},
    }};
    static constexpr long long kNone = -1; ///< For what could not be measured this time.

    /// The processes to judge, each with how many of the quantities are measured of it, in their
    /// order.
    explicit GrowthJudge(std::map<std::string, std::size_t> processes);

    /// Samples of other processes are not looked at.
    void add(const std::string& process, double seconds, std::vector<long long> values);

    /// Whether everything was measured early and late in a run of this length, and nothing has
    /// grown by more than its limit. Writes the medians, a line for each process and quantity.
    bool isFlat(double seconds, std::ostream& report) const;

private:
    struct Sample
    {
        double seconds;
        std::vector<long long> values;
    };
    struct Span
    {
        double from; ///< As parts of the run.
        double to;
    };
    static constexpr Span kEarly{0.15, 0.35};
    static constexpr Span kLate{0.80, 1.0};

    /// kNone when there is no measured value.
    static long long median(const std::vector<Sample>& samples, std::size_t quantity, Span span,
                            double seconds);

    const std::map<std::string, std::size_t> m_processes;
    std::map<std::string, std::vector<Sample>> m_samples;
};
