#include "tests/support/SegmentBlocker.h"

#include "platform/UniqueHandle.h"

#include <QSharedMemory>

// Kernel objects of all kinds share one name space.
struct SegmentBlocker::Data
{
    pavo::UniqueHandle event;
};

SegmentBlocker::SegmentBlocker(const QString& key)
    : m_data(std::make_unique<Data>())
{
    const std::wstring name = QSharedMemory(key).nativeKey().toStdWString();
    m_data->event.reset(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
}

SegmentBlocker::~SegmentBlocker() = default;
