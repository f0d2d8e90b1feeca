#include "file/Checksum.h"

#include <zlib.h>

#include <algorithm>

namespace BufferApi {
namespace Private {
namespace BufferFile {

std::uint32_t Checksum(const std::uint8_t* data, std::size_t bytes)
{
    uLong crc = crc32(0L, Z_NULL, 0);
    // zlib takes 32-bit lengths.
    constexpr std::size_t kPiece = std::size_t(1) << 30;
    while (bytes > 0) {
        const std::size_t piece = std::min(bytes, kPiece);
        crc = crc32(crc, data, static_cast<uInt>(piece));
        data += piece;
        bytes -= piece;
    }
    return static_cast<std::uint32_t>(crc);
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
