#pragma once
// The checksum of head and attribute section: CRC-32 with zlib's polynomial.

#include <BufferApi/Export.h>

#include <cstddef>
#include <cstdint>

namespace BufferApi {
namespace Private {
namespace BufferFile {

BUFFERAPI_API std::uint32_t Checksum(const std::uint8_t* data, std::size_t bytes);

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
