#include "platform/PipeSecurity.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace pavo {

namespace {

/// The user of this process as the system stores it; empty when it cannot be had.
std::vector<std::byte> currentUser()
{
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    if (!GetTokenInformation(token, TokenUser, user.data(), size, &size))
        user.clear();
    CloseHandle(token);
    return user;
}

} // namespace

struct PipeSecurity::Data
{
    std::vector<std::byte> user = currentUser();
    std::vector<std::byte> list;
    SECURITY_DESCRIPTOR descriptor{};
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), &descriptor, FALSE};
};

PipeSecurity::PipeSecurity()
    : m_data(std::make_unique<Data>())
{
    InitializeSecurityDescriptor(&m_data->descriptor, SECURITY_DESCRIPTOR_REVISION);
    // An empty list grants nothing to anybody: what a user that cannot be had leaves behind.
    PSID user = m_data->user.empty() ? nullptr
                                     : reinterpret_cast<TOKEN_USER*>(m_data->user.data())->User.Sid;
    const DWORD size = static_cast<DWORD>(sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE)) +
                       (user ? GetLengthSid(user) : 0);
    m_data->list.resize(size);
    auto* list = reinterpret_cast<ACL*>(m_data->list.data());
    InitializeAcl(list, size, ACL_REVISION);
    if (user)
        AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, user);
    SetSecurityDescriptorDacl(&m_data->descriptor, TRUE, list, FALSE);
}

PipeSecurity::~PipeSecurity() = default;

LPSECURITY_ATTRIBUTES PipeSecurity::currentUserOnly()
{
    return &m_data->attributes;
}

} // namespace pavo
