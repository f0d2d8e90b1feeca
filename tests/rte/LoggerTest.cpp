#include <RTE/Logger.h>

#include <support/TestSupport.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

TEST(LoggerTest, GeneralLevelFiltersAllLoggers)
{
    TestSupport::LogCapture log(RTE::LogLevel::Info);
    const RTE::C_Logger logger("Set");
    logger.debug("opening");
    logger.info("writer started");
    logger.error("store failed");
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].level, RTE::LogLevel::Info);
    EXPECT_EQ(lines[0].logger, "Set");
    EXPECT_EQ(lines[0].text, "writer started");
    EXPECT_EQ(lines[1].level, RTE::LogLevel::Error);
    EXPECT_FALSE(logger.isEnabled(RTE::LogLevel::Debug));
    EXPECT_FALSE(logger.isEnabled(RTE::LogLevel::Off));
}

TEST(LoggerTest, PerLoggerLevelOverridesTheGeneralOneUntilCleared)
{
    TestSupport::LogCapture log(RTE::LogLevel::Info);
    RTE::Logging::SetLevel("Chatty", RTE::LogLevel::Debug);
    RTE::Logging::SetLevel("Silent", RTE::LogLevel::Off);
    RTE::C_Logger("Chatty").debug("chatty debug");
    RTE::C_Logger("Other").debug("other debug");
    RTE::C_Logger("Silent").error("silent error");
    RTE::Logging::ClearLevel("Chatty");
    RTE::Logging::ClearLevel("Silent");
    RTE::C_Logger("Chatty").debug("chatty debug after clear");
    RTE::C_Logger("Silent").error("heard again after clear");

    EXPECT_TRUE(log.contains("Chatty", "chatty debug"));
    EXPECT_FALSE(log.contains("Other", "other debug"));
    EXPECT_FALSE(log.contains("Silent", "silent error"));
    EXPECT_FALSE(log.contains("Chatty", "after clear"));
    EXPECT_TRUE(log.contains("Silent", "heard again after clear"));
}

TEST(LoggerTest, ReplacedSinkReceivesMessagesAndEmptySinkRestoresDefault)
{
    std::vector<std::string> received;
    RTE::Logging::SetSink([&](RTE::LogLevel level, const std::string& logger, const std::string& text) {
        received.push_back(std::string(RTE::Logging::LevelName(level)) + "|" + logger + "|" + text);
    });
    RTE::C_Logger("Thread").error("boom");
    RTE::Logging::SetSink({});
    RTE::Logging::SetLevel("Thread", RTE::LogLevel::Off); // keep the default sink quiet here
    RTE::C_Logger("Thread").error("not to the replaced sink");
    RTE::Logging::ClearLevel("Thread");
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0], "error|Thread|boom");
}

TEST(LoggerTest, ManyThreadsLogAtOnceWithoutLosingOrTearingLines)
{
    TestSupport::LogCapture log;
    constexpr int ThreadCount = 8;
    constexpr int PerThread = 300;
    std::vector<std::thread> threads;
    for (int t = 0; t < ThreadCount; ++t)
        threads.emplace_back([t] {
            const RTE::C_Logger logger("Worker" + std::to_string(t));
            for (int i = 0; i < PerThread; ++i) {
                logger.info("message " + std::to_string(i));
                if (i % 50 == 0) // level changes race with writers
                    RTE::Logging::SetLevel(logger.name(), RTE::LogLevel::Debug);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < ThreadCount; ++t)
        RTE::Logging::ClearLevel("Worker" + std::to_string(t));

    std::set<std::string> seen;
    for (const auto& line : log.lines())
        seen.insert(line.logger + "/" + line.text);
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(ThreadCount * PerThread));
    EXPECT_EQ(seen.count("Worker7/message 299"), 1u);
}
