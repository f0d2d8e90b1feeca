#include <RTE/IndexRange.h>

#include <RTE/Exception.h>

#include <limits>

namespace RTE {

C_IndexRange::C_IndexRange(std::uint64_t first, std::uint64_t last, std::uint64_t step)
    : m_first(first), m_last(last), m_step(step)
{
    RTE_VERIFY(step != 0, "Index range step must not be 0");
}

std::uint64_t C_IndexRange::Count() const
{
    if (IsEmpty())
        return 0;
    const std::uint64_t steps = (m_last - m_first) / m_step;
    return steps == std::numeric_limits<std::uint64_t>::max() ? steps : steps + 1;
}

bool C_IndexRange::Contains(std::uint64_t index) const
{
    return index >= m_first && index <= m_last && (index - m_first) % m_step == 0;
}

bool C_IndexRange::operator==(const C_IndexRange& other) const
{
    return m_first == other.m_first && m_last == other.m_last && m_step == other.m_step;
}

} // namespace RTE
