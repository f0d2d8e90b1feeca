#pragma once
// Ctrl-C as a request instead of an end: while a ScopedInterruptHandler lives, SIGINT only raises
// a flag, which a long command polls so that it can stop its work cleanly and tidy up after it.

#include <atomic>

namespace SetApiTool {

// The flag that SIGINT raises while a ScopedInterruptHandler lives.
std::atomic<bool>& InterruptFlag();

// Clears the flag and routes SIGINT to it; the destructor puts back the handler found before.
class ScopedInterruptHandler {
public:
    ScopedInterruptHandler();
    ~ScopedInterruptHandler();
    ScopedInterruptHandler(const ScopedInterruptHandler&) = delete;
    ScopedInterruptHandler& operator=(const ScopedInterruptHandler&) = delete;

private:
    void (*m_previous)(int);
};

} // namespace SetApiTool
