#include "pavo_core/PAVOCore.h"

#include "pavo_core/SimulatedLoginService.h"

#include <gtest/gtest.h>

TEST(PAVOCore, isInstalledByTheWorkbench)
{
    EXPECT_EQ(PAVOCore::shareInstance(), nullptr);
    PAVOCore core;
    EXPECT_EQ(PAVOCore::shareInstance(), nullptr);
    PAVOCore::setShareInstance(&core);
    EXPECT_EQ(PAVOCore::shareInstance(), &core);
    PAVOCore::setShareInstance(nullptr);
    EXPECT_EQ(PAVOCore::shareInstance(), nullptr);
}

TEST(PAVOCore, leavesWithItsDestruction)
{
    {
        PAVOCore installed;
        PAVOCore::setShareInstance(&installed);
        {
            const PAVOCore other;
        }
        EXPECT_EQ(PAVOCore::shareInstance(), &installed);
    }
    EXPECT_EQ(PAVOCore::shareInstance(), nullptr);
}

TEST(PAVOCore, holdsALoginServiceOrNone)
{
    EXPECT_EQ(PAVOCore().loginService(), nullptr);
    const auto service = std::make_shared<SimulatedLoginService>();
    EXPECT_EQ(PAVOCore(service).loginService(), service);
}

TEST(PAVOCore, keepsItsConfiguration)
{
    PAVOCore core;
    EXPECT_EQ(core.getCoreConfig().clientVersion, "");
    core.getCoreConfig().clientVersion = "9.1";
    EXPECT_EQ(core.getCoreConfig().clientVersion, "9.1");
}

TEST(PAVOCore, keepsTheLastProxy)
{
    PAVOCore core;
    EXPECT_FALSE(core.proxy().has_value());
    core.configProxy(1, "first", 1080, "", "");
    core.configProxy(2, "second", 8080, "user", "secret");
    ASSERT_TRUE(core.proxy().has_value());
    EXPECT_EQ(core.proxy()->type, 2);
    EXPECT_EQ(core.proxy()->address, "second");
    EXPECT_EQ(core.proxy()->port, 8080);
    EXPECT_EQ(core.proxy()->user, "user");
    EXPECT_EQ(core.proxy()->password, "secret");
}
