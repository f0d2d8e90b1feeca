#pragma once
// A signed duration counted in whole picoseconds (64 bits: about +-106 days).
// Arithmetic that leaves that range, or scaling by a factor that is not finite, raises
// RTE::VerificationFailed instead of wrapping around. Division of two spans is a plain double
// division: by a zero span it gives an infinity, or NaN for zero by zero.

#include <RTE/Export.h>

#include <cstdint>

namespace RTE {

class RTE_API TimeSpan {
public:
    constexpr TimeSpan() = default;
    // A span of the given number of picoseconds.
    explicit constexpr TimeSpan(std::int64_t picoSeconds) : m_picoSeconds(picoSeconds) {}

    constexpr std::int64_t ToPicoSeconds() const { return m_picoSeconds; }
    // Whole nanoseconds, truncated toward zero.
    constexpr std::int64_t ToNanoSeconds() const { return m_picoSeconds / 1000; }
    double ToMicroSecondsAsDouble() const { return static_cast<double>(m_picoSeconds) / 1e6; }
    double ToMilliSecondsAsDouble() const { return static_cast<double>(m_picoSeconds) / 1e9; }
    double ToSecondsAsDouble() const { return static_cast<double>(m_picoSeconds) / 1e12; }

    TimeSpan operator+(const TimeSpan& other) const;
    TimeSpan operator-(const TimeSpan& other) const;
    TimeSpan operator-() const;
    TimeSpan& operator+=(const TimeSpan& other) { return *this = *this + other; }
    TimeSpan& operator-=(const TimeSpan& other) { return *this = *this - other; }
    // Scaled span, rounded to the nearest picosecond.
    TimeSpan operator*(double factor) const;
    TimeSpan operator/(double divisor) const;
    double operator/(const TimeSpan& other) const
    {
        return static_cast<double>(m_picoSeconds) / static_cast<double>(other.m_picoSeconds);
    }

    constexpr bool operator==(const TimeSpan& o) const { return m_picoSeconds == o.m_picoSeconds; }
    constexpr bool operator!=(const TimeSpan& o) const { return m_picoSeconds != o.m_picoSeconds; }
    constexpr bool operator<(const TimeSpan& o) const { return m_picoSeconds < o.m_picoSeconds; }
    constexpr bool operator<=(const TimeSpan& o) const { return m_picoSeconds <= o.m_picoSeconds; }
    constexpr bool operator>(const TimeSpan& o) const { return m_picoSeconds > o.m_picoSeconds; }
    constexpr bool operator>=(const TimeSpan& o) const { return m_picoSeconds >= o.m_picoSeconds; }

private:
    std::int64_t m_picoSeconds = 0;
};

inline TimeSpan operator*(double factor, const TimeSpan& span) { return span * factor; }

// Spans from counts of a unit; a count whose span does not fit raises RTE::VerificationFailed.
RTE_API TimeSpan PicoSeconds(long long count);
RTE_API TimeSpan NanoSeconds(long long count);
RTE_API TimeSpan MicroSeconds(long long count);
RTE_API TimeSpan MilliSeconds(long long count);
RTE_API TimeSpan Seconds(long long count);

} // namespace RTE
