#include "tools/pavo-accounts/Unlock.h"

#include "ipc/MultiAccount/MAStoreLayout.h"
#include "platform/SegmentGate.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

using LockState = pavo::SegmentGate::LockState;

/// Many times what any process of ours has the lock for.
constexpr int kPatienceMs = 3000;

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
        return "the lock is taken, and by no workbench: by another program that is slow, or was "
               "killed with it";
    case LockState::Freed:
        return "the lock was left by a process that died, and has been freed";
    }
    return "";
}

void say(const QString& application, LockState state)
{
    std::printf("%s: %s\n", qUtf8Printable(application), describe(state));
    if (state == LockState::Held || state == LockState::Stuck)
        std::printf("Waited for it in vain for %d seconds.\n", kPatienceMs / 1000);
    std::fflush(stdout);
}

bool isAgreedTo()
{
    std::fputs("Free it? [y/N] ", stdout);
    std::fflush(stdout);
    std::string answer;
    std::getline(std::cin, answer);
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

} // namespace

bool unlock(const QString& application, bool isAgreed)
{
    const QString key = application + QLatin1String(kMASegmentSuffix);
    LockState state = pavo::SegmentGate::lookAtLock(key, kPatienceMs);
    say(application, state);
    if (state == LockState::Stuck && (isAgreed || isAgreedTo())) {
        state = pavo::SegmentGate::freeLock(key, kPatienceMs);
        say(application, state);
    }
    return state != LockState::Held && state != LockState::Stuck;
}
