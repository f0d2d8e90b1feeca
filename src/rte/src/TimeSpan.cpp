#include <RTE/TimeSpan.h>

#include <RTE/Exception.h>

#include <cmath>
#include <limits>

namespace RTE {
namespace {

constexpr std::int64_t Max = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t Min = std::numeric_limits<std::int64_t>::min();

// Scaling is done in long double, which holds every 64-bit count exactly where the platform
// offers an extended format, and rounds to the nearest picosecond.
TimeSpan FromScaled(long double picoSeconds)
{
    // 2^63 is exactly representable; every value below it in magnitude converts without overflow.
    constexpr long double Limit = 9223372036854775808.0L;
    const long double rounded = std::round(picoSeconds);
    RTE_VERIFY(std::isfinite(rounded) && rounded < Limit && rounded >= -Limit,
               "TimeSpan out of range");
    return TimeSpan(static_cast<std::int64_t>(rounded));
}

TimeSpan Scaled(long long count, std::int64_t factor)
{
    RTE_VERIFY(count <= Max / factor && count >= Min / factor, "TimeSpan out of range");
    return TimeSpan(static_cast<std::int64_t>(count) * factor);
}

} // namespace

TimeSpan TimeSpan::operator+(const TimeSpan& other) const
{
    const std::int64_t a = m_picoSeconds;
    const std::int64_t b = other.m_picoSeconds;
    RTE_VERIFY(b >= 0 ? a <= Max - b : a >= Min - b, "TimeSpan out of range");
    return TimeSpan(a + b);
}

TimeSpan TimeSpan::operator-(const TimeSpan& other) const
{
    const std::int64_t a = m_picoSeconds;
    const std::int64_t b = other.m_picoSeconds;
    RTE_VERIFY(b >= 0 ? a >= Min + b : a <= Max + b, "TimeSpan out of range");
    return TimeSpan(a - b);
}

TimeSpan TimeSpan::operator-() const
{
    RTE_VERIFY(m_picoSeconds != Min, "TimeSpan out of range");
    return TimeSpan(-m_picoSeconds);
}

TimeSpan TimeSpan::operator*(double factor) const
{
    return FromScaled(static_cast<long double>(m_picoSeconds) * factor);
}

TimeSpan TimeSpan::operator/(double divisor) const
{
    return FromScaled(static_cast<long double>(m_picoSeconds) / divisor);
}

TimeSpan PicoSeconds(long long count) { return Scaled(count, 1); }
TimeSpan NanoSeconds(long long count) { return Scaled(count, 1000); }
TimeSpan MicroSeconds(long long count) { return Scaled(count, 1000000); }
TimeSpan MilliSeconds(long long count) { return Scaled(count, 1000000000); }
TimeSpan Seconds(long long count) { return Scaled(count, 1000000000000LL); }

} // namespace RTE
