#include "common/Crc32.h"

#include <zlib.h>

#include <algorithm>

namespace BufferApi {
namespace Private {

std::uint32_t Crc32Update(std::uint32_t crc, const std::uint8_t* data, std::size_t bytes)
{
    // zlib takes 32-bit lengths.
    constexpr std::size_t kPiece = std::size_t(1) << 30;
    uLong value = crc;
    while (bytes > 0) {
        const std::size_t piece = std::min(bytes, kPiece);
        value = crc32(value, data, static_cast<uInt>(piece));
        data += piece;
        bytes -= piece;
    }
    return static_cast<std::uint32_t>(value);
}

std::uint32_t Crc32(const std::uint8_t* data, std::size_t bytes)
{
    return Crc32Update(static_cast<std::uint32_t>(crc32(0L, Z_NULL, 0)), data, bytes);
}

} // namespace Private
} // namespace BufferApi
