#include "FrameTeam.h"

#include <algorithm>

namespace SetApi {
namespace Private {

FrameTeam::~FrameTeam()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_work.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void FrameTeam::RunErased(unsigned count, const void* context, Call call)
{
    const unsigned members = std::max(1u, std::min(count, kMaxMembers));
    if (members == 1) {
        for (unsigned i = 0; i < count; ++i)
            call(context, i);
        return;
    }
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        // Members 1 .. members-1 are threads; they are made once and kept.
        while (m_threads.size() + 1 < members) {
            const auto member = static_cast<unsigned>(m_threads.size() + 1);
            m_threads.emplace_back([this, member] { Member(member); });
        }
        m_count = count;
        m_context = context;
        m_call = call;
        m_members = members;
        m_pending = members - 1;
        ++m_generation;
    }
    m_work.notify_all();
    RunShare(0);
    std::unique_lock<std::mutex> lock(m_mutex);
    m_done.wait(lock, [this] { return m_pending == 0; });
}

void FrameTeam::RunShare(unsigned member) const
{
    for (unsigned i = member; i < m_count; i += m_members)
        m_call(m_context, i);
}

void FrameTeam::Member(unsigned member)
{
    std::uint64_t seen = 0;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [&] { return m_stop || m_generation != seen; });
        if (m_stop)
            return;
        seen = m_generation;
        if (member >= m_members)
            continue; // not needed for this image
        lock.unlock();
        RunShare(member);
        lock.lock();
        if (--m_pending == 0)
            m_done.notify_one();
    }
}

} // namespace Private
} // namespace SetApi
