// Whether everything can be measured, and what becomes of what was.

#include "bench/Figures.h"
#include "bench/Targets.h"
#include "tests/support/RoleProcess.h"

#include <QFile>
#include <QTemporaryDir>

#include <json/reader.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

constexpr int kTrialMs = 600000;

/// Whether the library's figures have what the target is about, of whatever size.
bool isMeasured(const Target& target, const Json::Value& figures)
{
    return std::any_of(figures.begin(), figures.end(), [&](const Json::Value& each) {
        return each["measurement"].asString() == target.measurement &&
               each["unit"].asString() == target.unit && each["contestant"].asString() == kLibrary;
    });
}

TEST(BenchTest, MeasuresWhateverHasATarget)
{
    const QTemporaryDir folder;
    QProcess bench;
    bench.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    bench.start(siblingExecutable(QStringLiteral("pavo-bench")),
                {QStringLiteral("--trial"), folder.path()});
    ASSERT_TRUE(bench.waitForFinished(kTrialMs));
    ASSERT_EQ(bench.exitCode(), 0);

    Json::Value figures;
    std::ifstream(folder.filePath(QStringLiteral("figures.json")).toStdString()) >> figures;
    for (const Target& target : kTargets)
        EXPECT_TRUE(isMeasured(target, figures)) << target.measurement << ", " << target.unit;
    for (const Json::Value& each : figures) {
        // So short a time may be none to the system's count of processor time.
        const std::string unit = each["unit"].asString();
        if (unit == kMicroseconds || unit == kPerSecond) {
            EXPECT_GT(each["median"].asDouble(), 0) << each["measurement"].asString();
        }
    }
    for (const char* const name : {"figures.tsv", "figures.md"})
        EXPECT_GT(QFile(folder.filePath(QLatin1String(name))).size(), 0) << name;
}

TEST(FiguresTest, KeepWhatIsComparedTogether)
{
    Figures figures;
    figures.add("walk", 1, kLibrary, kMicroseconds, {3, 1});
    figures.add("run", 1, kLibrary, kMicroseconds, {7});
    figures.add("walk", 1, kFloor, kMicroseconds, {5});
    figures.add("walk", 1, kLibrary, kMicroseconds, {2});
    std::ostringstream columns;
    figures.writeColumns(columns);
    EXPECT_EQ(columns.str(), "walk\t1\tlibrary\tus\t2\t3\n"
                             "walk\t1\tfloor\tus\t5\t5\n"
                             "run\t1\tlibrary\tus\t7\t7\n");
}

TEST(FiguresTest, ShowTheWorseTail)
{
    Figures figures;
    figures.add("flood", 0, kLibrary, kPerSecond, {9, 1, 5});
    std::ostringstream columns;
    figures.writeColumns(columns);
    EXPECT_EQ(columns.str(), "flood\t0\tlibrary\tmessages/s\t5\t1\n");
}

/// The row of the table of targets that begins with these cells.
std::string targetRow(const Figures& figures, const std::string& beginning)
{
    std::ostringstream table;
    figures.writeTable(table);
    const std::string text = table.str();
    const std::size_t begin = text.find(beginning);
    return begin == std::string::npos ? text : text.substr(begin, text.find('\n', begin) - begin);
}

TEST(FiguresTest, SayWhichTargetsAreReached)
{
    Figures figures;
    for (const int accounts : {1, 10}) {
        figures.add("store", accounts, kLibrary, kMicroseconds, {accounts == 1 ? 12.0 : 13.0});
        figures.add("store", accounts, kFloor, kMicroseconds, {10});
    }
    EXPECT_EQ(targetRow(figures, "| store             |   1"),
              "| store             |   1 | us             |  1.20 | floor                      | "
              "at most 1.20 | pass |");
    EXPECT_EQ(targetRow(figures, "| store             |  10"),
              "| store             |  10 | us             |  1.30 | floor                      | "
              "at most 1.20 | **miss** |");
}

TEST(FiguresTest, CompareGrowthWithTheFloors)
{
    Figures figures;
    figures.add("group, merging", 10, kLibrary, kMicroseconds, {20});
    figures.add("group, merging", 50, kLibrary, kMicroseconds, {120});
    figures.add("group, merging", 10, kFloor, kMicroseconds, {10});
    EXPECT_EQ(targetRow(figures, "| group, merging    |  50 | us             |").find("growth"),
              std::string::npos);
    figures.add("group, merging", 50, kFloor, kMicroseconds, {60});
    EXPECT_EQ(targetRow(figures, "| group, merging    |  50 | us             |"),
              "| group, merging    |  50 | us             |  1.00 | floor, growth from 10      | "
              "at most 1.20 | pass |");
}

TEST(FiguresTest, CompareWithThemselvesAtAnotherSize)
{
    Figures figures;
    figures.add("store", 100, kLibrary, kMicroseconds, {10});
    figures.add("store", 500, kLibrary, kMicroseconds, {50});
    EXPECT_EQ(targetRow(figures, "| store             | 500"),
              "| store             | 500 | us             |  5.00 | itself at 100              | "
              "at most 6.00 | pass |");
}

} // namespace
