#pragma once
// The threads that append the frames of one image at once: frame i goes to team member
// i % members, the calling thread being member 0. The members are made on first need and kept for
// the writer's life, and they wait for work blocked on a condition, not spinning, so a recording
// costs no CPU time between images and a single camera runs on the calling thread alone.
//
// The task must not raise: it keeps its own failures (BufferStreamWriter keeps the first).

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace SetApi {
namespace Private {

class FrameTeam {
public:
    FrameTeam() = default;
    // Ends and joins the members.
    ~FrameTeam();

    FrameTeam(const FrameTeam&) = delete;
    FrameTeam& operator=(const FrameTeam&) = delete;

    // Runs task(i) for every i below count and returns when all have run. The task is called
    // through a plain pointer, so a run allocates nothing.
    template <class Task>
    void Run(unsigned count, const Task& task)
    {
        RunErased(count, &task, [](const void* context, unsigned i) { (*static_cast<const Task*>(context))(i); });
    }

    // At most this many threads (the caller included) work on one image.
    static constexpr unsigned kMaxMembers = 16;

private:
    using Call = void (*)(const void* context, unsigned i);

    void RunErased(unsigned count, const void* context, Call call);
    void RunShare(unsigned member) const;
    void Member(unsigned member);

    std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_done;
    std::vector<std::thread> m_threads;
    std::uint64_t m_generation = 0;
    unsigned m_members = 1;  // of the current run, the caller included
    unsigned m_pending = 0;  // members of the current run still working, the caller excluded
    unsigned m_count = 0;
    const void* m_context = nullptr;
    Call m_call = nullptr;
    bool m_stop = false;
};

} // namespace Private
} // namespace SetApi
