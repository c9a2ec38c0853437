// Where the host channel and the accounts meet.

#include "ipc/MultiAccount/MAManager.h"
#include "tests/support/ChannelFixture.h"

#include <QSharedMemory>

namespace {

class MAStartUpTest : public ChannelFixture
{
protected:
    MAStartUpTest()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
    }

    static bool segmentExists()
    {
        return QSharedMemory(QCoreApplication::applicationName() + QStringLiteral("_MEM")).attach();
    }
};

} // namespace

TEST_F(MAStartUpTest, StartUpCreatesTheSegmentAndLeavesTheManagerUninitialised)
{
    EXPECT_FALSE(segmentExists());
    ASSERT_TRUE(startUp());
    EXPECT_TRUE(segmentExists());
    EXPECT_FALSE(MAManager::Instance()->isInit());
    EXPECT_TRUE(log.linesButSlowLocks(log4cplus::WARN_LOG_LEVEL).empty());
}

TEST_F(MAStartUpTest, RefusedStartUpTouchesNoSegment)
{
    EXPECT_FALSE(channel().startUp(QStringLiteral("workbench"), nullptr, nullptr));
    EXPECT_FALSE(segmentExists());
}
