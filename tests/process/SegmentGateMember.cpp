#include "tests/process/SegmentGateMember.h"

#include "platform/SegmentGatePassage.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QUuid>

#include <algorithm>
#include <map>
#include <thread>

Member::Member(const QString& key, int number, bool hasGate)
    : m_key(key)
    , m_number(number)
    , m_hasGate(hasGate)
    , m_memory(std::make_unique<QSharedMemory>(key))
{
}

Member::~Member()
{
    detach();
}

bool Member::attach()
{
    if (m_hasGate)
        return pavo::SegmentGate(*m_memory).attach(kSegmentSize) == QSharedMemory::NoError;
    return m_memory->attach() || m_memory->create(kSegmentSize) || m_memory->attach();
}

void Member::detach()
{
    if (m_hasGate)
        pavo::SegmentGate(*m_memory).detach();
    m_memory = std::make_unique<QSharedMemory>(m_key);
}

bool Member::visit()
{
    if (!m_hasGate)
        return m_memory->lock() && visitLocked() && m_memory->unlock();
    pavo::SegmentGate gate(*m_memory);
    return gate.lock() && visitLocked() && m_memory->unlock();
}

bool Member::visitLocked()
{
    const int self = m_number + 1;
    const int before = board().inside.exchange(self);
    const int visits = board().visits[m_number];
    const int total = board().total;
    std::this_thread::yield();
    if (m_number < kFirstVictim)
        board().total = total + 1;
    board().visits[m_number] = visits + 1;
    const int after = board().inside.exchange(0);
    // A victim that was killed inside has left its number.
    return (before == 0 || before > kFirstVictim) && after == self;
}

bool Member::boardIsZero() const
{
    const auto* bytes = static_cast<const char*>(m_memory->constData());
    return std::all_of(bytes, bytes + kSegmentSize, [](char byte) { return byte == 0; });
}

UniqueKey::UniqueKey()
    : QString(QStringLiteral("segment-") + QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

UniqueKey::~UniqueKey()
{
    {
        const Observer last(*this);
    }
    const QString segment = QSharedMemory(*this).nativeKey();
    QFile::remove(pavo::segmentGateName(segment));
    QFile::remove(pavo::segmentLockName(segment));
}

namespace {

using Answer = std::string;

Answer asAnswer(bool isFine, const char* failure)
{
    return isFine ? "ok" : failure;
}

Answer attach(Member& member, const QString& /*argument*/)
{
    return asAnswer(member.attach(), "cannot attach");
}

Answer detach(Member& member, const QString& /*argument*/)
{
    member.detach();
    return "ok";
}

Answer visit(Member& member, const QString& count)
{
    bool isFine = true;
    for (int i = 0; i < count.toInt(); ++i)
        isFine = member.visit() && isFine;
    return asAnswer(isFine, "not alone");
}

Answer rejoin(Member& member, const QString& count)
{
    for (int i = 0; i < count.toInt(); ++i) {
        member.detach();
        if (!member.attach())
            return "cannot attach";
        if (!member.visit())
            return "not alone";
    }
    return "ok";
}

Answer roam(Member& member, const QString& /*argument*/)
{
    std::atomic<bool> isEnding{false};
    std::thread ending([&isEnding] {
        nextLineFromParent();
        isEnding = true;
    });
    int visits = 0;
    qint64 longest = 0;
    bool isFine = true;
    while (!isEnding) {
        QElapsedTimer timer;
        timer.start();
        isFine = member.visit() && isFine;
        longest = std::max(longest, timer.elapsed());
        ++visits;
    }
    ending.join();
    return isFine ? std::to_string(visits) + ' ' + std::to_string(longest) : "not alone";
}

Answer stop(Member& member, const QString& where)
{
    pavo::SegmentGate gate(member.memory());
    if (where != QStringLiteral("gate"))
        gate.lock();
    if (where == QStringLiteral("lock"))
        member.board().inside = kMostMembers;
    if (where == QStringLiteral("unlocked"))
        member.memory().unlock();
    sayToParent("ok");
    nextLineFromParent();
    return "was to be killed";
}

int runMember(const QStringList& arguments)
{
    using Do = Answer (*)(Member&, const QString&);
    static const std::map<QString, Do> kCommands{
        {QStringLiteral("attach"), attach}, {QStringLiteral("detach"), detach},
        {QStringLiteral("visit"), visit},   {QStringLiteral("rejoin"), rejoin},
        {QStringLiteral("roam"), roam},     {QStringLiteral("stop"), stop},
    };
    Member member(arguments[0], arguments[1].toInt(), arguments[2] == QStringLiteral("gate"));
    std::string line;
    while (!(line = nextLineFromParent()).empty()) {
        const QStringList words = QString::fromStdString(line).split(QLatin1Char(' '));
        sayToParent(kCommands.at(words[0])(member, words.value(1)));
    }
    return 0;
}
const Role kMemberRole("segment-member", runMember);

} // namespace

MemberProcess::MemberProcess(const QString& key, int number, bool hasGate)
    : m_process("segment-member", {key, QString::number(number),
                                   hasGate ? QStringLiteral("gate") : QStringLiteral("plain")})
{
}

AttachedProcess::AttachedProcess(const QString& key, int number, bool hasGate)
    : MemberProcess(key, number, hasGate)
{
    EXPECT_EQ(ask("attach"), "ok");
}

std::string MemberProcess::ask(const std::string& command)
{
    tell(command);
    return answer();
}
