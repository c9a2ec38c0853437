#include "platform/posix/PipeBroker.h"

#include "platform/posix/LastError.h"
#include "platform/posix/PipeInstance.h"

#include <QDir>
#include <QFile>
#include <QString>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace pavo::posix {
namespace {

// Held while a pipe's socket appears or disappears, by whichever process of the user does it: of
// two that want the same name, exactly one gets it.
class NamesLock
{
public:
    NamesLock()
    {
        m_error = openRuntimeFolder(m_folder);
        while (m_error == ERROR_SUCCESS && flock(m_folder.get(), LOCK_EX) != 0)
            if (errno != EINTR)
                m_error = errorFromErrno(errno);
    }

    DWORD error() const { return m_error; }
    const UniqueFd& folder() const { return m_folder; }

private:
    UniqueFd m_folder;
    DWORD m_error;
};

// Clears the way for a new socket: removes the one that a dead host has left, and nothing else.
DWORD removeDeadSocket(const PipePlace& place)
{
    const int folder = place.folder().get();
    struct stat status = {};
    if (fstatat(folder, place.file().c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? ERROR_SUCCESS : errorFromErrno(errno);
    if (!S_ISSOCK(status.st_mode))
        return ERROR_ACCESS_DENIED;
    const UniqueFd probe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!probe)
        return errorFromErrno(errno);
    const sockaddr_un address = place.address();
    const bool dead =
        connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    if (!dead)
        return ERROR_ACCESS_DENIED;
    return unlinkat(folder, place.file().c_str(), 0) == 0 ? ERROR_SUCCESS : errorFromErrno(errno);
}

// A host that was killed leaves its sockets, and whoever looks for a window has to pass them by.
void removeDeadSockets(const UniqueFd& folder)
{
    const QString path = QStringLiteral("/proc/self/fd/%1/").arg(folder.get());
    for (const QString& file : QDir(path).entryList(QDir::System)) {
        PipePlace place;
        if (PipePlace::find(QFile::encodeName(path + file), place) == ERROR_SUCCESS)
            removeDeadSocket(place);
    }
}

} // namespace

DWORD PipeBroker::create(PipePlace place, const PipeTraits& traits,
                         std::shared_ptr<PipeBroker>& broker)
{
    const std::shared_ptr<PipeBroker> made(new PipeBroker(std::move(place), traits));
    DWORD error = made->listen();
    if (error == ERROR_SUCCESS)
        error = made->start();
    if (error == ERROR_SUCCESS)
        broker = made;
    return error;
}

PipeBroker::PipeBroker(PipePlace place, const PipeTraits& traits)
    : m_place(std::move(place))
    , m_traits(traits)
    , m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_spare(fcntl(m_wake.get(), F_DUPFD_CLOEXEC, 0))
{
}

PipeBroker::~PipeBroker()
{
    if (m_thread.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
        }
        eventfd_write(m_wake.get(), 1);
        m_thread.join();
    }
    if (m_listener) {
        // Before the listener closes: a socket that nobody listens on may be replaced by then.
        const NamesLock lock;
        unlinkat(m_place.folder().get(), m_place.file().c_str(), 0);
    }
}

DWORD PipeBroker::listen()
{
    if (!m_wake)
        return ERROR_TOO_MANY_OPEN_FILES;
    const NamesLock lock;
    if (lock.error() != ERROR_SUCCESS)
        return lock.error();
    // Once a process is often enough for nothing to pile up.
    static std::once_flag cleaned;
    std::call_once(cleaned, removeDeadSockets, lock.folder());
    const DWORD error = removeDeadSocket(m_place);
    if (error != ERROR_SUCCESS)
        return error;
    UniqueFd listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener)
        return errorFromErrno(errno);
    const sockaddr_un address = m_place.address();
    if (bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return errno == EADDRINUSE ? ERROR_ACCESS_DENIED : errorFromErrno(errno);
    m_listener = std::move(listener);
    // Nobody can connect before listen().
    const bool open = fchmodat(m_place.folder().get(), m_place.file().c_str(), 0600, 0) == 0 &&
                      ::listen(m_listener.get(), SOMAXCONN) == 0;
    return open ? ERROR_SUCCESS : errorFromErrno(errno);
}

DWORD PipeBroker::start()
{
    // The process handles its signals on threads of its own.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    DWORD error = ERROR_SUCCESS;
    try {
        m_thread = std::thread(&PipeBroker::run, this);
    } catch (const std::system_error&) {
        error = ERROR_NOT_ENOUGH_MEMORY;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return error;
}

bool PipeBroker::add(PipeInstance& instance)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool unlimited = m_traits.maxInstances == PIPE_UNLIMITED_INSTANCES;
    if (!unlimited && m_instances.size() >= m_traits.maxInstances)
        return false;
    m_instances.push_back(&instance);
    return true;
}

