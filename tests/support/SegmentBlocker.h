#pragma once

#include <QString>

#include <memory>

/// While it lives, no segment of the key can be attached or created.
class SegmentBlocker
{
public:
    explicit SegmentBlocker(const QString& key);
    ~SegmentBlocker();
    SegmentBlocker(const SegmentBlocker&) = delete;
    SegmentBlocker& operator=(const SegmentBlocker&) = delete;

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};
