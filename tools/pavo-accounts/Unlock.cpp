#include "tools/pavo-accounts/Unlock.h"

#include "ipc/MultiAccount/MAStoreLayout.h"
#include "platform/SegmentGate.h"
#include "tools/support/Tool.h"

#include <iostream>
#include <string>

namespace {

using LockFinding = pavo::SegmentGate::LockFinding;
using LockState = pavo::SegmentGate::LockState;

/// Many times what any process of ours has the lock for.
constexpr int kPatienceMs = 3000;

bool mayBeFreed(LockState state)
{
    return state == LockState::Stuck || state == LockState::Left;
}

const char* describe(LockState state)
{
    switch (state) {
    case LockState::Absent:
        return "nobody uses the segment: there is no lock";
    case LockState::Free:
        return "the lock is free";
    case LockState::Held:
        return "a process that lives has the lock or waits for it: when it ends, the lock is free";
    case LockState::Stuck:
        return "the lock is taken, and by no workbench that lives: by another program that is "
               "slow, or by one that was killed with it";
    case LockState::Left:
        return "a workbench was killed with the lock, or while another program had it: the next "
               "workbench frees it";
    case LockState::Freed:
        return "the lock has been freed";
    case LockState::Unusable:
        return "the lock cannot be looked at";
    }
    return "";
}

bool isTaken(LockState state)
{
    return state == LockState::Held || mayBeFreed(state);
}

void say(const QString& application, const LockFinding& finding)
{
    QString text = application + QStringLiteral(": ") + QLatin1String(describe(finding.state));
    if (!finding.problem.isEmpty())
        text += QStringLiteral(", ") + finding.problem;
    text += QLatin1Char('\n');
    if (isTaken(finding.state))
        text += QStringLiteral("Waited for it in vain for %1 seconds.\n").arg(kPatienceMs / 1000);
    print(text.toUtf8());
}

bool isAgreedTo()
{
    print("Free it? [y/N] ");
    std::string answer;
    std::getline(std::cin, answer);
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

} // namespace

bool unlock(const QString& application, bool isAgreed)
{
    const QString key = application + QLatin1String(kMASegmentSuffix);
    LockFinding finding = pavo::SegmentGate::lookAtLock(key, kPatienceMs);
    say(application, finding);
    if (mayBeFreed(finding.state) && (isAgreed || isAgreedTo())) {
        finding = pavo::SegmentGate::freeLock(key, kPatienceMs);
        say(application, finding);
    }
    return !isTaken(finding.state) && finding.state != LockState::Unusable;
}
