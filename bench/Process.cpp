#include "bench/Process.h"

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

constexpr int kPatienceMs = 120000;
constexpr const char* kReady = "ready";

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
    if (child->nextLine(kPatienceMs) != kReady) {
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

QString uniqueName(const QString& role)
{
    static int number = 0;
    return QStringLiteral("pavo-bench-%1-%2-%3")
        .arg(role)
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}
