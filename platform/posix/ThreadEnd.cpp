#include "platform/posix/ThreadEnd.h"

#include <pthread.h>

#include <memory>

namespace pavo {
namespace {

struct Ending
{
    std::promise<void> promise;
    std::shared_future<void> future = promise.get_future().share();
    bool secondRound = false;
};

bool keep(Ending* ending);

extern "C" void onThreadEnd(void* value)
{
    auto* const ending = static_cast<Ending*>(value);
    // The data of a thread are destroyed in any order, and those that are set meanwhile in a second
    // round: by then all others are gone.
    if (!ending->secondRound) {
        ending->secondRound = true;
        if (keep(ending))
            return;
    }
    ending->promise.set_value();
    delete ending;
}

/// A thread's data of type Ending, or null where the system has no room for any.
const pthread_key_t* endingKey()
{
    static pthread_key_t key;
    static const bool created = pthread_key_create(&key, onThreadEnd) == 0;
    return created ? &key : nullptr;
}

bool keep(Ending* ending)
{
    const pthread_key_t* const key = endingKey();
    return key && pthread_setspecific(*key, ending) == 0;
}

/// What this thread keeps already, or null.
Ending* kept()
{
    const pthread_key_t* const key = endingKey();
    return key ? static_cast<Ending*>(pthread_getspecific(*key)) : nullptr;
}

} // namespace

ThreadEnd::ThreadEnd()
{
    if (const Ending* const ending = kept()) {
        m_ended = ending->future;
        return;
    }
    auto ending = std::make_unique<Ending>();
    m_ended = ending->future;
    if (keep(ending.get()))
        static_cast<void>(ending.release());
    else
        ending->promise.set_value(); // Better not waited for than for ever.
}

} // namespace pavo
