#pragma once

#include "pavo_core/Export.h"

#include <memory>
#include <optional>
#include <string>

class LoginService;

/// Settings of the workbench; texts are UTF-8.
struct CoreConfig
{
    std::string clientVersion; ///< Version of the workbench, as shown to users.
};

/// Proxy settings as PAVOCore::configProxy() takes them; texts are UTF-8.
struct ProxyConfig
{
    int type = 0;         ///< As the host application's settings number it.
    std::string address;  ///< Host name or address.
    int port = 0;         ///< TCP port.
    std::string user;     ///< Empty for a proxy without a login.
    std::string password; ///< Empty for a proxy without a login.
};

/// The workbench's core: its services and settings. Used on the GUI thread only, except for
/// shareInstance().
class PAVO_CORE_EXPORT PAVOCore
{
public:
    /// A core with that login service, or without one.
    explicit PAVOCore(std::shared_ptr<LoginService> loginService = nullptr);
    virtual ~PAVOCore();

    /// The core that the workbench has installed, or null. Any thread may call.
    static PAVOCore* shareInstance();

    /// Installs \a core, which stays the caller's, or null to have none. A core that is destroyed
    /// while installed leaves none.
    static void setShareInstance(PAVOCore* core);

    /// The login service, or null.
    [[nodiscard]] std::shared_ptr<LoginService> loginService() const;

    /// The settings, to be read or changed.
    CoreConfig& getCoreConfig();

    /// Sets the proxy of the workbench's own connections. The numbers of \a type are those of the
    /// host application's settings.
    virtual void configProxy(int type, const std::string& address, int port,
                             const std::string& user, const std::string& password);

    /// What configProxy() was given last, or nothing.
    [[nodiscard]] const std::optional<ProxyConfig>& proxy() const;

private:
    Q_DISABLE_COPY(PAVOCore)

    const std::shared_ptr<LoginService> m_loginService;
    CoreConfig m_config;
    std::optional<ProxyConfig> m_proxy;
};
