#include "tools/support/StandardInput.h"

#include "tools/support/StandardInputRead.h"

#include <mutex>
#include <thread>

struct StandardInput::Link
{
    std::mutex mutex;
    StandardInput* input = nullptr;
};

StandardInput::StandardInput()
    : m_link(std::make_shared<Link>())
{
    m_link->input = this;
}

StandardInput::~StandardInput()
{
    const std::lock_guard lock(m_link->mutex);
    m_link->input = nullptr;
}

void StandardInput::start()
{
    std::thread([link = m_link] { run(link); }).detach();
}

void StandardInput::run(const std::shared_ptr<Link>& link)
{
    char buffer[4096];
    int count = 0;
    do {
        count = readStandardInput(buffer, sizeof buffer);
        // Bytes of their own each time: those that were handed over belong to the other thread.
        const QByteArray bytes(buffer, count);
        const std::lock_guard lock(link->mutex);
        if (!link->input)
            return;
        if (count == 0)
            Q_EMIT link->input->ended();
        else
            Q_EMIT link->input->received(bytes);
    } while (count > 0);
}
