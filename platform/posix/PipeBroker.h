#pragma once

#include "platform/Win32.h"
#include "platform/posix/Hearing.h"
#include "platform/posix/PipePlace.h"
#include "platform/posix/UniqueFd.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace pavo::posix {

class PipeInstance;

/// What all instances of a pipe have in common.
struct PipeTraits
{
    DWORD direction;
    DWORD pipeMode;
    DWORD maxInstances;
    DWORD defaultWait;
};

/// Hears every client of one pipe name, on a thread of its own: so a client that comes before the
/// host has called ConnectNamedPipe gets its instance, and one too many learns that the pipe is
/// busy. Lives as long as any instance of the name.
class PipeBroker
{
public:
    /// Fails with ERROR_ACCESS_DENIED if a living process has the name; a dead one's socket gives
    /// way.
    static DWORD create(PipePlace place, const PipeTraits& traits,
                        std::shared_ptr<PipeBroker>& broker);
    ~PipeBroker();
    PipeBroker(const PipeBroker&) = delete;
    PipeBroker& operator=(const PipeBroker&) = delete;

    /// Whether there was room for one more.
    bool add(PipeInstance& instance);
    void remove(PipeInstance& instance);
    /// An instance has become free: whoever waits for one is told.
    void announceFreeInstance();

    const PipeTraits& traits() const { return m_traits; }

private:
    struct Client
    {
        UniqueFd connection;
        bool waits = false;
    };

    PipeBroker(PipePlace place, const PipeTraits& traits);
    DWORD listen();
    DWORD start();

    void run();
    void acceptClients();
    /// These end the client by taking its connection, unless it has to be heard again.
    void hear(Client& client);
    void open(Client& client, DWORD access);
    void waitForInstance(Client& client);
    void tellWaitingClients();
    void dropEndedClients();
    bool anyInstanceIsFree();

    const PipePlace m_place;
    const PipeTraits m_traits;
    UniqueFd m_listener;
    UniqueFd m_wake;
    /// Held in reserve, to turn clients away with when the process has no descriptor left.
    UniqueFd m_spare;
    std::vector<Client> m_clients;

    std::mutex m_mutex;
    std::vector<PipeInstance*> m_instances;
    bool m_ending = false;

    std::thread m_thread;
};

} // namespace pavo::posix
