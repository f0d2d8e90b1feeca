#pragma once
// A closed range of values [min, max].

#include <algorithm>

namespace RTE {

template <class T>
class C_RangeT {
public:
    constexpr C_RangeT() = default;
    constexpr C_RangeT(T minimum, T maximum) : m_min(minimum), m_max(maximum) {}

    constexpr T GetMin() const { return m_min; }
    constexpr T GetMax() const { return m_max; }
    bool IsEmpty() const { return m_max < m_min; }
    bool Contains(T value) const { return !(value < m_min) && !(m_max < value); }
    T Clamp(T value) const { return std::min(std::max(value, m_min), m_max); }

    bool operator==(const C_RangeT& other) const { return m_min == other.m_min && m_max == other.m_max; }
    bool operator!=(const C_RangeT& other) const { return !(*this == other); }

private:
    T m_min{};
    T m_max{};
};

} // namespace RTE
