#pragma once
// A thread that runs the function objects of one queue and gives each back to another: pop from
// the source (waiting without limit), end on a null element, run, push the same object to the
// target, repeat. Cancel ends it at its next pop. An exception out of a function object ends the
// thread and its text goes to the exception handler.

#include <SetApi/Export.h>
#include <SetApi/factory/WorkerQueue.h>

#include <RTE/Thread.h>

namespace SetApi {

class SETAPI_API WorkerThread : public RTE::Thread {
public:
    // Starts the thread at once.
    WorkerThread(WorkerQueue& source, WorkerQueue& target, boost::shared_ptr<RTE::I_ThreadExceptionHandler> handler);
    // Joins the thread; it must have been told to end (a null element or Cancel and one).
    ~WorkerThread() override;

    using RTE::Thread::Cancel;
    using RTE::Thread::Join;

protected:
    void ThreadFunction(void* argument) override;

private:
    WorkerQueue& m_source;
    WorkerQueue& m_target;
};

} // namespace SetApi
