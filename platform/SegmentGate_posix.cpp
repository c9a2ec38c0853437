#include "platform/SegmentGatePassage.h"
#include "platform/posix/UniqueFd.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <optional>
#include <utility>

namespace pavo {
namespace {

using posix::UniqueFd;

// How long a process may take between making a lock and giving it its first value.
constexpr time_t kLongestStartSeconds = 1;
// Waiting for the gate knows no time-out: it is tried at this interval.
constexpr unsigned long kLookAgainMs = 10;

// Opened anew for each span: locks of one opening do not exclude each other, those of two do, also
// within a process. Empty, with the reason in errno, unless it is our own regular file.
UniqueFd openGate(const QByteArray& path)
{
    UniqueFd file(::open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    struct stat status
    {
    };
    if (!file || ::fstat(file.get(), &status) != 0)
        return {};
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) {
        errno = EPERM;
        return {};
    }
    return file;
}

// The number of the kernel object that belongs to a file, as Qt derives it; -1 without the file.
key_t keyOf(const QString& path)
{
    return ::ftok(QFile::encodeName(path), 'Q');
}

// The same, with a file made as Qt makes it if there is none.
key_t makeKey(const QString& path)
{
    const key_t key = keyOf(path);
    if (key != -1)
        return key;
    const UniqueFd file(
        ::open(QFile::encodeName(path), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0640));
    return keyOf(path);
}

union SemaphoreArgument {
    int val;
    semid_ds* buf;
};

// The semaphore that is a segment's lock. Made here if need be, so that it belongs to no
// QSharedMemory that would remove it while others use it.
class Lock
{
public:
    explicit Lock(const QString& segment)
        : m_id(open(makeKey(segmentLockName(segment))))
    {
    }

    // The one that there is; without one, the reason is in errno.
    static std::optional<Lock> existing(const QString& segment)
    {
        const key_t key = keyOf(segmentLockName(segment));
        const int id = key == -1 ? -1 : ::semget(key, 1, 0600);
        return id == -1 ? std::nullopt : std::optional<Lock>(Lock(id));
    }

    // With nobody of ours in the gate there is one to take, unless somebody without a gate has it.
    void putRight() const
    {
        const int value = ::semctl(m_id, 0, GETVAL);
        if (value > 1)
            add(1 - value, IPC_NOWAIT);
        else if (value == 0 && isUnused()) {
            if (take(kLongestStartSeconds))
                give();
            else
                setOne(); // Whoever made it died before it gave it a value.
        }
    }

    // False also if the lock was removed meanwhile.
    [[nodiscard]] bool take() const { return add(-1, SEM_UNDO); }
    [[nodiscard]] bool take(time_t seconds) const
    {
        const timespec timeout{seconds, 0};
        return add(-1, SEM_UNDO, &timeout);
    }
    [[nodiscard]] bool tryTake() const { return add(-1, SEM_UNDO | IPC_NOWAIT); }
    void give() const { add(1, SEM_UNDO); }
    void remove() const { ::semctl(m_id, 0, IPC_RMID); }

private:
    static int open(key_t key)
    {
        if (key == -1)
            return -1;
        const int id = ::semget(key, 1, 0600);
        if (id != -1)
            return id;
        const int newId = ::semget(key, 1, 0600 | IPC_CREAT | IPC_EXCL);
        if (newId != -1)
            Lock(newId).setOne();
        return newId;
    }

    explicit Lock(int id)
        : m_id(id)
    {
    }

    // Nobody has ever taken it or given it back.
    [[nodiscard]] bool isUnused() const
    {
        semid_ds status{};
        SemaphoreArgument argument{};
        argument.buf = &status;
        return ::semctl(m_id, 0, IPC_STAT, argument) == 0 && status.sem_otime == 0;
    }

    void setOne() const
    {
        SemaphoreArgument argument{};
        argument.val = 1;
        ::semctl(m_id, 0, SETVAL, argument);
    }

    bool add(int value, int flags, const timespec* timeout = nullptr) const
    {
        sembuf operation{};
        operation.sem_op = static_cast<short>(value);
        operation.sem_flg = static_cast<short>(flags);
        int result = 0;
        do
            result = ::semtimedop(m_id, &operation, 1, timeout);
        while (result != 0 && errno == EINTR);
        return result == 0;
    }

