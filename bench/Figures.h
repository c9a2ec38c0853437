#pragma once

#include <iosfwd>
#include <string>
#include <vector>

struct Target;

/// Everything that one contestant showed of one thing.
struct Series
{
    std::string measurement;
    int parameter; ///< accounts or processes; 0 where there is nothing to choose
    std::string contestant;
    std::string unit;
    std::vector<double> samples;

    [[nodiscard]] double percentile(double part) const;
    [[nodiscard]] double median() const { return percentile(0.5); }
    /// What all but a hundredth are as good as, at least.
    [[nodiscard]] double tail() const;
};

/// What a run has measured, in the order in which it came.
class Figures
{
public:
    void add(const std::string& measurement, int parameter, const std::string& contestant,
             const std::string& unit, const std::vector<double>& samples);

    /// In Markdown, for the terminal and for docs: the targets with what was reached, and
    /// everything.
    void writeTable(std::ostream& out) const;
    void writeJson(std::ostream& out) const;
    /// One line a series, for gnuplot.
    void writeColumns(std::ostream& out) const;

private:
    void writeTargets(std::ostream& out) const;
    /// No number where something of it was not measured.
    [[nodiscard]] double ratioOf(const Target& target) const;
    [[nodiscard]] const Series* find(const std::string& measurement, int parameter,
                                     const std::string& contestant, const std::string& unit) const;

    std::vector<Series> m_series;
};
