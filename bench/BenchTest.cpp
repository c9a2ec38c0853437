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

TEST(FiguresTest, SayWhichTargetsAreReached)
{
    Figures figures;
    for (const Target& target : kTargets) {
        if (target.measurement != std::string("store") || target.other != std::string(kFloor))
            continue;
        const double own = target.parameter == 1 ? target.limit : target.limit + 0.1;
        figures.add("store", target.parameter, kLibrary, kMicroseconds, {own});
        figures.add("store", target.parameter, kFloor, kMicroseconds, {1});
    }
    std::ostringstream table;
    figures.writeTable(table);
    EXPECT_NE(table.str().find("| store             |   1 | us             |  1.20 | floor"),
              std::string::npos)
        << table.str();
    EXPECT_NE(table.str().find("at most 1.20 | pass |"), std::string::npos);
    EXPECT_NE(table.str().find("at most 1.20 | **miss** |"), std::string::npos);
}

} // namespace
