#include "platform/posix/LastError.h"
#include "platform/posix/PipeInstance.h"
#include "platform/posix/PipePlace.h"

#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace pavo::posix {
namespace {

struct Brokers
{
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<PipeBroker>> byPlace;
};

// Never destroyed: pipes may be closed while the process exits.
Brokers& brokers()
{
    static auto* brokers = new Brokers;
    return *brokers;
}

DWORD brokerOf(PipePlace place, const PipeTraits& wanted, bool first,
               std::shared_ptr<PipeBroker>& broker)
{
    Brokers& known = brokers();
    const std::lock_guard<std::mutex> lock(known.mutex);
    for (auto each = known.byPlace.begin(); each != known.byPlace.end();)
        each = each->second.expired() ? known.byPlace.erase(each) : std::next(each);

    const std::string id = place.id();
    broker = known.byPlace[id].lock();
    if (!broker) {
        const DWORD error = PipeBroker::create(std::move(place), wanted, broker);
        if (error == ERROR_SUCCESS)
            known.byPlace[id] = broker;
        return error;
    }
    // All instances of a pipe are of one direction and one kind.
    const bool alike = broker->traits().direction == wanted.direction &&
                       ((broker->traits().pipeMode ^ wanted.pipeMode) & PIPE_TYPE_MESSAGE) == 0;
    return first || !alike ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

DWORD createPipe(LPCSTR name, DWORD openMode, const PipeTraits& traits, HANDLE& handle)
{
    const bool sound =
        (openMode & ~(PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE)) == 0 &&
        traits.direction != 0 &&
        (traits.pipeMode &
         ~(PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS)) == 0 &&
        (traits.pipeMode & (PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE)) != PIPE_READMODE_MESSAGE &&
        traits.maxInstances >= 1 && traits.maxInstances <= PIPE_UNLIMITED_INSTANCES;
    if (!sound)
        return ERROR_INVALID_PARAMETER;
    PipePlace place;
    DWORD error = PipePlace::find(name, place);
    std::shared_ptr<PipeBroker> broker;
    if (error == ERROR_SUCCESS)
        error = brokerOf(std::move(place), traits, (openMode & FILE_FLAG_FIRST_PIPE_INSTANCE) != 0,
                         broker);
    if (error != ERROR_SUCCESS)
        return error;
    auto instance = PipeInstance::create(broker, traits.pipeMode);
    if (!instance)
        return ERROR_PIPE_BUSY;
    handle = openHandle(std::move(instance));
    return ERROR_SUCCESS;
}

// Runs an operation of the host's end; on anything else, as on a client's end, there is none.
DWORD onInstance(HANDLE handle, DWORD (PipeInstance::*operation)())
{
    const auto end = endOfHandle(handle);
    if (!end)
        return ERROR_INVALID_HANDLE;
    const auto instance = std::dynamic_pointer_cast<PipeInstance>(end);
    return instance ? (instance.get()->*operation)() : ERROR_INVALID_FUNCTION;
}

} // namespace
} // namespace pavo::posix

using namespace pavo::posix;

// The kernel sizes the buffers.
HANDLE CreateNamedPipeA(LPCSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                        DWORD /*outBufferSize*/, DWORD /*inBufferSize*/, DWORD defaultTimeOut,
                        LPSECURITY_ATTRIBUTES /*security*/)
{
    HANDLE handle = INVALID_HANDLE_VALUE;
    const PipeTraits traits = {openMode & PIPE_ACCESS_DUPLEX, pipeMode, maxInstances,
                               defaultTimeOut};
    conclude(createPipe(name, openMode, traits, handle));
    return handle;
}

BOOL ConnectNamedPipe(HANDLE handle, LPOVERLAPPED overlapped)
{
    return conclude(overlapped ? ERROR_INVALID_PARAMETER
                               : onInstance(handle, &PipeInstance::waitForClient));
}

BOOL DisconnectNamedPipe(HANDLE handle)
{
    return conclude(onInstance(handle, &PipeInstance::disconnect));
}
