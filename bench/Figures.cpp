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

double Series::tail() const
{
    const bool isRate = unit == kPerSecond || unit == kChangesPerSecond;
    return percentile(isRate ? 0.01 : 0.99);
}

void Figures::add(const std::string& measurement, int parameter, const std::string& contestant,
                  const std::string& unit, const std::vector<double>& samples)
{
    auto* known = const_cast<Series*>(find(measurement, parameter, contestant, unit));
    if (!known) {
        // Beside the others of its kind, whoever had the first turn.
        const auto last = std::find_if(m_series.rbegin(), m_series.rend(), [&](const Series& each) {
            return each.measurement == measurement && each.parameter == parameter;
        });
        const auto place = last == m_series.rend() ? m_series.end() : last.base();
        known = &*m_series.insert(place, {measurement, parameter, contestant, unit, {}});
    }
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
    writeTargets(out);
    out << "\n| what | of | contestant | median | tail | unit | library is |\n"
           "|---|---:|---|---:|---:|---|---:|\n";
    for (const Series& each : m_series) {
        out << "| " << std::left << std::setw(22) << each.measurement << " | " << std::right
            << std::setw(4) << each.parameter << " | " << std::left << std::setw(27)
            << each.contestant << " | " << std::right << std::setw(10) << each.median() << " | "
            << std::setw(10) << each.tail() << " | " << std::left << std::setw(14) << each.unit
            << " | ";
        const Series* const library = find(each.measurement, each.parameter, kLibrary, each.unit);
        if (library && library != &each)
            out << library->median() / each.median();
        out << " |\n";
    }
}

double Figures::ratioOf(const Target& target) const
{
    const auto median = [&](const char* contestant, int parameter) {
        const Series* const series = find(target.measurement, parameter, contestant, target.unit);
        return series ? series->median() : std::nan("");
    };
    const double own = median(kLibrary, target.parameter);
    if (target.other == std::string(kNothing))
        return own;
    const double other = median(target.other, target.otherParameter);
    if (target.otherParameter == target.parameter || target.other == std::string(kLibrary))
        return own / other;
    const double growth = own / median(kLibrary, target.otherParameter);
    return growth / (median(target.other, target.parameter) / other);
}

void Figures::writeTargets(std::ostream& out) const
{
    out << "| what | of | unit | ratio | to | should be | |\n"
           "|---|---:|---|---:|---|---|---|\n";
    for (const Target& target : kTargets) {
        const double ratio = ratioOf(target);
        if (std::isnan(ratio))
            continue;
        const bool reached = target.atLeast ? ratio >= target.limit : ratio <= target.limit;
        std::string other = target.other;
        if (target.otherParameter != target.parameter) {
            other = other == kLibrary ? "itself at " : other.append(", growth from ");
            other += std::to_string(target.otherParameter);
        }
        out << "| " << std::left << std::setw(17) << target.measurement << " | " << std::right
            << std::setw(3) << target.parameter << " | " << std::left << std::setw(14)
            << target.unit << " | " << std::right << std::setw(5) << ratio << " | " << std::left
            << std::setw(26) << other << " | " << (target.atLeast ? "at least " : "at most ")
            << target.limit << " | " << (reached ? "pass" : "**miss**") << " |\n";
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
        one["tail"] = each.tail();
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
            << each.unit << '\t' << each.median() << '\t' << each.tail() << '\n';
}
