#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/PipeProbe.h"

#include <gtest/gtest.h>

#include <chrono>

using Clock = std::chrono::steady_clock;

// The real wait of twenty seconds: slow, and the only way to see its end.
TEST(NamedPipeBusyWait, PipeThatStaysBusyIsGivenUpAfterTwentySeconds)
{
    const LogRecorder log;
    pavo::HostPipe host(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    PipeProbe first(NamedPipe::Reader);
    first.pipe.startReaderThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    PipeProbe second(NamedPipe::Reader);
    const auto start = Clock::now();
    second.pipe.startReaderThread(host.fullName());
    ASSERT_TRUE(second.exits.waitForCount(1));
    const auto waited = Clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(19500));
    EXPECT_LE(waited, std::chrono::seconds(29)) << "one wait, not two";
    second.pipe.closePipe();
    EXPECT_EQ(second.exits.count(), 1U);
    EXPECT_EQ(log.complaints(),
              std::vector<std::string>{"WARN Could not open pipe: 20 second wait timed out."});
    EXPECT_EQ(first.exits.count(), 0U);
}
