#include "platform/ProcessExit.h"

#include "platform/ProcessExitHook.h"

#include <QCoreApplication>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace pavo {
namespace {

struct ClosingList
{
    std::mutex mutex;
    std::vector<void (*)()> routines;
};

// Never destroyed, so that it is there whenever the process exits.
ClosingList& closingList()
{
    static auto* list = new ClosingList;
    return *list;
}

// Runs at every exit that is hooked; the first empties the list.
void closeAll()
{
    std::vector<void (*)()> routines;
    {
        const std::lock_guard<std::mutex> lock(closingList().mutex);
        routines.swap(closingList().routines);
    }
    while (!routines.empty()) {
        routines.back()();
        routines.pop_back();
    }
}

} // namespace

void closeAtProcessExit(void (*close)())
{
    {
        const std::lock_guard<std::mutex> lock(closingList().mutex);
        auto& routines = closingList().routines;
        routines.erase(std::remove(routines.begin(), routines.end(), close), routines.end());
        routines.push_back(close);
    }
    // Hooked anew each time: Qt forgets its routines with each application, and the handler of the
    // last registration is the one that runs before anything registered with it is destroyed.
    qAddPostRoutine(closeAll);
    hookProcessExit(closeAll);
}

} // namespace pavo
