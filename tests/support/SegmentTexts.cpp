#include "tests/support/SegmentTexts.h"

#include "platform/SegmentGate.h"

#include <QCoreApplication>
#include <QSharedMemory>

namespace {

// As every version of the library has them.
constexpr int kSelectedSize = 1024;
constexpr int kAccountsSize = 102400;
constexpr int kSize = 103434;

} // namespace

std::optional<SegmentTexts> readSegmentTexts()
{
    QSharedMemory memory(QCoreApplication::applicationName() + QStringLiteral("_MEM"));
    pavo::SegmentGate gate(memory);
    if (gate.attach(kSize) != QSharedMemory::NoError)
        return {};
    SegmentTexts texts;
    if (memory.size() >= kSize && gate.lock()) {
        const auto* const bytes = static_cast<const char*>(memory.constData());
        texts.selected.assign(bytes, kSelectedSize);
        texts.accounts.assign(bytes + kSelectedSize, kAccountsSize);
        memory.unlock();
    }
    gate.detach();
    return texts;
}
