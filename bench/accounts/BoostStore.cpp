// Records instead of texts: nothing is parsed, and nobody gets a dead process's lock back.

#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/StoreUser.h"

#include <boost/interprocess/allocators/allocator.hpp>
#include <boost/interprocess/containers/string.hpp>
#include <boost/interprocess/containers/vector.hpp>
#include <boost/interprocess/managed_shared_memory.hpp>
#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>

namespace {

namespace ipc = boost::interprocess;

using Manager = ipc::managed_shared_memory::segment_manager;
using Text = ipc::basic_string<char, std::char_traits<char>, ipc::allocator<char, Manager>>;

struct Record
{
    explicit Record(Manager* manager)
        : appID(manager)
        , pin(manager)
        , className(manager)
        , title(manager)
    {
    }
    Text appID, pin, className, title;
    int idx = 0, unread = 0, unreadMark = 0, skin = 0, loginState = 0;
};

struct Shared
{
    explicit Shared(Manager* manager)
        : front(manager)
        , accounts(manager)
    {
    }
    ipc::interprocess_mutex mutex;
    Record front;
    ipc::vector<Record, ipc::allocator<Record, Manager>> accounts;
};

std::string copyOf(const Text& text)
{
    return {text.data(), text.size()};
}

class BoostStore : public StoreUser
{
public:
    explicit BoostStore(std::string pin)
        : m_pin(std::move(pin))
        , m_name(QCoreApplication::applicationName().toStdString())
        , m_segment(ipc::open_or_create, m_name.c_str(), 1 << 20)
        , m_shared(m_segment.find_or_construct<Shared>("accounts")(m_segment.get_segment_manager()))
    {
    }
    ~BoostStore() override { ipc::shared_memory_object::remove(m_name.c_str()); }

    void seed(int accounts) override
    {
        const ipc::scoped_lock<ipc::interprocess_mutex> lock(m_shared->mutex);
        m_shared->accounts.clear();
        for (const MAAccountInfo& account : accountsUpTo(accounts)) {
            Record record(m_segment.get_segment_manager());
            record.appID = account.appID.c_str();
            record.pin = account.pin.c_str();
            record.className = account.className.c_str();
            record.title = account.title.c_str();
            record.idx = account.idx;
            record.skin = account.skin;
            m_shared->accounts.push_back(record);
        }
    }

    void change(int loginState) override
    {
        std::list<MAAccountInfo> list;
        const ipc::scoped_lock<ipc::interprocess_mutex> lock(m_shared->mutex);
        m_front = copyOf(m_shared->front.pin);
        for (Record& record : m_shared->accounts) {
            if (m_pin == record.pin.c_str() && record.appID == kAppID)
                record.loginState = loginState;
            MAAccountInfo& account = list.emplace_back();
            account.setAccount(copyOf(record.appID), copyOf(record.pin), copyOf(record.className),
                               copyOf(record.title), record.skin, record.unread);
            account.idx = record.idx;
            account.unreadMark = record.unreadMark;
            account.loginState = record.loginState;
        }
    }

private:
    const std::string m_pin;
    const std::string m_name;
    ipc::managed_shared_memory m_segment;
    Shared* const m_shared;
    std::string m_front;
};

} // namespace

std::unique_ptr<StoreUser> joinBoostStore(const std::string& pin)
{
    return std::make_unique<BoostStore>(pin);
}
