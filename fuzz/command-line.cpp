// The command line, through start-up: its pipe names are opened, though nobody has made the pipes.
//
// An input is a flag byte, 1 for logging and 2 for UTF-16 units in place of UTF-8, and the line.

#include "fuzz/support/Input.h"
#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/KTChannelManager.h"

#include <QCoreApplication>

namespace {

QString lineOf(bool wide, const std::string& bytes)
{
    if (!wide)
        return QString::fromStdString(bytes);
    QString line;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        line += QChar(static_cast<uchar>(bytes[i]), static_cast<uchar>(bytes[i + 1]));
    return line;
}

/// Whether the line names both pipes.
bool namesBoth(const std::u16string& line)
{
    const std::u16string key = u"pipe?param=";
    const std::size_t at = line.find(key);
    const std::size_t separator = line.find(u'&');
    if (at == std::u16string::npos || separator == std::u16string::npos ||
        separator + 1 == line.size())
        return false;
    const std::size_t name = at + key.size();
    // In front of the key, the separator ends nothing.
    return separator < name ? name < line.size() : name < separator;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int flags = input.byte();
    setLogging((flags & 1) != 0);
    const QString line = lineOf((flags & 2) != 0, input.rest());

    KTChannelManager& channel = *KTChannelManager::sharedInstance();
    const bool started = channel.startUp(
        line, [](int, const std::string&, const QString&) {}, nullptr);
    require(started == namesBoth(line.toStdU16String()), "two names start the channel");
    require(channel.isSupported() == started, "it says whether it is started");
    channel.unreadMsgChanged(1);

    require(!channel.startUp(QString(), nullptr, nullptr), "no names close it");
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}
