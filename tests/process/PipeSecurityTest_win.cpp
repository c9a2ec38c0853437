// Whom the system lets open the host's pipes.

#include "platform/HostPipe.h"
#include "platform/PipeSecurity.h"
#include "platform/UniqueHandle.h"
#include "tests/support/Host.h"

#include <gtest/gtest.h>

#include <aclapi.h>

#include <cstddef>
#include <vector>

namespace {

std::vector<std::byte> currentUser()
{
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    const pavo::UniqueHandle owner(token);
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    EXPECT_TRUE(GetTokenInformation(token, TokenUser, user.data(), size, &size));
    return user;
}

} // namespace

TEST(PipeSecurityTest, GrantsThePipeToTheCurrentUserAlone)
{
    pavo::PipeSecurity security;
    BOOL isPresent = FALSE;
    BOOL isDefault = TRUE;
    ACL* list = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorDacl(security.currentUserOnly()->lpSecurityDescriptor,
                                          &isPresent, &list, &isDefault));
    ASSERT_TRUE(isPresent && list);
    EXPECT_FALSE(security.currentUserOnly()->bInheritHandle);
    ASSERT_EQ(list->AceCount, 1);
    void* entry = nullptr;
    ASSERT_TRUE(GetAce(list, 0, &entry));
    auto* grant = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    EXPECT_EQ(grant->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
    std::vector<std::byte> user = currentUser();
    EXPECT_TRUE(EqualSid(&grant->SidStart, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid));
}
