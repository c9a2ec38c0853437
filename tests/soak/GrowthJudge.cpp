#include "tests/soak/GrowthJudge.h"

#include <algorithm>
#include <sstream>

void GrowthJudge::add(const std::string& process, double seconds, const Values& values)
{
    m_samples[process].push_back({seconds, values});
}

long long GrowthJudge::median(const std::vector<Sample>& samples, std::size_t quantity, Span span,
                              double seconds)
{
    std::vector<long long> values;
    for (const Sample& sample : samples) {
        const bool isIn =
            sample.seconds >= span.from * seconds && sample.seconds <= span.to * seconds;
        if (isIn && sample.values[quantity] != kNone)
            values.push_back(sample.values[quantity]);
    }
    if (values.empty())
        return kNone;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool GrowthJudge::isFlat(double seconds) const
{
    for (const auto& [process, samples] : m_samples) {
        for (std::size_t i = 0; i < kQuantities.size(); ++i) {
            const long long early = median(samples, i, kEarly, seconds);
            const long long late = median(samples, i, kLate, seconds);
            if (late - early > kQuantities[i].limit)
                return false;
        }
    }
    return true;
}

std::string GrowthJudge::report(double seconds) const
{
    std::ostringstream text;
    for (const auto& [process, samples] : m_samples) {
        for (std::size_t i = 0; i < kQuantities.size(); ++i) {
            const long long early = median(samples, i, kEarly, seconds);
            const long long late = median(samples, i, kLate, seconds);
            if (early == kNone || late == kNone)
                continue;
            text << process << ' ' << kQuantities[i].name << ": " << early << " early, " << late
                 << " late, may grow by " << kQuantities[i].limit
                 << (late - early > kQuantities[i].limit ? ": GROWS\n" : "\n");
        }
    }
    return text.str();
}
