// The shared segment and the lock over it.

#include "ipc/MultiAccount/MAManager.h"

#include "ipc/MultiAccount/MAMutex.h"
#include "ipc/MultiAccount/MAStoreLayout.h"
#include "pavo_base/Logger.h"
#include "pavo_base/TimeCorrector.h"

#include <QCoreApplication>

#include <log4cplus/loggingmacros.h>

#include <cstring>

namespace {

constexpr unsigned long long kSlowTicks = 200;
/// Room for either region.
constexpr std::size_t kScratchSize = kMAListRegion.size;
/// Of every access, reading or writing, whichever region.
constexpr const char* kUnusable = "read current account mem failed";

} // namespace

MAMutex::MAMutex(QSharedMemory* memory)
    : m_memory(memory)
{
    if (m_memory && m_memory->isAttached()) {
        m_startTick = TimeCorrector::tickCount();
        m_gate.emplace(*m_memory);
        m_gate->lock();
    }
}

MAMutex::~MAMutex()
{
    if (m_memory && m_memory->isAttached())
        m_memory->unlock();
    m_gate.reset();
    if (m_startTick == 0)
        return;
    const unsigned long long endTick = TimeCorrector::tickCount();
    if (endTick - m_startTick > kSlowTicks)
        LOG4CPLUS_WARN(Logger::logger(), "shared memory lock " << m_startTick << "," << endTick);
}

bool MAManager::createShareMemory()
{
    const QString application = QCoreApplication::applicationName();
    if (!registerWindowMessage(application + QLatin1String(kMAMessageSuffix)))
        return false;
    if (m_sharedMemory.isAttached())
        return true;
    m_sharedMemory.setKey(application + QLatin1String(kMASegmentSuffix));
    pavo::SegmentGate gate(m_sharedMemory);
    if (!gate.problem().isEmpty())
        LOG4CPLUS_WARN(Logger::logger(),
                       "shared memory gate failed, " << gate.problem().toStdString());
    const QSharedMemory::SharedMemoryError error = gate.attach(kMASegmentSize);
    if (error != QSharedMemory::NoError)
        LOG4CPLUS_ERROR(Logger::logger(),
                        " create share memory failed, " << static_cast<int>(error));
    // The workbench can do without the other accounts, but not without the message.
    return true;
}

void MAManager::detach()
{
    if (m_sharedMemory.isAttached())
        pavo::SegmentGate(m_sharedMemory).detach();
}

void MAManager::makeScratchBuffer()
{
    if (!m_scratchBuffer)
        m_scratchBuffer = std::make_unique<char[]>(kScratchSize);
}

bool MAManager::isStoreOpen() const
{
    return m_initialized && m_sharedMemory.isAttached();
}

bool MAManager::hasBytes(int size) const
{
    return m_sharedMemory.constData() && m_sharedMemory.size() >= size;
}

int MAManager::copyToScratch(const MARegion& region)
{
    const char* const text = static_cast<const char*>(m_sharedMemory.constData()) + region.offset;
    const std::size_t length = qstrnlen(text, static_cast<uint>(region.presentIn(m_sharedMemory)));
    std::memcpy(m_scratchBuffer.get(), text, length);
    // Nothing may run on into what an earlier, longer text has left.
    if (length < kScratchSize)
        m_scratchBuffer[length] = '\0';
    return static_cast<int>(length);
}

bool MAManager::readSelectedAccount(MASelectedAccount& out)
{
    if (!isStoreOpen())
        return false;
    if (!hasBytes(kMASelectedRegion.size)) {
        LOG4CPLUS_ERROR(Logger::logger(), kUnusable);
        return false;
    }
    const int length = copyToScratch(kMASelectedRegion);
    out.parseJSON(m_scratchBuffer.get(), length);
    return true;
}

bool MAManager::readAllAccount(std::list<MAAccountInfo>& out)
{
    if (!isStoreOpen())
        return false;
    // A segment without room for a list reads as one without accounts.
    if (!hasBytes(kMASelectedRegion.size)) {
        LOG4CPLUS_ERROR(Logger::logger(), kUnusable);
        return false;
    }
    const int length = copyToScratch(kMAListRegion);
    MAAccountInfo::parseJSON(m_scratchBuffer.get(), length, out);
    return true;
}

bool MAManager::writeSelectedAccount(const MASelectedAccount& in)
{
    if (!isStoreOpen())
        return false;
    if (!hasBytes(0)) {
        LOG4CPLUS_ERROR(Logger::logger(), kUnusable);
        return false;
    }
    // A text longer than its region runs on into the list: the selected account goes before it.
    kMASelectedRegion.put(in.toJSON(), m_sharedMemory);
    return true;
}

bool MAManager::writeAllAccount(const std::list<MAAccountInfo>& in)
{
    if (!isStoreOpen())
        return false;
    if (!hasBytes(kMAListRegion.size)) {
        LOG4CPLUS_ERROR(Logger::logger(), kUnusable);
        return false;
    }
    const std::string text = MAAccountInfo::toJSON(in);
    if (text.size() > static_cast<std::size_t>(kMAListRegion.presentIn(m_sharedMemory))) {
        LOG4CPLUS_ERROR(Logger::logger(), "account list too long, " << text.size());
        return false;
    }
    kMAListRegion.put(text, m_sharedMemory);
    return true;
}

void MAManager::modifyShareMemory(MASelectedAccount& selected, std::list<MAAccountInfo>& list,
                                  const std::function<void(MASelectedAccount&)>& editSelected,
                                  const std::function<void(std::list<MAAccountInfo>&)>& editList)
{
    if (!m_initialized)
        return;
    const MAMutex lock(&m_sharedMemory);
    if (!readSelectedAccount(selected))
        return;
    if (editSelected) {
        editSelected(selected);
        writeSelectedAccount(selected);
    }
    readAllAccount(list);
    if (editList) {
        editList(list);
        writeAllAccount(list);
    }
}
