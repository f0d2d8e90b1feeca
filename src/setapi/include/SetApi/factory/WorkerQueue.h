#pragma once
// A queue of work for worker threads: function objects taken from the front, put at the back.
// Pop waits without time limit until an element is there. A null element is legal; a worker takes
// it as the order to end.

#include <SetApi/Export.h>

#include <boost/shared_ptr.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/mutex.hpp>

#include <cstddef>
#include <deque>

namespace SetApi {

class SETAPI_API I_WorkerThreadFunction {
public:
    virtual ~I_WorkerThreadFunction();
    virtual void operator()() = 0;
};

class SETAPI_API WorkerQueue {
public:
    boost::shared_ptr<I_WorkerThreadFunction> Pop();
    void Push(boost::shared_ptr<I_WorkerThreadFunction> function);
    std::size_t Size() const;

private:
    std::deque<boost::shared_ptr<I_WorkerThreadFunction>> m_queue;
    mutable boost::mutex m_mutex;
    boost::condition_variable m_notEmpty;
};

} // namespace SetApi
