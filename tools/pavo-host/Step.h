#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class HostSession;
class Sessions;

/// What a step has come to.
struct Verdict
{
    enum State { Waiting, Met, Failed };
    State state = Met;
    QString problem; ///< Of one that has failed.
};

/// One thing that the host does or waits for.
struct Step
{
    /// What comes first: chooses the session that the rest is about, for one. False, with the
    /// reason in `problem`, fails the step.
    std::function<bool(Sessions&, QString& problem)> arrange;
    std::function<void(HostSession&)> start;
    /// Asked after start() and whenever something has happened, until it is met or has failed.
    std::function<Verdict(HostSession&)> check;
    /// What there was none of when the time is over; empty if only time has to pass.
    QString awaited;
    /// Fails as soon as the workbench has ended or, if nothing is awaited of it, as soon as any has
    /// that was not to.
    bool needsWorkbench = true;
    bool launches = false; ///< Whether it starts a workbench.
    int extraMs = 0;       ///< Time beyond what every step is given.
    QString place;         ///< Where it comes from, for error messages.
};

/// As Step::arrange, and nothing else.
Step arrangeStep(std::function<bool(Sessions&, QString& problem)> arrange);

/// Does something that is over at once, whether there is a workbench or not.
Step immediateStep(std::function<void(HostSession&)> action);

/// Writes `bytes` to the workbench.
Step sendStep(const QByteArray& bytes);
