// A segment that another process has filled with anything, and every operation on it.
//
// An input is a byte of flags, a line for the region of the selected account, one for the region of
// the list, and pairs of bytes: an operation and its argument.

#include "fuzz/support/Input.h"
#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/MultiAccount/MAManager.h"
#include "ipc/MultiAccount/MAStoreLayout.h"
#include "platform/SegmentGate.h"

#include <QCoreApplication>

#include <array>
#include <iterator>
#include <memory>

namespace {

constexpr int kLogging = 1;
constexpr int kObserver = 2;
/// A callback of the observer takes the observer away.
constexpr int kRemoveInCallback = 4;
/// The last byte of a region's text fills the region.
constexpr int kFill = 8;
constexpr int kSizeShift = 4;
/// More of them take longer and show no more.
constexpr int kMaxOperations = 32;

/// The right size and those that a process of another kind might have made.
constexpr int kSizes[] = {kMASegmentSize,
                          kMAListRegion.offset + kMAListRegion.size,
                          kMAListRegion.size,
                          kMAListRegion.offset + 1,
                          kMASelectedRegion.size,
                          kMASelectedRegion.size - 1,
                          50,
                          1};

using Operation = void (*)(MAManager&, int);

constexpr Operation kOperations[] = {
    [](MAManager& m, int) { m.loginAccountCount(); },
    [](MAManager& m, int) { m.isSelectedAccount(); },
    [](MAManager& m, int) { m.checkWindowVisible(); },
    [](MAManager& m, int) { m.switchToCurrentPin(); },
    [](MAManager& m, int n) { m.popupMainWindow(n % 2 != 0); },
    [](MAManager& m, int) { m.switchShowState(); },
    [](MAManager& m, int) { m.switchedHide(); },
    [](MAManager& m, int n) { m.changeMergeMode(n % 4, n % 8 > 3); },
    [](MAManager& m, int n) { m.windowStateChanged(n % 8, QRect(n, -n, n * 9, n * 7)); },
    [](MAManager& m, int n) { m.changeCurrentSkin(n); },
    [](MAManager& m, int n) { m.changeCurrentUnread(n); },
    [](MAManager& m, int n) { m.changeCurrentUnreadMark(n % 3); },
    [](MAManager& m, int n) { m.changeLoginState(n); },
    [](MAManager& m, int n) { m.switchLoginState(n); },
    [](MAManager& m, int n) {
        m.sortAllAccount({{"a", n}, {"b", -n}, {"", 0}});
    },
    [](MAManager& m, int n) {
        MAAccountInfo account;
        account.setAccount("app", "b", "class", "title b", n, n);
        m.switchToAccount(account);
    },
    [](MAManager& m, int n) { m.initManager("app", n % 2 != 0 ? "a" : "b", "class", "title", n); },
    [](MAManager& m, int) { m.quitCurrentAccount(); },
};

} // namespace

/// A manager as a process of its own would have it.
class MAManagerProbe : public MAManager
{
public:
    ~MAManagerProbe()
    {
        // The process goes on: what would else stay until it is gone goes now.
        uninitManager();
        removeObserver();
    }

    /// Has the window procedure get a message of the manager's.
    void receive(int code, int parameter) { handleNativeEvent(m_messageId, code, parameter); }

    /// As it was made, but for the segment, which it stays attached to.
    void startOver()
    {
        m_initialized = false;
        m_ownAccount = MAAccountInfo();
        m_windowState = kMANormal;
        m_windowRect = QRect();
        m_largestSize = QSize();
        m_mergeMode = kMAMerged;
        removeObserver();
    }
};

namespace {

/// An installation with a segment of one size: a process that takes part, and one that does harm.
class Installation
{
public:
    explicit Installation(int size)
        : m_name(QStringLiteral("fuzz-%1").arg(size))
        , m_harm(m_name + QLatin1String(kMASegmentSuffix))
    {
        // Through the gate, which makes use of what a process has left that crashed.
        require(pavo::SegmentGate(m_harm).attach(size) == QSharedMemory::NoError,
                "the segment can be made");
    }
    ~Installation() { pavo::SegmentGate(m_harm).detach(); }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    void fill(const MARegion& region, const std::string& text, bool toItsEnd)
    {
        require(m_harm.lock(), "the lock can be had");
        const int present = region.presentIn(m_harm);
        char* const bytes = static_cast<char*>(m_harm.data()) + region.offset;
        const int length = std::min(static_cast<int>(text.size()), present);
        std::copy_n(text.data(), length, bytes);
        std::fill(bytes + length, bytes + present, toItsEnd && !text.empty() ? text.back() : '\0');
        require(m_harm.unlock(), "the lock can be left");
    }

    /// The manager after its start, as far as that succeeds with what is in the segment.
    MAManagerProbe& start()
    {
        QCoreApplication::setApplicationName(m_name);
        m_manager.startOver();
        m_manager.initManager("app", "a", "class", "title", 1);
        return m_manager;
    }

private:
    const QString m_name;
    QSharedMemory m_harm;
    MAManagerProbe m_manager;
};

std::array<std::unique_ptr<Installation>, std::size(kSizes)>* installations = nullptr;
std::size_t seen = 0;

void observe(MAManagerProbe& manager, bool removeInCallback)
{
    auto* observer = new MAObserver;
    observer->messageCallback = [&manager, removeInCallback](int code, MASelectedAccount& selected,
                                                             std::list<MAAccountInfo>& accounts) {
        seen += selected.toJSON().size() + MAAccountInfo::toJSON(accounts).size() +
                static_cast<unsigned>(code);
        if (removeInCallback)
            manager.removeObserver();
    };
    observer->loginStateCallback = [](int state) { seen += static_cast<unsigned>(state); };
    manager.addObserver(observer);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    static std::array<std::unique_ptr<Installation>, std::size(kSizes)> all;
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = std::make_unique<Installation>(kSizes[i]);
    installations = &all;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int flags = input.byte();
    setLogging((flags & kLogging) != 0);
    const auto which = static_cast<std::size_t>(flags >> kSizeShift) % std::size(kSizes);
    Installation& installation = *(*installations)[which];
    const bool fill = (flags & kFill) != 0;
    const std::string selected = input.line();
    const std::string list = input.line();
    installation.fill(kMASelectedRegion, selected, fill);
    installation.fill(kMAListRegion, list, fill);

    MAManagerProbe& manager = installation.start();
    require(manager.isInit() == (kSizes[which] >= kMASelectedRegion.size),
            "a segment that holds a selected account is joined");
    if ((flags & kObserver) != 0)
        observe(manager, (flags & kRemoveInCallback) != 0);
    for (int i = 0; i < kMaxOperations && !input.atEnd(); ++i) {
        const auto operation = static_cast<std::size_t>(input.byte());
        const int argument = input.byte() - 128;
        // Above the operations come the codes of window messages.
        constexpr std::size_t kCodes = 10;
        const std::size_t number = operation % (std::size(kOperations) + kCodes);
        if (number < std::size(kOperations))
            kOperations[number](manager, argument);
        else
            manager.receive(static_cast<int>(number - std::size(kOperations)), argument);
    }
    MASelectedAccount record;
    require(manager.selectedAccount(record) == manager.isInit(),
            "who takes part can read the selected account");
    return 0;
}
