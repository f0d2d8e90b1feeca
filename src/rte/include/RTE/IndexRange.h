#pragma once
// The indices first, first + step, ... up to and including last. A range whose last lies below its
// first is empty. The step is never 0.

#include <RTE/Export.h>

#include <cstdint>

namespace RTE {

class RTE_API C_IndexRange {
public:
    // The range holding index 0 only.
    C_IndexRange() = default;
    // A step of 0 raises RTE::VerificationFailed.
    C_IndexRange(std::uint64_t first, std::uint64_t last, std::uint64_t step);

    std::uint64_t GetFirst() const { return m_first; }
    std::uint64_t GetLast() const { return m_last; }
    std::uint64_t GetStep() const { return m_step; }

    // Number of indices in the range; a range of all 2^64 indices reports 2^64 - 1.
    std::uint64_t Count() const;
    bool IsEmpty() const { return m_last < m_first; }
    bool Contains(std::uint64_t index) const;

    bool operator==(const C_IndexRange& other) const;
    bool operator!=(const C_IndexRange& other) const { return !(*this == other); }

private:
    std::uint64_t m_first = 0;
    std::uint64_t m_last = 0;
    std::uint64_t m_step = 1;
};

} // namespace RTE
