#pragma once
// The reversible filter of the fast pack: per element, the difference to the previous element
// (zero before the first), zigzag-mapped so that small steps either way are small numbers, then
// the bytes shuffled so that all byte 0s come first, then all byte 1s, and so on. On smooth images
// the high bytes become nearly all zero and the low bytes cluster around zero.

#include <cstddef>
#include <cstdint>

namespace BufferApi::Private {

// Filters count elements of elementSize (1, 2, 4 or 8) bytes from src into dst
// (count * elementSize bytes each; the ranges do not overlap).
void FilterPlane(const std::uint8_t* src, std::size_t count, unsigned elementSize, std::uint8_t* dst) noexcept;

// The inverse of FilterPlane.
void UnfilterPlane(const std::uint8_t* src, std::size_t count, unsigned elementSize, std::uint8_t* dst) noexcept;

} // namespace BufferApi::Private
