#pragma once
// A manual-reset event. Signal() releases every waiter and keeps the event signalled, so that
// later waits return at once, until Reset().

#include <RTE/Export.h>

#include <condition_variable>
#include <mutex>

namespace RTE {

class RTE_API Condition {
public:
    Condition() = default;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void Signal();
    void Reset();
    // Waits until the event is signalled; returns at once while it is.
    void Wait();
    // Waits at most the given time; true if the event is signalled.
    bool Wait(unsigned long milliseconds);
    bool IsSignaled() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_signaled = false;
};

} // namespace RTE
