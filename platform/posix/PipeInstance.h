#pragma once

#include "platform/posix/PipeBroker.h"
#include "platform/posix/PipeEnd.h"

namespace pavo::posix {

/// One instance: the host's end of a pipe.
class PipeInstance : public PipeEnd
{
public:
    /// Null where the pipe has all its instances already.
    static std::shared_ptr<PipeInstance> create(const std::shared_ptr<PipeBroker>& broker,
                                                DWORD pipeMode);
    ~PipeInstance() override;
    PipeInstance(const PipeInstance&) = delete;
    PipeInstance& operator=(const PipeInstance&) = delete;

    DWORD channel(std::shared_ptr<Channel>& channel) override;
    DWORD waitForClient();
    DWORD disconnect();

    // For the broker.
    bool isFree();
    /// Answers the client, too.
    void giveClient(UniqueFd connection);

private:
    enum class State {
        Listening,
        /// Also when the client has gone: only the host frees its instance.
        Connected,
        Disconnected,
    };

    PipeInstance(const std::shared_ptr<PipeBroker>& broker, DWORD pipeMode);

    const std::shared_ptr<PipeBroker> m_broker;
    /// Readable once a client has come.
    const UniqueFd m_arrival;

    std::mutex m_mutex;
    State m_state = State::Listening;
    std::shared_ptr<Channel> m_channel;
};

} // namespace pavo::posix
