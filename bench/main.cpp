// Measures the library beside its floor and its peers, all in one run.

#include "bench/Measurements.h"
#include "bench/Process.h"
#include "tests/support/RuntimeFolder.h"

#include <QDir>

#include <fstream>
#include <iostream>

namespace {

struct Measurement
{
    const char* name;
    void (*run)(const Effort&, Figures&);
};
constexpr Measurement kMeasurements[] = {
    {"messages", &measureMessages}, {"switch", &measureSwitch}, {"store", &measureStore},
    {"group", &measureGroup},       {"start", &measureStart},   {"memory", &measureMemory},
};

/// Takes the option that asks for less than everything, if it is there.
Effort takeEffort(QStringList& arguments)
{
    if (arguments.removeAll(QStringLiteral("--quick")) > 0)
        return kQuick;
    if (arguments.removeAll(QStringLiteral("--trial")) > 0)
        return kTrial;
    return kFull;
}

int wrongUsage()
{
    std::cerr << "usage: pavo-bench [--quick|--trial] FOLDER [NAME]\n"
                 "Writes figures.json, figures.tsv and figures.md to FOLDER. NAME is one of:";
    for (const Measurement& each : kMeasurements)
        std::cerr << ' ' << each.name;
    std::cerr << '\n';
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (Role::runAsAsked(argc, argv, exitCode))
        return exitCode;
    static const RuntimeFolder folder;
    // Qt's own event dispatcher, which like the one of Windows wakes only a thread that sleeps; the
    // one for desktops makes a system call of every post. Of the children, too.
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const Effort effort = takeEffort(arguments);
    if (arguments.isEmpty() || arguments.size() > 2)
        return wrongUsage();
    Figures figures;
    bool found = false;
    for (const Measurement& each : kMeasurements) {
        if (arguments.size() == 2 && arguments[1] != QLatin1String(each.name))
            continue;
        found = true;
        std::cerr << "Measuring " << each.name << " ...\n";
        each.run(effort, figures);
    }
    if (!found)
        return wrongUsage();
    const std::string place = arguments[0].toStdString();
    std::ofstream json(place + "/figures.json");
    figures.writeJson(json);
    std::ofstream columns(place + "/figures.tsv");
    figures.writeColumns(columns);
    std::ofstream table(place + "/figures.md");
    figures.writeTable(table);
    figures.writeTable(std::cout);
    return json && columns && table ? 0 : 1;
}
