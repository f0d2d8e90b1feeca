#include <RTE/Condition.h>
#include <RTE/Exception.h>
#include <RTE/Thread.h>

#include <support/TestSupport.h>

#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

class RecordingHandler : public RTE::I_ThreadExceptionHandler {
public:
    void OnException(const QString& text) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_texts << text;
    }
    QStringList texts() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_texts;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_texts;
};

// Runs a function given to it; exposes the protected controls to the test.
class TestThread : public RTE::Thread {
public:
    explicit TestThread(boost::shared_ptr<RTE::I_ThreadExceptionHandler> handler = {})
        : RTE::Thread(std::move(handler))
    {
    }
    ~TestThread() override { Join(); } // as the base class asks of every derived class

    void Start(std::function<void(TestThread&)> body)
    {
        Join(); // the body of an earlier run may still be in use
        m_body = std::move(body);
        Create(this);
    }
    using RTE::Thread::Cancel;
    using RTE::Thread::Join;
    using RTE::Thread::TestCancel;

    std::atomic<int> cleanups{0};

protected:
    void ThreadFunction(void* argument) override { m_body(*static_cast<TestThread*>(argument)); }
    void CleanupFunction() override { ++cleanups; }

private:
    std::function<void(TestThread&)> m_body;
};

} // namespace

TEST(ThreadTest, ExceptionTextsReachTheHandler)
{
    TestSupport::LogCapture log;
    auto handler = boost::shared_ptr<RecordingHandler>(new RecordingHandler);
    TestThread thread(handler);
    thread.Start([](TestThread&) { throw std::runtime_error("disk full"); });
    thread.Join();
    thread.Start([](TestThread&) { RTE_THROW_MSG(RTE::Exception, "Store failed at " << 7); });
    thread.Join();
    thread.Start([](TestThread&) { throw 42; });
    thread.Join();
    thread.Start([](TestThread&) {});
    thread.Join();

    EXPECT_EQ(handler->texts(),
              QStringList({"disk full", "Store failed at 7", "unknown exception"}));
    EXPECT_EQ(thread.cleanups.load(), 0); // cleanup belongs to cancellation only
}

TEST(ThreadTest, DefaultHandlerLogsOnThreadLogger)
{
    TestSupport::LogCapture log;
    TestThread thread; // null handler: the default one
    thread.Start([](TestThread&) { throw std::runtime_error("worker broke"); });
    thread.Join();
    const auto lines = log.lines();
    bool found = false;
    for (const auto& line : lines)
        found = found || (line.logger == "Thread" && line.level == RTE::LogLevel::Error &&
                          line.text.find("worker broke") != std::string::npos);
    EXPECT_TRUE(found);
}

TEST(ThreadTest, CancelEndsTheThreadAtTestCancelAndRunsCleanup)
{
    auto handler = boost::shared_ptr<RecordingHandler>(new RecordingHandler);
    TestThread thread(handler);
    RTE::Condition started;
    std::atomic<bool> escaped{false};
    thread.Start([&](TestThread& self) {
        started.Signal();
        int loopsAfterCancel = 0;
        for (;;) {
            self.TestCancel();
            if (self.IsCancelRequested() && ++loopsAfterCancel > 100) {
                escaped = true; // TestCancel failed to end the thread; do not hang the test
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    started.Wait();
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_FALSE(thread.IsCancelRequested());
    thread.Cancel();
    thread.Join();
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.cleanups.load(), 1);
    EXPECT_TRUE(handler->texts().isEmpty()); // a cancellation is no failure
    EXPECT_FALSE(escaped.load());
}

TEST(ThreadTest, CancellationPassesThroughStandardCatchBlocks)
{
    auto handler = boost::shared_ptr<RecordingHandler>(new RecordingHandler);
    TestThread thread(handler);
    thread.Cancel(); // before Create: cleared by it
    std::atomic<bool> caught{false};
    RTE::Condition cancelled;
    thread.Start([&](TestThread& self) {
        cancelled.Wait();
        try {
            self.TestCancel();
        } catch (const std::exception&) {
            caught = true;
        }
    });
    EXPECT_FALSE(thread.IsCancelRequested());
    thread.Cancel();
    cancelled.Signal();
    thread.Join();
    EXPECT_FALSE(caught.load());
    EXPECT_EQ(thread.cleanups.load(), 1);
}

TEST(ThreadTest, TestCancelOffTheThreadDoesNothing)
{
    TestThread thread;
    RTE::Condition release;
    thread.Start([&](TestThread&) { release.Wait(); });
    thread.Cancel();
    EXPECT_NO_THROW(thread.TestCancel()); // called here, not on the thread
    release.Signal();
    thread.Join();
    EXPECT_EQ(thread.cleanups.load(), 0); // the thread never tested for the cancel
}

TEST(ThreadTest, ObjectRunsAgainAfterARunAndJoinIsRepeatable)
{
    TestThread thread;
    std::atomic<int> runs{0};
    thread.Start([&](TestThread&) { ++runs; });
    thread.Start([&](TestThread&) { ++runs; }); // joins the first run before starting
    thread.Join();
    thread.Join();
    EXPECT_EQ(runs.load(), 2);
    EXPECT_FALSE(thread.IsRunning());
}

namespace {

// Relies on the base destructor alone for joining; its function uses no member of its own.
class UnjoinedThread : public RTE::Thread {
public:
    UnjoinedThread(RTE::Condition& started, std::atomic<bool>& finished) : m_started(started), m_finished(finished)
    {
        Create(nullptr);
    }

protected:
    void ThreadFunction(void*) override
    {
        RTE::Condition& started = m_started;
        std::atomic<bool>& finished = m_finished;
        started.Signal();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        finished = true;
    }

private:
    RTE::Condition& m_started;
    std::atomic<bool>& m_finished;
};

} // namespace

TEST(ThreadTest, DestructorJoins)
{
    RTE::Condition started;
    std::atomic<bool> finished{false};
    {
        UnjoinedThread thread(started, finished);
        started.Wait(); // the function must be under way before the object dies
    }
    EXPECT_TRUE(finished.load());
}
