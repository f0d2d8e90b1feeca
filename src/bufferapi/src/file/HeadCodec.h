#pragma once
// The head of a buffer file: preamble, frame records and head checksum, in both directions.
// Decoding checks everything the head claims against the format's limits and the file's size,
// so that what it returns can be allocated and read without further checks.

#include "file/FileFormat.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {
namespace BufferFile {

// The whole head of `head` (its headBytes is ignored and comes out as the size of the result).
std::vector<std::uint8_t> EncodeHead(const Head& head);

struct Preamble {
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    std::uint32_t preambleBytes = 0;
    std::uint32_t headBytes = 0;
    std::uint32_t frameCount = 0;
};

// Checks magic, version and head size in the first `available` bytes of a file of `fileSize`
// bytes (available = min(fileSize, what was read), at least kPreambleBytes unless the file is
// shorter). Raises for an empty file, not a buffer file, a newer major version, a head beyond
// the file or the limit.
Preamble DecodePreamble(const std::uint8_t* bytes, std::size_t available, std::uint64_t fileSize,
                        const std::string& path);

// Checks the checksum of the complete head (preamble.headBytes bytes) and the file size, and
// decodes and checks every frame record.
Head DecodeHead(const Preamble& preamble, const std::uint8_t* head, std::uint64_t fileSize, const std::string& path);

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