    const int m_id;
};

// Whether there is a segment that somebody is attached to. One that nobody is attached to goes.
bool isInUse(key_t key)
{
    const int id = key == -1 ? -1 : ::shmget(key, 0, 0);
    shmid_ds status{};
    if (id == -1 || ::shmctl(id, IPC_STAT, &status) != 0)
        return false;
    if (status.shm_nattch > 0)
        return true;
    ::shmctl(id, IPC_RMID, nullptr);
    return false;
}

} // namespace

// One span of a thread. Only the outermost one of a gate has the file.
class SegmentGate::Passage::Hold
{
public:
    Hold(QString gate, UniqueFd file)
        : m_gate(std::move(gate))
        , m_file(std::move(file))
    {
        s_innermost = this;
    }
    ~Hold()
    {
        // Not left to closing: a child that this process has forked may still have the file open.
        if (m_file)
            ::flock(m_file.get(), LOCK_UN);
        s_innermost = m_outer;
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    static bool isWithin(const QString& gate)
    {
        const Hold* hold = s_innermost;
        while (hold && hold->m_gate != gate)
            hold = hold->m_outer;
        return hold;
    }

private:
    // Plain pointers: static objects may enter a gate in their destructors.
    static thread_local const Hold* s_innermost;

    const QString m_gate;
    const UniqueFd m_file;
    const Hold* const m_outer = s_innermost;
};

thread_local const SegmentGate::Passage::Hold* SegmentGate::Passage::Hold::s_innermost = nullptr;

SegmentGate::Passage::Passage(const QSharedMemory& memory)
    : m_segment(memory.nativeKey())
{
    if (memory.key().isEmpty()) {
        m_problem = QStringLiteral("no key");
        return;
    }
    const QString gate = segmentGateName(m_segment);
    if (Hold::isWithin(gate)) {
        m_hold = std::make_unique<Hold>(gate, UniqueFd());
        return;
    }
    UniqueFd file = openGate(QFile::encodeName(gate));
    int result = -1;
    while (file && (result = ::flock(file.get(), LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (result != 0) {
        m_problem = systemProblem(gate);
        return;
    }
    m_hold = std::make_unique<Hold>(gate, std::move(file));
    if (memory.isAttached())
        Lock(m_segment).putRight();
}

SegmentGate::Passage::~Passage() = default;

void SegmentGate::Passage::prepare(int size)
{
    if (!m_hold)
        return;
    const Lock lock(m_segment);
    lock.putRight();
    if (!lock.take())
        return; // Attaching meets the same obstacle and says which.
    const key_t key = makeKey(m_segment);
    if (key != -1 && !isInUse(key))
        (void)::shmget(key, static_cast<size_t>(size), 0600 | IPC_CREAT | IPC_EXCL);
    lock.give();
}

void SegmentGate::Passage::cleanUp()
{
    if (!m_hold)
        return;
    // Whoever has the lock is about to attach: it stays.
    const Lock lock(m_segment);
    if (!lock.tryTake())
        return;
    if (isInUse(keyOf(m_segment)))
        lock.give();
    else
        lock.remove();
}

// The system takes the lock back from the dead: nobody has to get past a process that waits.

void SegmentGate::Passage::startWait() {}

void SegmentGate::Passage::endWait() {}

// Nothing is ever stuck or left: gate and lock come back from the dead by themselves.
SegmentGate::LockFinding SegmentGate::Passage::visitLock(const QString& segment, int patienceMs,
                                                         bool /*isToBeFreed*/)
{
    const QString lockName = segmentLockName(segment);
    // Where nobody is, no gate is made to look for somebody.
    if (!Lock::existing(segment)) {
        if (errno == ENOENT)
            return {LockState::Absent, {}};
        return {LockState::Unusable, systemProblem(lockName)};
    }
    const QString name = segmentGateName(segment);
    const UniqueFd gate = openGate(QFile::encodeName(name));
    if (!gate)
        return {LockState::Unusable, systemProblem(name)};
    const QDeadlineTimer deadline(patienceMs);
    while (::flock(gate.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return {LockState::Unusable, systemProblem(name)};
        if (deadline.hasExpired())
            return {LockState::Held, {}};
        QThread::msleep(kLookAgainMs);
    }
    const auto lock = Lock::existing(segment);
    if (!lock)
        return {LockState::Absent, {}};
    lock->putRight();
    if (!lock->take(patienceMs / 1000))
        return {LockState::Held, {}};
    lock->give();
    return {LockState::Free, {}};
}

} // namespace pavo
