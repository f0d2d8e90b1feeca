#pragma once
// CRC-32 with zlib's polynomial, the one checksum of the buffer library's file layouts.

#include <BufferApi/Export.h>

#include <cstddef>
#include <cstdint>

namespace BufferApi {
namespace Private {

// The CRC-32 of the bytes.
BUFFERAPI_API std::uint32_t Crc32(const std::uint8_t* data, std::size_t bytes);
// Continues a CRC-32 over further bytes: Crc32Update(Crc32(a), b) is the CRC-32 of a then b.
BUFFERAPI_API std::uint32_t Crc32Update(std::uint32_t crc, const std::uint8_t* data, std::size_t bytes);

} // namespace Private
} // namespace BufferApi
