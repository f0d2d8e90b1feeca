#pragma once
// Plane contents for the codec tests: smooth (packs well), random (does not pack) and both mixed.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace PlaneTestData {

// A slowly rising ramp with a little noise, in elements of elementSize bytes.
inline std::vector<std::uint8_t> Smooth(std::size_t count, unsigned elementSize, unsigned seed = 1)
{
    std::mt19937_64 random(seed);
    std::vector<std::uint8_t> bytes(count * elementSize);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t value = 100 + i / 16 + random() % 4;
        for (unsigned b = 0; b < elementSize; ++b)
            bytes[i * elementSize + b] = static_cast<std::uint8_t>(value >> (8 * b));
    }
    return bytes;
}

inline std::vector<std::uint8_t> Random(std::size_t bytes, unsigned seed = 2)
{
    std::mt19937_64 random(seed);
    std::vector<std::uint8_t> data(bytes);
    for (auto& b : data)
        b = static_cast<std::uint8_t>(random());
    return data;
}

} // namespace PlaneTestData
