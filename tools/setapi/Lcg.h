#pragma once
// A small deterministic random generator for the tool's synthetic images, so that every run and
// every platform draws the same numbers (a check regenerates the images it compares against).

#include <cstdint>

namespace SetApiTool {

class Lcg {
public:
    explicit Lcg(std::uint64_t seed) : m_state(seed * 6364136223846793005ULL + 1442695040888963407ULL) {}
    // In [0, 1).
    double Uniform() { return double(Next() >> 11) * (1.0 / 9007199254740992.0); }
    // In [0, 1), from 24 bits: a float that never rounds up to 1.
    float UniformFloat() { return float(Next() >> 40) * (1.0f / 16777216.0f); }

private:
    std::uint64_t Next()
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return m_state;
    }
    std::uint64_t m_state;
};

} // namespace SetApiTool
