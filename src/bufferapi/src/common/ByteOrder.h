#pragma once
// Little-endian fields of the buffer library's file layouts, byte by byte whatever the host's order.

#include <cstddef>
#include <cstdint>

namespace BufferApi {
namespace Private {

// The unsigned value of `count` (1 to 8) little-endian bytes.
inline std::uint64_t LoadLE(const std::uint8_t* bytes, unsigned count)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value |= std::uint64_t(bytes[i]) << (8 * i);
    return value;
}

// The low `count` (1 to 8) bytes of the value, little-endian.
inline void StoreLE(std::uint64_t value, std::uint8_t* bytes, unsigned count)
{
    for (unsigned i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

} // namespace Private
} // namespace BufferApi
