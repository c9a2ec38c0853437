#include "tests/soak/HostLink.h"

#include "pavo_base/JSONUtils.h"
#include "tests/soak/InboundTraffic.h"

#include <chrono>

namespace {

constexpr int kMessagesAtOnce = 3;
/// Between them the host has nothing to say.
constexpr std::chrono::milliseconds kPause(40);
/// A machine that is too slow for more gets less to do.
constexpr int kMostUnanswered = 2;
constexpr std::chrono::milliseconds kDeadline(kDeadlineMs);

} // namespace

HostLink::HostLink(unsigned seed, bool isWorking)
    : m_random(seed)
    , m_working(isWorking)
{
}

HostLink::~HostLink()
{
    const std::lock_guard lock(m_mutex);
    m_closing = true;
    m_changed.notify_all();
}

QString HostLink::argument() const
{
    return QStringLiteral("pipe?param=%1&%2")
        .arg(m_toWorkbench.fullName(), m_fromWorkbench.fullName());
}

void HostLink::work()
{
    const std::lock_guard lock(m_mutex);
    m_working = true;
    m_changed.notify_all();
}

bool HostLink::rest()
{
    std::unique_lock lock(m_mutex);
    m_working = false;
    return m_changed.wait_for(lock, kDeadline, [this] { return !m_writing; });
}

void HostLink::sendGarbage()
{
    const std::lock_guard lock(m_mutex);
    m_garbage = true;
    m_changed.notify_all();
}

std::string HostLink::sent()
{
    const std::lock_guard lock(m_mutex);
    return std::to_string(m_number) + ' ' + std::to_string(m_callbacks);
}

std::string HostLink::await(long long count)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, kDeadline, [&] { return m_count >= count || !m_problem.empty(); });
    if (m_problem.empty() && m_count != count)
        return std::to_string(m_count) + " messages came instead of " + std::to_string(count);
    return m_problem;
}

std::map<std::string, long long> HostLink::received()
{
    const std::lock_guard lock(m_mutex);
    return m_received;
}

void HostLink::write()
{
    bool isOpen = m_toWorkbench.awaitClient();
    for (auto message = InboundTraffic::begin(); isOpen && message != InboundTraffic::end();
         ++message) {
        isOpen = m_toWorkbench.write(frame(message->text));
        const std::lock_guard lock(m_mutex);
        m_callbacks += message->callbacks;
    }
    std::unique_lock lock(m_mutex);
    while (isOpen && !m_closing) {
        if (hasToWrite())
            isOpen = writeNext(lock);
        m_writing = false;
        m_changed.notify_all();
        m_changed.wait_for(lock, kPause, [this] { return m_closing; });
        m_changed.wait(lock, [this] { return m_closing || hasToWrite(); });
        m_writing = true;
    }
    m_writing = false;
    m_changed.notify_all();
}

bool HostLink::hasToWrite() const
{
    return m_garbage || (m_working && m_number - m_answered < kMostUnanswered);
}

/// The lock is not held while writing, which may take as long as the workbench likes.
bool HostLink::writeNext(std::unique_lock<std::mutex>& lock)
{
    QByteArray bytes;
    int callbacks = 0;
    const auto add = [&](const InboundTraffic::Message& message) {
        bytes += frame(message.text);
        callbacks += message.callbacks;
    };
    for (int i = 1; i < kMessagesAtOnce; ++i)
        add(InboundTraffic::any(m_random));
    // Last, so that whoever has seen it has seen the others.
    add(InboundTraffic::numbered(m_number + 1));
    if (m_garbage)
        bytes = InboundTraffic::garbage();
    m_garbage = false;
    lock.unlock();
    const bool isWritten = m_toWorkbench.write(bytes);
    lock.lock();
    ++m_number;
    m_callbacks += callbacks;
    return isWritten;
}

void HostLink::read()
{
    QByteArray message;
    bool isOpen = m_fromWorkbench.awaitClient();
    while (isOpen && !m_reader.isStopping()) {
        isOpen = m_fromWorkbench.read(message);
        if (isOpen)
            take(message);
    }
}

void HostLink::take(const QByteArray& bytes)
{
    constexpr int kLengthSize = 4;
    const QByteArray text = bytes.mid(kLengthSize);
    // A text with wide characters announces all of its bytes and comes without its end.
    const bool isCut = bytes.left(kLengthSize) != frame(text).left(kLengthSize);
    Json::Value message;
    JSONUtils::parseJSON(text.constData(), text.size(), message);
    const std::string name = JSONUtils::optString("name", message);
    const Json::Value& arguments = JSONUtils::optObject("arguments", message);
    const bool isWhole =
        JSONUtils::optString("source", message) == "lx" && JSONUtils::isJSONArray(arguments);
    const bool isAnswer = name == "OpenUrl" && JSONUtils::optBool(1, arguments);
    const std::lock_guard lock(m_mutex);
    ++m_count;
    m_answered += isAnswer ? 1 : 0;
    if (isCut)
        ++m_received["cut"];
    else if (isWhole)
        ++m_received[name];
    else
        m_problem = "came broken: " + text.toStdString();
    m_changed.notify_all();
}
