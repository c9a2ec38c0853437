#pragma once

#include "tests/support/RoleProcess.h"

#include <QSharedMemory>
#include <QString>

#include <atomic>
#include <memory>

// Processes that share a segment, each a member with a number of its own.

constexpr int kSegmentSize = 103434;
// Members from here on may be killed while they are inside.
constexpr int kFirstVictim = 8;
constexpr int kMostMembers = 16;

/// What stands in the segment: where reads and writes of two members overlap, it shows.
struct Board
{
    std::atomic<int> inside; ///< the member that is changing the board, plus one
    std::atomic<int> total;  ///< visits of all members below kFirstVictim
    std::atomic<int> visits[kMostMembers];
};

/// A key that no other test, in this process or another, uses. What the system keeps of its segment
/// goes with it: it has to outlive all members.
class UniqueKey : public QString
{
public:
    UniqueKey();
    ~UniqueKey();
    UniqueKey(const UniqueKey&) = delete;
    UniqueKey& operator=(const UniqueKey&) = delete;
};

/// How often the lock of `key` could be taken right now; -1 when there is no lock.
int lockValue(const QString& key);

/// Puts something else where the lock of `key` would be, which must not be there, as long as what
/// it returns lives.
std::shared_ptr<void> blockLock(const QString& key);

/// How many other processes have come to the gate of `key`, and are in it or wait for it. On
/// Windows also those count that have left it and live, and this one has to have been there.
int othersAtGate(const QString& key);

/// Whether a thread, of whatever process, waits in the gate of `key` for the lock.
bool isLockAwaited(const QString& key);

/// One member, in whatever process.
class Member
{
public:
    /// A member with a gate passes it for whatever it does, one without uses Qt's lock alone.
    Member(const QString& key, int number, bool hasGate);
    ~Member();
    Member(const Member&) = delete;
    Member& operator=(const Member&) = delete;

    bool attach();
    void detach();
    /// Changes the board under the lock; false when somebody else was there, too.
    bool visit();

    QSharedMemory& memory() { return *m_memory; }
    [[nodiscard]] const Board& board() const
    {
        return *static_cast<const Board*>(m_memory->constData());
    }
    Board& board() { return *static_cast<Board*>(m_memory->data()); }
    [[nodiscard]] bool boardIsZero() const;

private:
    bool visitLocked();

    const QString m_key;
    const int m_number;
    const bool m_hasGate;
    std::unique_ptr<QSharedMemory> m_memory;
};

/// A member that is attached as long as a test looks at the board.
class Observer : public Member
{
public:
    explicit Observer(const QString& key)
        : Member(key, kMostMembers - 1, true)
    {
        attach();
    }
};

/// A member in a process of its own. It does one command after the other:
///   attach, detach                 answer ok
///   visit COUNT                    answers ok
///   rejoin COUNT                   comes and goes COUNT times, visiting in between; answers ok
///   roam                           visits until the next command, which it ends with; answers
///                                  with the number of visits and the longest one in milliseconds
///   stop gate | lock | unlocked    stops in the gate, before, within or after the lock;
///                                  answers ok and does nothing more
/// Anything that goes wrong is the answer instead.
class MemberProcess
{
public:
    MemberProcess(const QString& key, int number, bool hasGate = true);

    void tell(const std::string& command) { m_process.say(command); }
    std::string answer() { return m_process.nextLine(); }
    std::string ask(const std::string& command);
    void kill() { m_process.kill(); }

private:
    RoleProcess m_process;
};

/// A member in a process of its own that is attached.
class AttachedProcess : public MemberProcess
{
public:
    AttachedProcess(const QString& key, int number, bool hasGate = true);
};
