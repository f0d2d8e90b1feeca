#pragma once
// A thread of its own for a derived class: Create(argument) runs ThreadFunction(argument) on a new
// thread. Cancellation is cooperative: Cancel() only asks, and the thread ends at its next
// TestCancel(), which unwinds ThreadFunction, after which CleanupFunction() runs on the thread.
// An exception that leaves ThreadFunction or CleanupFunction ends the thread and its text goes to
// the exception handler; it never reaches std::terminate.
//
// Lifetime: the destructor joins the thread, but it runs after the derived part of the object is
// gone. A derived class whose ThreadFunction uses its own members must therefore end and Join()
// the thread in its own destructor, before those members are destroyed.

#include <RTE/Export.h>
#include <RTE/ThreadExceptionHandler.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace RTE {

class RTE_API Thread {
public:
    // A null handler means the one of CreateDefaultThreadExeptionHandler().
    explicit Thread(boost::shared_ptr<I_ThreadExceptionHandler> handler = {});
    // Joins the thread (see the lifetime note above). An object destroyed on its own thread
    // detaches it instead, since a thread cannot join itself.
    virtual ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Whether ThreadFunction (or CleanupFunction) is still running.
    bool IsRunning() const;
    // Whether Cancel() was called since the last Create().
    bool IsCancelRequested() const;

protected:
    // Starts ThreadFunction(argument) on a new thread. A thread of an earlier Create() is joined
    // first, so an object can run again after its previous run; the cancel request is cleared.
    // Calling it from the object's own thread raises RTE::VerificationFailed.
    void Create(void* argument);
    // Waits until the thread has ended; returns at once when there is none or when called on the
    // thread itself.
    void Join();
    // Asks the thread to end at its next TestCancel(). Does not wait.
    void Cancel();
    // On the thread: ends it here when Cancel() was asked, by unwinding ThreadFunction with an
    // exception of the runtime's own. Code between must not swallow it with catch (...), or
    // must rethrow it. Elsewhere it does nothing.
    void TestCancel();

    virtual void ThreadFunction(void* argument) = 0;
    // Runs on the thread after a cancellation through TestCancel(). Does nothing by default.
    virtual void CleanupFunction();

private:
    // What the running thread shares with the object; the thread keeps it alive, so that the end
    // of a run never touches an object that was destroyed on its own thread. threadId is set
    // while a run is on its way.
    struct State {
        std::atomic<std::thread::id> threadId{};
        std::atomic<bool> running{false};
        std::atomic<bool> cancelRequested{false};
    };

    void Run(void* argument, std::shared_ptr<State> state);
    bool IsOwnThread() const;

    boost::shared_ptr<I_ThreadExceptionHandler> m_handler;
    std::shared_ptr<State> m_state;
    std::mutex m_threadMutex; // guards m_thread against concurrent Create and Join
    std::thread m_thread;
};

} // namespace RTE
