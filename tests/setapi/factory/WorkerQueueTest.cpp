// The worker queue and the worker thread on their own: order, the wait of Pop, the end mark, the
// way back of every object, cancellation at the next pop, and failures that reach the handler.

#include <SetApi/factory/WorkerQueue.h>
#include <SetApi/factory/WorkerThread.h>

#include <RTE/ThreadExceptionHandler.h>

#include "support/TestSupport.h"

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

using namespace SetApi;

namespace {

// Notes the order in which work ran; `fail` makes the call raise instead.
struct Recorder {
    std::mutex mutex;
    std::vector<int> ran;
};

class Work : public I_WorkerThreadFunction {
public:
    Work(Recorder& recorder, int id, const char* failure = nullptr)
        : m_recorder(recorder), m_id(id), m_failure(failure)
    {
    }
    void operator()() override
    {
        if (m_failure)
            throw std::runtime_error(m_failure);
        std::lock_guard<std::mutex> lock(m_recorder.mutex);
        m_recorder.ran.push_back(m_id);
    }
    int Id() const { return m_id; }

private:
    Recorder& m_recorder;
    int m_id;
    const char* m_failure;
};

// Blocks its worker until released, and tells when it has started.
class BlockingWork : public I_WorkerThreadFunction {
public:
    void operator()() override
    {
        started.set_value();
        release.get_future().wait();
    }
    std::promise<void> started;
    std::promise<void> release;
};

struct TextHandler : RTE::I_ThreadExceptionHandler {
    std::mutex mutex;
    std::vector<std::string> texts;
    void OnException(const QString& text) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        texts.push_back(text.toStdString());
    }
};

boost::shared_ptr<I_WorkerThreadFunction> MakeWork(Recorder& recorder, int id, const char* failure = nullptr)
{
    return boost::shared_ptr<I_WorkerThreadFunction>(new Work(recorder, id, failure));
}

} // namespace

TEST(WorkerQueue, FirstInFirstOutWithNullAsAnElement)
{
    Recorder recorder;
    WorkerQueue queue;
    auto first = MakeWork(recorder, 1);
    auto second = MakeWork(recorder, 2);
    queue.Push(first);
    queue.Push(boost::shared_ptr<I_WorkerThreadFunction>());
    queue.Push(second);
    EXPECT_EQ(queue.Size(), 3u);
    EXPECT_EQ(queue.Pop(), first);
    EXPECT_EQ(queue.Pop(), nullptr);
    EXPECT_EQ(queue.Pop(), second);
    EXPECT_EQ(queue.Size(), 0u);
}

TEST(WorkerQueue, PopWaitsForAPushFromAnotherThread)
{
    Recorder recorder;
    WorkerQueue queue;
    auto popped = std::async(std::launch::async, [&] { return queue.Pop(); });
    // Nothing is there to take; the wait must not end by itself.
    EXPECT_EQ(popped.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    auto work = MakeWork(recorder, 7);
    queue.Push(work);
    EXPECT_EQ(popped.get(), work);
}

TEST(WorkerThread, RunsInOrderGivesEachObjectBackAndEndsAtNull)
{
    Recorder recorder;
    WorkerQueue source;
    WorkerQueue target;
    std::vector<boost::shared_ptr<I_WorkerThreadFunction>> work;
    for (int id = 0; id < 5; ++id) {
        work.push_back(MakeWork(recorder, id));
        source.Push(work.back());
    }
    source.Push(boost::shared_ptr<I_WorkerThreadFunction>());
    auto handler = boost::shared_ptr<TextHandler>(new TextHandler);
    {
        WorkerThread thread(source, target, handler);
        thread.Join();
    }
    EXPECT_EQ(recorder.ran, (std::vector<int>{0, 1, 2, 3, 4}));
    ASSERT_EQ(target.Size(), 5u);
    for (int id = 0; id < 5; ++id)
        EXPECT_EQ(target.Pop(), work[std::size_t(id)]) << "the same object goes back, in order";
    EXPECT_TRUE(handler->texts.empty());
}

TEST(WorkerThread, CancelEndsAtTheNextPopWithoutRunningWhatItTook)
{
    Recorder recorder;
    WorkerQueue source;
    WorkerQueue target;
    auto handler = boost::shared_ptr<TextHandler>(new TextHandler);
    auto blocking = boost::shared_ptr<BlockingWork>(new BlockingWork);
    std::future<void> started = blocking->started.get_future();
    source.Push(blocking);
    source.Push(MakeWork(recorder, 1));
    {
        WorkerThread thread(source, target, handler);
        started.wait();
        thread.Cancel();
        blocking->release.set_value();
        thread.Join();
    }
    // The running object finished and went back; the next one was taken but not run.
    EXPECT_TRUE(recorder.ran.empty());
    EXPECT_EQ(target.Size(), 1u);
    EXPECT_EQ(source.Size(), 0u);
    EXPECT_TRUE(handler->texts.empty()) << "a cancel is no failure";
}

TEST(WorkerThread, AFailureEndsTheThreadAndItsTextGoesToTheHandler)
{
    Recorder recorder;
    WorkerQueue source;
    WorkerQueue target;
    auto handler = boost::shared_ptr<TextHandler>(new TextHandler);
    source.Push(MakeWork(recorder, 1));
    source.Push(MakeWork(recorder, 2, "disk gone"));
    source.Push(MakeWork(recorder, 3));
    {
        WorkerThread thread(source, target, handler);
        thread.Join();
    }
    EXPECT_EQ(recorder.ran, std::vector<int>{1});
    EXPECT_EQ(handler->texts, std::vector<std::string>{"disk gone"});
    EXPECT_EQ(target.Size(), 1u) << "the failed object does not go back";
    EXPECT_EQ(source.Size(), 1u) << "work behind the failure is left";
}
