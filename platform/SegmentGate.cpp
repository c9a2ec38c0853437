#include "platform/SegmentGatePassage.h"

namespace pavo {
namespace {

// A QSharedMemory holds on to the lock that it has opened, and removes it under the others if it
// has made it, until it looks for another one: here in vain, since there is none without a key.
void letGoOfLock(QSharedMemory& memory)
{
    const QString key = memory.key();
    memory.setKey(QString());
    memory.attach();
    memory.setKey(key);
}

} // namespace

QString systemProblem(const QString& name)
{
    const QString reason = qt_error_string();
    return name + QStringLiteral(": ") + reason;
}

QString segmentGateName(const QString& segment)
{
    return segment + QStringLiteral("_gate");
}

QString segmentWaitName(const QString& segment)
{
    return segment + QStringLiteral("_wait");
}

QString segmentLockName(const QString& segment)
{
    // As Qt names the lock of a segment.
    const QString prefix = QStringLiteral("qipc_sharedmemory_");
    return QString(segment).replace(segment.lastIndexOf(prefix), prefix.size(),
                                    QStringLiteral("qipc_systemsem_"));
}

SegmentGate::SegmentGate(QSharedMemory& memory)
    : m_memory(memory)
    , m_passage(std::make_unique<Passage>(memory))
{
}

SegmentGate::~SegmentGate() = default;

QString SegmentGate::problem() const
{
    return m_passage->problem();
}

QSharedMemory::SharedMemoryError SegmentGate::attach(int size)
{
    if (m_memory.isAttached())
        return QSharedMemory::NoError;
    m_passage->prepare(size);
    const Passage::Wait wait(*m_passage);
    // Somebody without a gate may be about the same. What is there and cannot be attached is not
    // created either: Qt would make its lock anew under those who use it.
    if (m_memory.attach() ||
        (m_memory.error() == QSharedMemory::NotFound && m_memory.create(size)) ||
        (m_memory.error() == QSharedMemory::AlreadyExists && m_memory.attach()))
        return QSharedMemory::NoError;
    const auto error = m_memory.error();
    letGoOfLock(m_memory);
    m_passage->cleanUp();
    return error;
}

void SegmentGate::detach()
{
    {
        const Passage::Wait wait(*m_passage);
        m_memory.detach();
    }
    letGoOfLock(m_memory);
    m_passage->cleanUp();
}

bool SegmentGate::lock()
{
    const Passage::Wait wait(*m_passage);
    return m_memory.lock();
}

SegmentGate::LockFinding SegmentGate::lookAtLock(const QString& key, int patienceMs)
{
    return Passage::visitLock(QSharedMemory(key).nativeKey(), patienceMs, false);
}

SegmentGate::LockFinding SegmentGate::freeLock(const QString& key, int patienceMs)
{
    return Passage::visitLock(QSharedMemory(key).nativeKey(), patienceMs, true);
}

} // namespace pavo
