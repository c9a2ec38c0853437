#include "tools/pavo-accounts/Store.h"

#include "ipc/MultiAccount/MACodes.h"
#include "ipc/MultiAccount/MAStoreLayout.h"
#include "ipc/MultiAccount/MAWindow.h"
#include "platform/SegmentGate.h"
#include "platform/Win32.h"

#include <algorithm>
#include <iterator>

/// Attached, in the gate and with the lock, unless there is a problem.
class Store::Visit
{
public:
    explicit Visit(const Store& store)
        : m_memory(store.m_application + QLatin1String(kMASegmentSuffix))
        , m_gate(m_memory)
    {
        const auto error = m_gate.attach(kMASegmentSize);
        if (error != QSharedMemory::NoError)
            m_problem = QStringLiteral("the segment of %1 cannot be attached, error %2 %3")
                            .arg(store.m_application)
                            .arg(static_cast<int>(error))
                            .arg(m_gate.problem())
                            .trimmed();
        else if (!m_gate.lock())
            m_problem = m_memory.errorString();
    }
    ~Visit()
    {
        if (isOpen())
            m_memory.unlock();
        if (m_memory.isAttached())
            m_gate.detach();
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    [[nodiscard]] bool isOpen() const { return m_problem.isEmpty(); }
    [[nodiscard]] const QString& problem() const { return m_problem; }

    [[nodiscard]] Content read() const
    {
        Content content;
        const std::string selected = copyOf(kMASelectedRegion);
        content.selected.parseJSON(selected.data(), static_cast<int>(selected.size()));
        const std::string list = copyOf(kMAListRegion);
        MAAccountInfo::parseJSON(list.data(), static_cast<int>(list.size()), content.accounts);
        return content;
    }

    /// False, with nothing changed, when there is no room for the list's text.
    bool writeAccounts(const std::list<MAAccountInfo>& accounts)
    {
        const std::string text = MAAccountInfo::toJSON(accounts);
        if (text.size() > static_cast<std::size_t>(kMAListRegion.presentIn(m_memory)))
            return false;
        kMAListRegion.put(text, m_memory);
        return true;
    }

private:
    /// A copy, since somebody who does not mind the lock may write meanwhile.
    [[nodiscard]] std::string copyOf(const MARegion& region) const
    {
        const auto present = static_cast<std::size_t>(region.presentIn(m_memory));
        if (present == 0)
            return {};
        return {static_cast<const char*>(m_memory.constData()) + region.offset, present};
    }

    QSharedMemory m_memory;
    pavo::SegmentGate m_gate;
    QString m_problem;
};

Store::Store(QString application)
    : m_application(std::move(application))
{
}

bool Store::look(Content& content, QString& problem) const
{
    const Visit visit(*this);
    problem = visit.problem();
    if (visit.isOpen())
        content = visit.read();
    return visit.isOpen();
}

bool Store::remove(const std::string& appID, const std::string& pin, QString& problem) const
{
    Content content;
    MAAccountInfo neighbour;
    {
        Visit visit(*this);
        problem = visit.problem();
        if (!visit.isOpen())
            return false;
        content = visit.read();
        std::list<MAAccountInfo>& accounts = content.accounts;
        auto found =
            std::find_if(accounts.begin(), accounts.end(), [&](const MAAccountInfo& account) {
                return account.equalAccount(appID, pin);
            });
        if (found == accounts.end()) {
            problem = QStringLiteral("no such account is listed");
            return false;
        }
        if (windowPresence(found->className, found->title) != WindowPresence::Missing) {
            problem = QStringLiteral("its window is there: its process has not crashed");
            return false;
        }
        found = accounts.erase(found);
        if (!accounts.empty())
            neighbour = found == accounts.begin() ? *found : *std::prev(found);
        if (!visit.writeAccounts(accounts)) {
            problem = QStringLiteral("the list would not fit into the segment any more");
            return false;
        }
    }
    // As a process does that quits.
    const MASelectedAccount& selected = content.selected;
    const bool wasInFront = selected.appID == appID && selected.pin == pin;
    if (selected.mergeWindow() && wasInFront && !content.accounts.empty())
        tell(kMAShow, neighbour.className, neighbour.title);
    else
        tell(kMAListChanged, selected.className, selected.title);
    return true;
}

void Store::tell(int code, const std::string& className, const std::string& title) const
{
    const QString message = m_application + QLatin1String(kMAMessageSuffix);
    const UINT number = RegisterWindowMessageW(message.toStdWString().c_str());
    HWND window = findMAWindow(className, title);
    // Whoever has no window sees the change when it looks the next time.
    if (number != 0 && window)
        PostMessageA(window, number, static_cast<WPARAM>(code), 0);
}

WindowPresence windowPresence(const std::string& className, const std::string& title)
{
    HWND window = findMAWindow(className, title);
    if (!window)
        return WindowPresence::Missing;
    return IsWindowVisible(window) ? WindowPresence::Visible : WindowPresence::Hidden;
}
