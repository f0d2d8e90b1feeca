#include <RTE/Thread.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>

namespace RTE {
namespace {

// Unwinds a cancelled thread function. Deliberately no std::exception, so that the usual
// catch (const std::exception&) of a thread function lets it pass.
struct ThreadCancellation {};

} // namespace

Thread::Thread(boost::shared_ptr<I_ThreadExceptionHandler> handler)
    : m_handler(handler ? std::move(handler) : CreateDefaultThreadExeptionHandler()),
      m_state(std::make_shared<State>())
{
}

Thread::~Thread()
{
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (!m_thread.joinable())
        return;
    if (m_thread.get_id() == std::this_thread::get_id())
        m_thread.detach();
    else
        m_thread.join();
}

bool Thread::IsRunning() const { return m_state->running.load(); }

bool Thread::IsCancelRequested() const { return m_state->cancelRequested.load(); }

bool Thread::IsOwnThread() const { return m_state->threadId.load() == std::this_thread::get_id(); }

void Thread::Create(void* argument)
{
    RTE_VERIFY(!IsOwnThread(), "A thread cannot restart itself");
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_thread.joinable())
        m_thread.join();
    m_state->cancelRequested.store(false);
    m_state->running.store(true);
    try {
        m_thread = std::thread(&Thread::Run, this, argument, m_state);
    } catch (const std::system_error& e) {
        m_state->running.store(false);
        RTE_THROW_MSG(Exception, "Cannot start a thread: " << QString::fromLocal8Bit(e.what()));
    }
}

void Thread::Join()
{
    if (IsOwnThread())
        return;
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_thread.joinable())
        m_thread.join();
}

void Thread::Cancel() { m_state->cancelRequested.store(true); }

void Thread::TestCancel()
{
    if (IsOwnThread() && m_state->cancelRequested.load())
        throw ThreadCancellation();
}

void Thread::CleanupFunction() {}

void Thread::Run(void* argument, std::shared_ptr<State> state)
{
    state->threadId.store(std::this_thread::get_id());
    const boost::shared_ptr<I_ThreadExceptionHandler> handler = m_handler;
    QString failure;
    bool failed = false;
    // Runs one part of the thread; returns whether it was cancelled, notes any other failure.
    const auto guarded = [&](auto&& part) {
        try {
            part();
        } catch (const ThreadCancellation&) {
            return true;
        } catch (const std::exception& e) {
            failed = true;
            failure = QString::fromUtf8(e.what());
        } catch (...) {
            failed = true;
            failure = QStringLiteral("unknown exception");
        }
        return false;
    };
    if (guarded([&] { ThreadFunction(argument); })) {
        // A TestCancel inside the cleanup ends nothing more than the cleanup.
        guarded([&] { CleanupFunction(); });
    }
    if (failed) {
        try {
            handler->OnException(failure);
        } catch (...) {
            C_Logger("Thread").error("Thread exception handler failed on: " + failure.toStdString());
        }
    }
    state->threadId.store(std::thread::id());
    state->running.store(false);
}

} // namespace RTE
