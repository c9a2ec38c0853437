#pragma once

#include "tests/support/RoleProcess.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A clock that all processes share.
inline std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

constexpr double kNsPerUs = 1000;

/// What a contestant's process does all its life: the parent's lines are commands, each answered
/// with one line; `run` takes a command and its argument.
int obey(
    const std::function<std::string(const std::string& command, const std::string& argument)>& run);

/// Handles events until `condition` holds; what makes it hold has to call QCoreApplication::quit().
template<typename Condition>
void handleEventsUntil(Condition condition)
{
    while (!condition())
        QCoreApplication::exec();
}

/// Has a process that obeys end by itself, so that it leaves nothing behind in the system.
struct ChildEnder
{
    void operator()(RoleProcess* child) const;
};
using Child = std::unique_ptr<RoleProcess, ChildEnder>;

/// Starts the role and waits until it has said that it is ready.
Child startChild(const char* role, const QStringList& arguments);
/// Says a command and returns the answer; a child without one ends the run.
std::string ask(const Child& child, const std::string& command);
std::string answerOf(const Child& child);

std::vector<double> numbersIn(const std::string& line);
std::string lineOf(const std::vector<double>& numbers);

/// A name that nothing else on this machine has.
QString uniqueName(const QString& role);
