#include "Interrupt.h"

#include <csignal>

namespace SetApiTool {

namespace {

// A signal handler may only touch lock-free atomics.
static_assert(ATOMIC_BOOL_LOCK_FREE == 2, "the interrupt flag must be lock-free");

std::atomic<bool> g_interrupted{false};

void RaiseInterruptFlag(int)
{
    g_interrupted.store(true);
}

} // namespace

std::atomic<bool>& InterruptFlag()
{
    return g_interrupted;
}

ScopedInterruptHandler::ScopedInterruptHandler()
{
    g_interrupted.store(false);
    m_previous = std::signal(SIGINT, RaiseInterruptFlag);
    if (m_previous == SIG_ERR)
        m_previous = SIG_DFL;
}

ScopedInterruptHandler::~ScopedInterruptHandler()
{
    std::signal(SIGINT, m_previous);
}

} // namespace SetApiTool
