#include "codec/PackedPlaneFormat.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace BufferApi::Private::PackedPlane {

namespace {

template <class T>
T Load(const std::uint8_t* p)
{
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value |= static_cast<T>(static_cast<T>(p[i]) << (8 * i));
    return value;
}

template <class T>
void Store(T value, std::uint8_t* p)
{
    for (std::size_t i = 0; i < sizeof(T); ++i)
        p[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

uLong Crc32Continue(uLong crc, const std::uint8_t* data, std::size_t bytes)
{
    // crc32_z takes a z_size_t, but stay within what every zlib build's crc32 takes per call.
    constexpr std::size_t kStep = std::numeric_limits<uInt>::max() / 2;
    while (bytes > 0) {
        const std::size_t n = std::min(bytes, kStep);
        crc = crc32(crc, data, static_cast<uInt>(n));
        data += n;
        bytes -= n;
    }
    return crc;
}

} // namespace

Header ReadHeader(const std::uint8_t* src)
{
    Header h;
    h.version = src[0];
    h.codec = src[1];
    h.elementSize = src[2];
    h.reserved = src[3];
    h.chunkBytes = Load<std::uint32_t>(src + 4);
    h.planeBytes = Load<std::uint64_t>(src + 8);
    h.chunkCount = Load<std::uint32_t>(src + 16);
    h.checksum = Load<std::uint32_t>(src + kChecksumOffset);
    return h;
}

void WriteHeader(const Header& h, std::uint8_t* dst)
{
    dst[0] = h.version;
    dst[1] = h.codec;
    dst[2] = h.elementSize;
    dst[3] = h.reserved;
    Store(h.chunkBytes, dst + 4);
    Store(h.planeBytes, dst + 8);
    Store(h.chunkCount, dst + 16);
    Store(h.checksum, dst + kChecksumOffset);
}

TableEntry ReadTableEntry(const std::uint8_t* stream, std::size_t i)
{
    const std::uint8_t* p = stream + kHeaderBytes + i * kTableEntryBytes;
    return TableEntry{Load<std::uint32_t>(p), Load<std::uint32_t>(p + 4)};
}

void WriteTableEntry(const TableEntry& entry, std::uint8_t* stream, std::size_t i)
{
    std::uint8_t* p = stream + kHeaderBytes + i * kTableEntryBytes;
    Store(entry.packedBytes, p);
    Store(entry.checksum, p + 4);
}

std::uint32_t Crc32(const std::uint8_t* data, std::size_t bytes)
{
    return static_cast<std::uint32_t>(Crc32Continue(crc32(0, nullptr, 0), data, bytes));
}

std::uint32_t HeaderChecksum(const std::uint8_t* stream, std::uint32_t chunkCount)
{
    uLong crc = Crc32Continue(crc32(0, nullptr, 0), stream, kChecksumOffset);
    crc = Crc32Continue(crc, stream + kHeaderBytes, std::size_t(chunkCount) * kTableEntryBytes);
    return static_cast<std::uint32_t>(crc);
}

} // namespace BufferApi::Private::PackedPlane
