// What happens to a message and to the account list inside one process, beside the bare parsers.

#include "bench/accounts/ManagerProbe.h"
#include "bench/messages/Json.h"
#include "bench/messages/Transport.h"
#include "ipc/KTMessageBuilders.h"
#include "pavo_base/JSONUtils.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

constexpr int kRepetitions = 9;

double percentile99(const std::vector<double>& samples)
{
    std::vector<double> sorted = samples;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() * 99 / 100];
}

void repeat(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Repetitions(kRepetitions)
        ->ReportAggregatesOnly()
        ->ComputeStatistics("p99", &percentile99);
}

void withAccounts(benchmark::internal::Benchmark* benchmark)
{
    repeat(benchmark);
    benchmark->Arg(1)->Arg(10)->Arg(100)->Arg(500);
}

const std::string& request()
{
    static const std::string text = requestText(linkOf(1));
    return text;
}

std::string listText(benchmark::State& state)
{
    return MAAccountInfo::toJSON(accountsUpTo(static_cast<int>(state.range())));
}

void parseMessageLibrary(benchmark::State& state)
{
    const QString text = QString::fromStdString(request());
    for (auto each : state) {
        KTProcessMessage message;
        benchmark::DoNotOptimize(message.fromJson(text));
    }
}
BENCHMARK(parseMessageLibrary)->Apply(&repeat);

void parseMessageJSONUtils(benchmark::State& state)
{
    for (auto each : state) {
        Json::Value value;
        benchmark::DoNotOptimize(JSONUtils::parseJSON(request(), value));
    }
}
BENCHMARK(parseMessageJSONUtils)->Apply(&repeat);

void parseMessageJsoncpp(benchmark::State& state)
{
    const std::string& text = request();
    for (auto each : state) {
        Json::Value value;
        benchmark::DoNotOptimize(parseByHand(text.data(), text.data() + text.size(), value));
    }
}
BENCHMARK(parseMessageJsoncpp)->Apply(&repeat);

void parseMessageQJsonDocument(benchmark::State& state)
{
    const QByteArray text = QByteArray::fromStdString(request());
    for (auto each : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text).isObject());
}
BENCHMARK(parseMessageQJsonDocument)->Apply(&repeat);

void writeMessageLibrary(benchmark::State& state)
{
    const std::string link = linkOf(1);
    for (auto each : state) {
        KTProcessMessage message;
        benchmark::DoNotOptimize(KTMessageBuilders::openUrl(message, link, false).size());
    }
}
BENCHMARK(writeMessageLibrary)->Apply(&repeat);

void writeMessageJsoncpp(benchmark::State& state)
{
    const std::string link = linkOf(1);
    for (auto each : state)
        benchmark::DoNotOptimize(writeByHand(openUrlMessage(link)).size());
}
BENCHMARK(writeMessageJsoncpp)->Apply(&repeat);

void readListLibrary(benchmark::State& state)
{
    const std::string text = listText(state);
    for (auto each : state) {
        std::list<MAAccountInfo> list;
        MAAccountInfo::parseJSON(text.data(), static_cast<int>(text.size()), list);
        benchmark::DoNotOptimize(list.size());
    }
}
BENCHMARK(readListLibrary)->Apply(&withAccounts);

void readListJsoncpp(benchmark::State& state)
{
    const std::string text = listText(state);
    for (auto each : state) {
        Json::Value value;
        benchmark::DoNotOptimize(parseByHand(text.data(), text.data() + text.size(), value));
    }
}
BENCHMARK(readListJsoncpp)->Apply(&withAccounts);

void readListQJsonDocument(benchmark::State& state)
{
    const QByteArray text = QByteArray::fromStdString(listText(state));
    for (auto each : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text).isArray());
}
BENCHMARK(readListQJsonDocument)->Apply(&withAccounts);

void writeListLibrary(benchmark::State& state)
{
    const std::list<MAAccountInfo> list = accountsUpTo(static_cast<int>(state.range()));
    for (auto each : state)
        benchmark::DoNotOptimize(MAAccountInfo::toJSON(list).size());
}
BENCHMARK(writeListLibrary)->Apply(&withAccounts);

void writeListJsoncpp(benchmark::State& state)
{
    const std::string text = listText(state);
    Json::Value list;
    parseByHand(text.data(), text.data() + text.size(), list);
    for (auto each : state)
        benchmark::DoNotOptimize(writeByHand(list).size());
}
BENCHMARK(writeListJsoncpp)->Apply(&withAccounts);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pavo-bench-parts"));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
