#include "tests/soak/GrowthJudge.h"

#include <algorithm>
#include <utility>

GrowthJudge::GrowthJudge(std::map<std::string, std::size_t> processes)
    : m_processes(std::move(processes))
{
    for (const auto& [process, quantities] : m_processes)
        m_samples[process];
}

void GrowthJudge::add(const std::string& process, double seconds, std::vector<long long> values)
{
    const auto samples = m_samples.find(process);
    if (samples != m_samples.end())
        samples->second.push_back({seconds, std::move(values)});
}

long long GrowthJudge::median(const std::vector<Sample>& samples, std::size_t quantity, Span span,
                              double seconds)
{
    std::vector<long long> values;
    for (const Sample& sample : samples) {
        const bool isIn =
            sample.seconds >= span.from * seconds && sample.seconds <= span.to * seconds;
        if (isIn && sample.values.at(quantity) != kNone)
            values.push_back(sample.values[quantity]);
    }
    if (values.empty())
        return kNone;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool GrowthJudge::isFlat(double seconds, std::ostream& report) const
{
    bool isFlat = true;
    for (const auto& [process, quantities] : m_processes) {
        const std::vector<Sample>& samples = m_samples.at(process);
        for (std::size_t i = 0; i < quantities; ++i) {
            const long long early = median(samples, i, kEarly, seconds);
            const long long late = median(samples, i, kLate, seconds);
            const long long limit = kQuantities[i].limit;
            const bool isMissing = early == kNone || late == kNone;
            const bool grows = late - early > limit;
            isFlat = isFlat && !isMissing && !grows;
            report << process << ' ' << kQuantities[i].name << ": " << early << " early, " << late
                   << " late, may grow by " << limit
                   << (isMissing ? ": NOT MEASURED\n"
                       : grows   ? ": GROWS\n"
                                 : "\n");
        }
    }
    return isFlat;
}
