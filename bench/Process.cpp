#include "bench/Process.h"

#include <sys/resource.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

constexpr int kPatienceMs = 120000;
constexpr const char* kReady = "ready";

/// Adds up, in kilobytes, what is resident of those mappings in whose line `name` is.
double residentIn(const char* listing, const std::string& name)
{
    std::ifstream file(listing);
    double sum = 0;
    bool counts = false;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string first;
        double kilobytes = 0;
        words >> first;
        if (first.back() != ':')
            counts = line.find(name) != std::string::npos;
        else if (counts && first == "Rss:" && words >> kilobytes)
            sum += kilobytes;
    }
    return sum;
}

} // namespace

int obey(const std::function<std::string(const std::string&, const std::string&)>& run)
{
    sayToParent(kReady);
    for (;;) {
        std::istringstream line(nextLineFromParent());
        std::string command;
        std::string argument;
        if (!(line >> command))
            return 0;
        line >> argument;
        sayToParent(run(command, argument));
    }
}

void ChildEnder::operator()(RoleProcess* child) const
{
    child->say("");
    child->waitForExit();
    delete child;
}

Child startChild(const char* role, const QStringList& arguments)
{
    Child child(new RoleProcess(role, arguments));
    if (answerOf(child) != kReady) {
        std::cerr << "pavo-bench: " << role << " does not start\n";
        std::exit(1);
    }
    return child;
}

std::string answerOf(const Child& child)
{
    std::string line = child->nextLine(kPatienceMs);
    if (line.empty()) {
        std::cerr << "pavo-bench: a process does not answer\n";
        std::exit(1);
    }
    return line;
}

std::string ask(const Child& child, const std::string& command)
{
    child->say(command);
    return answerOf(child);
}

std::vector<double> numbersIn(const std::string& line)
{
    std::istringstream in(line);
    std::vector<double> numbers;
    for (double number = 0; in >> number;)
        numbers.push_back(number);
    return numbers;
}

std::string lineOf(const std::vector<double>& numbers)
{
    std::ostringstream out;
    out << std::fixed << std::setprecision(3);
    for (const double number : numbers)
        out << number << ' ';
    return out.str();
}

double processorTimeUs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto us = [](const timeval& time) {
        return 1e6 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec);
    };
    return us(usage.ru_utime) + us(usage.ru_stime);
}

double residentKb()
{
    return residentIn("/proc/self/smaps_rollup", {});
}

double residentKbOf(const std::string& name)
{
    return residentIn("/proc/self/smaps", name);
}

QString uniqueName(const QString& role)
{
    static int number = 0;
    return QStringLiteral("pavo-bench-%1-%2-%3")
        .arg(role)
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}
