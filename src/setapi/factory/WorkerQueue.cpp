#include <SetApi/factory/WorkerQueue.h>

#include <utility>

namespace SetApi {

I_WorkerThreadFunction::~I_WorkerThreadFunction() = default;

boost::shared_ptr<I_WorkerThreadFunction> WorkerQueue::Pop()
{
    boost::unique_lock<boost::mutex> lock(m_mutex);
    while (m_queue.empty())
        m_notEmpty.wait(lock);
    boost::shared_ptr<I_WorkerThreadFunction> front = std::move(m_queue.front());
    m_queue.pop_front();
    return front;
}

void WorkerQueue::Push(boost::shared_ptr<I_WorkerThreadFunction> function)
{
    {
        boost::lock_guard<boost::mutex> lock(m_mutex);
        m_queue.push_back(std::move(function));
    }
    m_notEmpty.notify_one();
}

std::size_t WorkerQueue::Size() const
{
    boost::lock_guard<boost::mutex> lock(m_mutex);
    return m_queue.size();
}

} // namespace SetApi
