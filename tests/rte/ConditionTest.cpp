#include <RTE/Condition.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(ConditionTest, ManualResetSemantics)
{
    RTE::Condition condition;
    EXPECT_FALSE(condition.IsSignaled());
    EXPECT_FALSE(condition.Wait(0));
    condition.Signal();
    EXPECT_TRUE(condition.IsSignaled());
    condition.Wait();                   // returns at once while signalled
    EXPECT_TRUE(condition.Wait(0));
    EXPECT_TRUE(condition.IsSignaled()); // waiting does not consume the signal
    condition.Reset();
    EXPECT_FALSE(condition.IsSignaled());
    EXPECT_FALSE(condition.Wait(1));
}

TEST(ConditionTest, SignalReleasesAllWaitersOfOtherThreads)
{
    RTE::Condition go;
    RTE::Condition allReleased;
    std::atomic<int> released{0};
    constexpr int WaiterCount = 4;
    std::vector<std::thread> waiters;
    for (int i = 0; i < WaiterCount; ++i)
        waiters.emplace_back([&] {
            go.Wait();
            if (++released == WaiterCount)
                allReleased.Signal();
        });
    EXPECT_EQ(released.load(), 0);
    go.Signal();
    allReleased.Wait();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(released.load(), WaiterCount);
}

TEST(ConditionTest, TimedWaitSeesASignalFromAnotherThread)
{
    RTE::Condition condition;
    std::thread signaller([&] { condition.Signal(); });
    // A generous limit: the result, not the time taken, is checked.
    EXPECT_TRUE(condition.Wait(60000));
    signaller.join();
}

TEST(ConditionTest, HugeTimeoutDoesNotOverflow)
{
    RTE::Condition condition;
    condition.Signal();
    EXPECT_TRUE(condition.Wait(static_cast<unsigned long>(-1)));
}
