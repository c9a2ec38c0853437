#include "platform/posix/PipeInstance.h"

#include "platform/posix/CancellableThread.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <utility>

namespace pavo::posix {
namespace {

DWORD accessOf(const PipeTraits& traits)
{
    return ((traits.direction & PIPE_ACCESS_INBOUND) != 0 ? GENERIC_READ : 0) |
           ((traits.direction & PIPE_ACCESS_OUTBOUND) != 0 ? GENERIC_WRITE : 0);
}

} // namespace

std::shared_ptr<PipeInstance> PipeInstance::create(const std::shared_ptr<PipeBroker>& broker,
                                                   DWORD pipeMode)
{
    std::shared_ptr<PipeInstance> instance(new PipeInstance(broker, pipeMode));
    if (!broker->add(*instance))
        return nullptr;
    broker->announceFreeInstance();
    return instance;
}

PipeInstance::PipeInstance(const std::shared_ptr<PipeBroker>& broker, DWORD pipeMode)
    : PipeEnd(accessOf(broker->traits()), pipeMode)
    , m_broker(broker)
    , m_arrival(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

PipeInstance::~PipeInstance()
{
    m_broker->remove(*this);
}

DWORD PipeInstance::channel(std::shared_ptr<Channel>& channel)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    switch (m_state) {
    case State::Listening:
        return ERROR_PIPE_LISTENING;
    case State::Disconnected:
        return ERROR_PIPE_NOT_CONNECTED;
    case State::Connected:
        break;
    }
    channel = m_channel;
    return ERROR_SUCCESS;
}

DWORD PipeInstance::waitForClient()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_state == State::Connected)
            return m_channel->farEndIsGone() ? ERROR_NO_DATA : ERROR_PIPE_CONNECTED;
        if (m_state == State::Disconnected) {
            eventfd_t arrivals = 0;
            eventfd_read(m_arrival.get(), &arrivals);
            m_state = State::Listening;
        }
    }
    m_broker->announceFreeInstance();
    return CancellableThread::current()->waitFor(m_arrival.get(), POLLIN);
}

DWORD PipeInstance::disconnect()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_state == State::Disconnected)
        return ERROR_PIPE_NOT_CONNECTED;
    if (m_channel)
        m_channel->hangUp();
    m_channel.reset();
    m_state = State::Disconnected;
    return ERROR_SUCCESS;
}

bool PipeInstance::isFree()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state == State::Listening;
}

void PipeInstance::giveClient(UniqueFd connection)
{
    const DWORD pipeMode = m_broker->traits().pipeMode;
    // From the answer on the client may expect the host to know of it: nobody looks at the state
    // between the two.
    const std::lock_guard<std::mutex> lock(m_mutex);
    // A client that has given up meanwhile takes no instance.
    if (!answer(connection, {ERROR_SUCCESS, pipeMode, 0}))
        return;
    m_channel =
        std::make_shared<Channel>(std::move(connection), (pipeMode & PIPE_TYPE_MESSAGE) != 0);
    m_state = State::Connected;
    eventfd_write(m_arrival.get(), 1);
}

} // namespace pavo::posix
