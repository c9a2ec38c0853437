#include "bench/accounts/RawStore.h"

#include "pavo_base/JSONUtils.h"

#include <QCoreApplication>

RawStore::RawStore(bool gated)
    : m_memory(QCoreApplication::applicationName() + QLatin1String(kMASegmentSuffix))
    , m_gated(gated)
{
    pavo::SegmentGate(m_memory).attach(kMASegmentSize);
}

RawStore::~RawStore()
{
    pavo::SegmentGate(m_memory).detach();
}

void RawStore::lock()
{
    if (!m_gated) {
        m_memory.lock();
        return;
    }
    m_gate.emplace(m_memory);
    m_gate->lock();
}

void RawStore::unlock()
{
    m_memory.unlock();
    m_gate.reset();
}

QByteArray RawStore::text(const MARegion& region) const
{
    const char* const begin = static_cast<const char*>(m_memory.constData()) + region.offset;
    return {begin, static_cast<int>(qstrnlen(begin, static_cast<uint>(region.size)))};
}

Json::Value RawStore::read(const MARegion& region) const
{
    const QByteArray copy = text(region);
    Json::Value value;
    JSONUtils::parseJSON(copy.constData(), copy.size(), value);
    return value;
}

void RawStore::write(const MARegion& region, const Json::Value& value)
{
    write(region, JSONUtils::stringFromJSON(value));
}
