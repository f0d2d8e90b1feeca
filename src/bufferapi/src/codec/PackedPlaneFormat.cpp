#include "codec/PackedPlaneFormat.h"

#include "common/ByteOrder.h"
#include "common/Crc32.h"

namespace BufferApi::Private::PackedPlane {

namespace {

template <class T>
T Load(const std::uint8_t* p)
{
    return static_cast<T>(LoadLE(p, sizeof(T)));
}

template <class T>
void Store(T value, std::uint8_t* p)
{
    StoreLE(value, p, sizeof(T));
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

std::uint32_t HeaderChecksum(const std::uint8_t* stream, std::uint32_t chunkCount)
{
    const std::uint32_t crc = Private::Crc32(stream, kChecksumOffset);
    return Private::Crc32Update(crc, stream + kHeaderBytes, std::size_t(chunkCount) * kTableEntryBytes);
}

} // namespace BufferApi::Private::PackedPlane
