#pragma once

#include "ipc/MultiAccount/MAStoreLayout.h"
#include "platform/SegmentGate.h"

#include <QByteArray>
#include <QSharedMemory>

#include <json/value.h>

#include <optional>

/// The segment as one uses it by hand: attach, lock, and the texts in it.
class RawStore
{
public:
    /// Of the installation that the application is named after.
    explicit RawStore(bool gated = true);
    ~RawStore();

    void lock();
    void unlock();

    // With the lock.
    QByteArray text(const MARegion& region) const;
    Json::Value read(const MARegion& region) const;
    void write(const MARegion& region, const Json::Value& value);
    void write(const MARegion& region, const std::string& text) { region.put(text, m_memory); }

private:
    QSharedMemory m_memory;
    const bool m_gated;
    std::optional<pavo::SegmentGate> m_gate;
};
