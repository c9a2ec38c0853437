#include "platform/Win32.h"

#include <gtest/gtest.h>
#include <pavo_ipc/PavoIpcVersion.h>

#include <vector>

TEST(Version, IsThatOfTheDll)
{
    const wchar_t* const kDll = L"pavo_ipc.dll";
    std::vector<char> resource(GetFileVersionInfoSizeW(kDll, nullptr));
    ASSERT_FALSE(resource.empty());
    ASSERT_TRUE(GetFileVersionInfoW(kDll, 0, static_cast<DWORD>(resource.size()), resource.data()));
    void* value = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\", &value, &size));
    ASSERT_EQ(size, sizeof(VS_FIXEDFILEINFO));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(fixed->dwFileVersionMS, MAKELONG(PAVO_IPC_VERSION_MINOR, PAVO_IPC_VERSION_MAJOR));
    EXPECT_EQ(fixed->dwFileVersionLS, MAKELONG(0, PAVO_IPC_VERSION_PATCH));
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904B0\\ProductVersion",
                               &value, &size));
    EXPECT_STREQ(static_cast<const wchar_t*>(value), L"" PAVO_IPC_VERSION);
}
