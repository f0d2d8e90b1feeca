#pragma once
// Byte layout of the chunked packed-plane stream (docs/formats/packed-plane.md): a 24-byte header,
// a table of 8 bytes per chunk, then the chunks. Parsing here checks nothing; UnpackPlane does.

#include <BufferApi/Export.h>

#include <cstddef>
#include <cstdint>

namespace BufferApi::Private::PackedPlane {

constexpr std::uint8_t kVersion = 1;
constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kChecksumOffset = 20;
constexpr std::size_t kTableEntryBytes = 8;

struct Header {
    std::uint8_t version = kVersion;
    std::uint8_t codec = 0;
    std::uint8_t elementSize = 0;
    std::uint8_t reserved = 0;
    std::uint32_t chunkBytes = 0;
    std::uint64_t planeBytes = 0;
    std::uint32_t chunkCount = 0;
    std::uint32_t checksum = 0;
};

struct TableEntry {
    std::uint32_t packedBytes = 0;
    std::uint32_t checksum = 0;
};

// src / dst hold at least kHeaderBytes.
BUFFERAPI_API Header ReadHeader(const std::uint8_t* src);
BUFFERAPI_API void WriteHeader(const Header& header, std::uint8_t* dst);

// Entry i of the table of a stream; the stream holds at least the header and entry i.
BUFFERAPI_API TableEntry ReadTableEntry(const std::uint8_t* stream, std::size_t i);
BUFFERAPI_API void WriteTableEntry(const TableEntry& entry, std::uint8_t* stream, std::size_t i);

// The header checksum: CRC-32 of the header bytes before the checksum, followed by the table of
// chunkCount entries. The stream holds at least the header and that table.
BUFFERAPI_API std::uint32_t HeaderChecksum(const std::uint8_t* stream, std::uint32_t chunkCount);

} // namespace BufferApi::Private::PackedPlane
