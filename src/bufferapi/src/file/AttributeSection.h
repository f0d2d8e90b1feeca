#pragma once
// The attribute section of a buffer file: the attribute lists of the buffer and of each frame,
// followed by their checksum.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace BufferApi {

class I_Buffer;

namespace Private {
namespace BufferFile {

std::vector<std::uint8_t> EncodeAttributes(const I_Buffer& buffer);

// Checks the checksum of the `size` bytes of the section and gives the buffer and its frames (as
// many as the file has) their attributes. `minor` is the file's minor version: attribute kinds
// unknown here are skipped in files of a newer minor and corrupt in all others.
void DecodeAttributes(const std::uint8_t* bytes, std::size_t size, std::uint16_t minor, I_Buffer& buffer,
                      const std::string& path);

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