void PipeBroker::remove(PipeInstance& instance)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_instances.erase(std::remove(m_instances.begin(), m_instances.end(), &instance),
                      m_instances.end());
}

void PipeBroker::announceFreeInstance()
{
    eventfd_write(m_wake.get(), 1);
}

void PipeBroker::run()
{
    for (;;) {
        std::vector<pollfd> watched = {{m_wake.get(), POLLIN, 0}, {m_listener.get(), POLLIN, 0}};
        for (const Client& client : m_clients)
            watched.push_back({client.connection.get(), POLLIN, 0});
        if (poll(watched.data(), watched.size(), -1) < 0)
            continue;

        eventfd_t wakes = 0;
        eventfd_read(m_wake.get(), &wakes);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_ending)
                return;
        }
        auto at = watched.cbegin() + 2;
        for (Client& client : m_clients)
            if ((at++)->revents != 0)
                hear(client);
        tellWaitingClients();
        if (watched[1].revents != 0)
            acceptClients();
        dropEndedClients();
    }
}

void PipeBroker::acceptClients()
{
    for (;;) {
        Client client;
        client.connection =
            UniqueFd(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (client.connection) {
            if (peerIsThisUser(client.connection.get())) {
                hear(client);
                m_clients.push_back(std::move(client));
            } else {
                answer(client.connection, {ERROR_ACCESS_DENIED, 0, 0});
            }
            continue;
        }
        if (errno == EINTR || errno == ECONNABORTED)
            continue;
        if (errno != EMFILE && errno != ENFILE)
            return;
        // Left in the queue, the client would keep the listener readable and this thread busy.
        m_spare = UniqueFd();
        UniqueFd turnedAway(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!turnedAway) {
            // Without a descriptor, an empty queue is not told apart from a waiting client.
            m_spare = UniqueFd(fcntl(m_wake.get(), F_DUPFD_CLOEXEC, 0));
            return;
        }
        answer(turnedAway, {ERROR_PIPE_BUSY, 0, 0});
        shutdown(turnedAway.get(), SHUT_RDWR);
        m_spare = std::move(turnedAway);
    }
}

void PipeBroker::hear(Client& client)
{
    Request request = {};
    const ssize_t size = recv(client.connection.get(), &request, sizeof request, MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    // Who waits has nothing more to say than goodbye.
    const bool understood = size == ssize_t{sizeof request} && !client.waits;
    if (understood && request.wish == Wish::Open)
        open(client, request.access);
    else if (understood && request.wish == Wish::WaitForInstance)
        waitForInstance(client);
    if (!client.waits)
        client.connection = UniqueFd();
}

void PipeBroker::open(Client& client, DWORD access)
{
    const bool allowed =
        ((access & GENERIC_READ) == 0 || (m_traits.direction & PIPE_ACCESS_OUTBOUND) != 0) &&
        ((access & GENERIC_WRITE) == 0 || (m_traits.direction & PIPE_ACCESS_INBOUND) != 0);
    if (!allowed) {
        answer(client.connection, {ERROR_ACCESS_DENIED, 0, 0});
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto instance = std::find_if(m_instances.begin(), m_instances.end(),
                                       [](PipeInstance* each) { return each->isFree(); });
    if (instance == m_instances.end())
        answer(client.connection, {ERROR_PIPE_BUSY, 0, 0});
    else
        (*instance)->giveClient(std::move(client.connection));
}

void PipeBroker::waitForInstance(Client& client)
{
    const bool busy = !anyInstanceIsFree();
    client.waits = answer(client.connection,
                          {busy ? ERROR_PIPE_BUSY : ERROR_SUCCESS, 0, m_traits.defaultWait}) &&
                   busy;
}

// All of them, as Windows does: whoever comes too late for the instance waits again.
void PipeBroker::tellWaitingClients()
{
    if (!anyInstanceIsFree())
        return;
    for (Client& client : m_clients) {
        if (!client.waits)
            continue;
        answer(client.connection, {ERROR_SUCCESS, 0, 0});
        client.connection = UniqueFd();
    }
}

void PipeBroker::dropEndedClients()
{
    m_clients.erase(std::remove_if(m_clients.begin(), m_clients.end(),
                                   [](const Client& client) { return !client.connection; }),
                    m_clients.end());
}

bool PipeBroker::anyInstanceIsFree()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_instances.begin(), m_instances.end(),
                       [](PipeInstance* each) { return each->isFree(); });
}

} // namespace pavo::posix
