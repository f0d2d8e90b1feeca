#include <SetApi/factory/WorkerThread.h>

namespace SetApi {

WorkerThread::WorkerThread(WorkerQueue& source, WorkerQueue& target,
                           boost::shared_ptr<RTE::I_ThreadExceptionHandler> handler)
    : RTE::Thread(std::move(handler)), m_source(source), m_target(target)
{
    Create(nullptr);
}

WorkerThread::~WorkerThread()
{
    // The loop reads this object's queue references, so the thread has to be over before the
    // derived part goes; the base destructor would join only after that.
    Join();
}

void WorkerThread::ThreadFunction(void*)
{
    for (;;) {
        boost::shared_ptr<I_WorkerThreadFunction> function = m_source.Pop();
        TestCancel();
        if (!function)
            return;
        (*function)();
        // The same object goes back: for a writer it is the queue place that a producer waits for.
        m_target.Push(std::move(function));
    }
}

} // namespace SetApi
