#include <RTE/Condition.h>

#include <chrono>

namespace RTE {

void Condition::Signal()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_signaled = true;
    }
    m_changed.notify_all();
}

void Condition::Reset()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_signaled = false;
}

void Condition::Wait()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_signaled; });
}

bool Condition::Wait(unsigned long milliseconds)
{
    // Beyond about 30 years a deadline could overflow the clock; such a wait has no practical end.
    constexpr unsigned long long Forever = 1000ULL * 60 * 60 * 24 * 365 * 30;
    std::unique_lock<std::mutex> lock(m_mutex);
    if (milliseconds >= Forever) {
        m_changed.wait(lock, [this] { return m_signaled; });
        return true;
    }
    return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return m_signaled; });
}

bool Condition::IsSignaled() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_signaled;
}

} // namespace RTE
