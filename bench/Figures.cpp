#include "bench/Figures.h"

#include "bench/Targets.h"

#include <json/value.h>
#include <json/writer.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>

double Series::percentile(double part) const
{
    std::vector<double> sorted = samples;
    std::sort(sorted.begin(), sorted.end());
    return sorted[static_cast<std::size_t>(
        std::lround(part * static_cast<double>(sorted.size() - 1)))];
}

void Figures::add(const std::string& measurement, int parameter, const std::string& contestant,
                  const std::string& unit, const std::vector<double>& samples)
{
    auto* known = const_cast<Series*>(find(measurement, parameter, contestant, unit));
    if (!known)
        known = &m_series.emplace_back(Series{measurement, parameter, contestant, unit, {}});
    known->samples.insert(known->samples.end(), samples.begin(), samples.end());
}

const Series* Figures::find(const std::string& measurement, int parameter,
                            const std::string& contestant, const std::string& unit) const
{
    const auto found = std::find_if(m_series.begin(), m_series.end(), [&](const Series& each) {
        return each.measurement == measurement && each.parameter == parameter &&
               each.contestant == contestant && each.unit == unit;
    });
    return found == m_series.end() ? nullptr : &*found;
}

void Figures::writeTable(std::ostream& out) const
{
    out << std::fixed << std::setprecision(2);
    out << std::left << std::setw(31) << "measurement" << std::setw(28) << "contestant"
        << std::right << std::setw(13) << "median" << std::setw(13) << "p99"
        << "  unit\n";
    for (const Series& each : m_series) {
        out << std::left << std::setw(24) << each.measurement << std::right << std::setw(5)
            << each.parameter << "  " << std::left << std::setw(28) << each.contestant << std::right
            << std::setw(13) << each.median() << std::setw(13) << each.percentile(0.99) << "  "
            << std::left << std::setw(15) << each.unit;
        const Series* const library = find(each.measurement, each.parameter, kLibrary, each.unit);
        if (library && library != &each)
            out << " library is " << library->median() / each.median() << " of it";
        out << '\n';
    }
    out << "\nTargets\n";
    for (const Target& target : kTargets) {
        const Series* const own = find(target.measurement, target.parameter, kLibrary, target.unit);
        const Series* const other =
            find(target.measurement, target.otherParameter, target.other, target.unit);
        if (!own || !other)
            continue;
        const double ratio = own->median() / other->median();
        const bool reached = target.atLeast ? ratio >= target.limit : ratio <= target.limit;
        out << (reached ? "pass " : "MISS ") << std::left << std::setw(20) << target.measurement
            << std::right << std::setw(4) << target.parameter << "  " << std::left << std::setw(15)
            << target.unit << std::right << std::setw(7) << ratio << " of " << target.other << ' '
            << target.otherParameter << (target.atLeast ? ", at least " : ", at most ")
            << target.limit << '\n';
    }
}

void Figures::writeJson(std::ostream& out) const
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["precision"] = 6;
    const char* separator = "[";
    for (const Series& each : m_series) {
        Json::Value one;
        one["measurement"] = each.measurement;
        one["parameter"] = each.parameter;
        one["contestant"] = each.contestant;
        one["unit"] = each.unit;
        one["median"] = each.median();
        one["p99"] = each.percentile(0.99);
        one["samples"] = static_cast<Json::UInt64>(each.samples.size());
        out << separator << Json::writeString(builder, one);
        separator = ",\n";
    }
    out << "]\n";
}

void Figures::writeColumns(std::ostream& out) const
{
    for (const Series& each : m_series)
        out << each.measurement << '\t' << each.parameter << '\t' << each.contestant << '\t'
            << each.unit << '\t' << each.median() << '\t' << each.percentile(0.99) << '\n';
}
