#include "pavo_core/PAVOCore.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<PAVOCore*> shared{nullptr};

} // namespace

PAVOCore::PAVOCore(std::shared_ptr<LoginService> loginService)
    : m_loginService(std::move(loginService))
{
}

PAVOCore::~PAVOCore()
{
    PAVOCore* self = this;
    shared.compare_exchange_strong(self, nullptr);
}

PAVOCore* PAVOCore::shareInstance()
{
    return shared;
}

void PAVOCore::setShareInstance(PAVOCore* core)
{
    shared = core;
}

std::shared_ptr<LoginService> PAVOCore::loginService() const
{
    return m_loginService;
}

CoreConfig& PAVOCore::getCoreConfig()
{
    return m_config;
}

void PAVOCore::configProxy(int type, const std::string& address, int port, const std::string& user,
                           const std::string& password)
{
    m_proxy = ProxyConfig{type, address, port, user, password};
}

const std::optional<ProxyConfig>& PAVOCore::proxy() const
{
    return m_proxy;
}
