#pragma once
// The preamble that begins every file of the side streams (attribute, scale and trace streams):
// magic, version, its own size, the stream's identity and a checksum. See
// docs/formats/attribute-stream.md for the byte table.

#include "records/StreamFailure.h"

#include <RTE/FileSystem.h>

#include <array>
#include <cstdint>
#include <vector>

namespace SetApi {
namespace Private {
namespace Records {

using Magic = std::array<std::uint8_t, 8>;

// "\x89S" + two letters + "\r\n\x1a\n": a text tool shows the letters, a binary transfer that
// mangles line ends or stops at ^Z is noticed.
constexpr Magic MakeMagic(char a, char b)
{
    return Magic{0x89, 'S', static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b), '\r', '\n', 0x1a, '\n'};
}

constexpr std::uint16_t kMajorVersion = 1;
constexpr std::uint16_t kMinorVersion = 0;
constexpr std::uint32_t kPreambleBytes = 32;
// Readers refuse a preamble above this size; a newer minor may enlarge it up to here.
constexpr std::uint32_t kMaxPreambleBytes = 4096;

struct Preamble {
    std::uint16_t major = kMajorVersion;
    std::uint16_t minor = kMinorVersion;
    std::uint32_t preambleBytes = kPreambleBytes;
    std::uint64_t streamId = 0;
    std::uint32_t entryBytes = 0;
};

// The 32 bytes of a preamble of this version.
std::vector<std::uint8_t> EncodePreamble(const Magic& magic, std::uint64_t streamId, std::uint32_t entryBytes);

// Reads and checks the preamble at the start of the file. `formatName` names the format in
// messages ("attribute stream"). Raises RTE::Exception for an empty or short file, another magic,
// another major version, a bad size or a checksum mismatch.
Preamble ReadPreamble(RTE::I_ReadableFile& file, std::uint64_t fileSize, const Magic& magic,
                      const QString& formatName, const StreamLabel& label);

// Reads exactly `size` bytes at `offset` (the caller has checked that they lie inside the file);
// fewer bytes (the file shrank) raise "is truncated".
void ReadExactly(RTE::I_ReadableFile& file, std::uint64_t offset, void* data, std::size_t size,
                 const StreamLabel& label);

// A new stream identity, different for every stream written.
std::uint64_t NewStreamId();

} // namespace Records
} // namespace Private
} // namespace SetApi
