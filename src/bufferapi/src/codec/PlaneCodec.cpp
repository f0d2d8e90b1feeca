#include "codec/PlaneCodec.h"

#include "codec/ChunkCodec.h"
#include "codec/PackedPlaneFormat.h"
#include "common/Crc32.h"

#include <RTE/Exception.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace BufferApi::Private {

namespace {

namespace Format = PackedPlane;

// Smaller planes are done on the calling thread: waking a thread team would cost more than it saves.
constexpr std::size_t kParallelFromBytes = 256 * 1024;

bool IsElementSize(unsigned elementSize)
{
    return elementSize == 1 || elementSize == 2 || elementSize == 4 || elementSize == 8;
}

bool IsCodec(PlaneCodec codec)
{
    return codec == PlaneCodec::Raw || codec == PlaneCodec::Zlib || codec == PlaneCodec::Fast;
}

std::size_t ChunkCount(std::uint64_t planeBytes, std::uint64_t chunkBytes)
{
    return planeBytes == 0 ? 0 : static_cast<std::size_t>((planeBytes - 1) / chunkBytes + 1);
}

// The unpacked size of chunk i.
std::size_t ChunkRawBytes(std::size_t planeBytes, std::size_t chunkBytes, std::size_t i)
{
    return std::min(chunkBytes, planeBytes - i * chunkBytes);
}

// The first failed chunk, if any, as an exception.
void ThrowFirstChunkError(const std::vector<const char*>& errors, const char* what)
{
    const auto failed = std::find_if(errors.begin(), errors.end(), [](const char* e) { return e != nullptr; });
    if (failed != errors.end())
        RTE_THROW_MSG(RTE::Exception, what << " chunk " << (failed - errors.begin()) << " of " << errors.size()
                                           << ": " << *failed);
}

std::size_t ChunkedCapacity(std::size_t bytes, std::size_t chunkBytes)
{
    const std::size_t count = ChunkCount(bytes, chunkBytes);
    RTE_VERIFY(count <= std::numeric_limits<std::uint32_t>::max(), "Plane too large for its chunk size");
    return Format::kHeaderBytes + count * Format::kTableEntryBytes + bytes;
}

// Packs into `out`, which has room for ChunkedCapacity bytes; returns the bytes of the stream.
std::size_t PackChunked(PlaneCodec codec, const std::uint8_t* src, std::size_t bytes, unsigned elementSize,
                        std::uint8_t* out, std::size_t chunkBytes)
{
    const std::size_t count = ChunkCount(bytes, chunkBytes);
    const std::size_t prefix = Format::kHeaderBytes + count * Format::kTableEntryBytes;

    // Every chunk packs into the slot it would take unpacked, so that no chunk needs more room
    // than the plane itself; the chunks are then closed up in order.
    std::uint8_t* const chunkArea = out + prefix;
    std::vector<std::size_t> packed(count, 0);
    std::vector<std::uint32_t> checksums(count, 0);
    std::vector<const char*> errors(count, nullptr);
    const auto n = static_cast<std::int64_t>(count);
#pragma omp parallel if (n > 1 && bytes >= kParallelFromBytes)
    {
        ChunkPacker packer(codec, elementSize);
#pragma omp for schedule(dynamic, 1)
        for (std::int64_t i = 0; i < n; ++i) {
            const std::size_t offset = std::size_t(i) * chunkBytes;
            const std::size_t rawBytes = ChunkRawBytes(bytes, chunkBytes, std::size_t(i));
            packed[i] = packer.Pack(src + offset, rawBytes, chunkArea + offset, errors[i]);
            checksums[i] = Crc32(chunkArea + offset, packed[i]);
        }
    }
    ThrowFirstChunkError(errors, "Could not pack");

    std::size_t end = prefix;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* chunk = chunkArea + i * chunkBytes;
        if (out + end != chunk)
            std::memmove(out + end, chunk, packed[i]);
        Format::WriteTableEntry({static_cast<std::uint32_t>(packed[i]), checksums[i]}, out, i);
        end += packed[i];
    }

    Format::Header header;
    header.codec = static_cast<std::uint8_t>(codec);
    header.elementSize = static_cast<std::uint8_t>(elementSize);
    header.chunkBytes = static_cast<std::uint32_t>(chunkBytes);
    header.planeBytes = bytes;
    header.chunkCount = static_cast<std::uint32_t>(count);
    Format::WriteHeader(header, out);
    header.checksum = Format::HeaderChecksum(out, header.chunkCount);
    Format::WriteHeader(header, out);
    return end;
}

void VerifyPackArguments(PlaneCodec codec, const void* src, std::size_t bytes, unsigned elementSize,
                         std::size_t chunkBytes)
{
    RTE_VERIFY(IsCodec(codec), "Unknown plane codec");
    RTE_VERIFY(IsElementSize(elementSize), "Plane element size must be 1, 2, 4 or 8");
    RTE_VERIFY(bytes % elementSize == 0, "Plane size is not a whole number of elements");
    RTE_VERIFY(src != nullptr || bytes == 0, "Plane without data");
    if (codec != PlaneCodec::Raw)
        RTE_VERIFY(chunkBytes > 0 && chunkBytes <= kMaxChunkBytes && chunkBytes % elementSize == 0,
                   "Chunk size must be a multiple of the element size up to 4 MiB");
}

// Checks the header and the table against each other, the input size and the expected plane;
// returns the offset of every chunk in src.
std::vector<std::size_t> CheckChunked(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes,
                                      std::size_t dstBytes, unsigned elementSize)
{
    if (srcBytes < Format::kHeaderBytes)
        RTE_THROW_MSG(RTE::Exception, "Packed plane truncated: " << srcBytes << " bytes, the header alone takes "
                                                                 << Format::kHeaderBytes);
    const Format::Header h = Format::ReadHeader(src);
    if (h.version != Format::kVersion)
        RTE_THROW_MSG(RTE::Exception, "Packed plane of unknown version " << unsigned(h.version));
    if (h.codec != static_cast<std::uint8_t>(codec))
        RTE_THROW_MSG(RTE::Exception, "Packed plane of codec " << unsigned(h.codec) << " where codec "
                                                               << static_cast<unsigned>(codec) << " is expected");
    if (h.elementSize != elementSize || h.reserved != 0)
        RTE_THROW_MSG(RTE::Exception, "Packed plane of element size " << unsigned(h.elementSize) << " where " << elementSize
                                                                      << " is expected");
    if (h.planeBytes != dstBytes)
        RTE_THROW_MSG(RTE::Exception, "Packed plane unpacks to " << h.planeBytes << " bytes where " << dstBytes
                                                                 << " are expected");
    if (h.chunkBytes == 0 || h.chunkBytes > kMaxChunkBytes || h.chunkBytes % elementSize != 0)
        RTE_THROW_MSG(RTE::Exception, "Packed plane with invalid chunk size " << h.chunkBytes);
    const std::size_t count = ChunkCount(dstBytes, h.chunkBytes);
    if (h.chunkCount != count)
        RTE_THROW_MSG(RTE::Exception, "Packed plane announces " << h.chunkCount << " chunks where its size takes "
                                                                << count);
    const std::size_t prefix = Format::kHeaderBytes + count * Format::kTableEntryBytes;
    if (srcBytes < prefix)
        RTE_THROW_MSG(RTE::Exception, "Packed plane truncated: " << srcBytes << " bytes, its chunk table ends at "
                                                                 << prefix);
    if (Format::HeaderChecksum(src, h.chunkCount) != h.checksum)
        RTE_THROW_MSG(RTE::Exception, "Packed plane corrupt: header checksum mismatch");

    std::vector<std::size_t> offsets(count);
    std::size_t offset = prefix;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t packed = Format::ReadTableEntry(src, i).packedBytes;
        const std::size_t rawBytes = ChunkRawBytes(dstBytes, h.chunkBytes, i);
        if (packed == 0 || packed > rawBytes)
            RTE_THROW_MSG(RTE::Exception, "Packed plane corrupt: chunk " << i << " claims " << packed
                                                                         << " packed bytes for " << rawBytes);
        if (packed > srcBytes - offset)
            RTE_THROW_MSG(RTE::Exception, "Packed plane truncated: chunk " << i << " of " << count << " needs "
                                                                           << packed << " bytes, " << srcBytes - offset
                                                                           << " are left");
        offsets[i] = offset;
        offset += packed;
    }
    if (offset != srcBytes)
        RTE_THROW_MSG(RTE::Exception, "Packed plane followed by " << srcBytes - offset << " unexpected bytes");
    return offsets;
}

void UnpackChunked(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes, std::uint8_t* dst,
                   std::size_t dstBytes, unsigned elementSize)
{
    const std::vector<std::size_t> offsets = CheckChunked(codec, src, srcBytes, dstBytes, elementSize);
    const std::size_t chunkBytes = Format::ReadHeader(src).chunkBytes;
    std::vector<const char*> errors(offsets.size(), nullptr);
    const auto n = static_cast<std::int64_t>(offsets.size());
#pragma omp parallel if (n > 1 && dstBytes >= kParallelFromBytes)
    {
        ChunkUnpacker unpacker(codec, elementSize);
#pragma omp for schedule(dynamic, 1)
        for (std::int64_t i = 0; i < n; ++i) {
            const Format::TableEntry entry = Format::ReadTableEntry(src, std::size_t(i));
            const std::uint8_t* chunk = src + offsets[i];
            if (Crc32(chunk, entry.packedBytes) != entry.checksum)
                errors[i] = "checksum mismatch";
            else
                errors[i] = unpacker.Unpack(chunk, entry.packedBytes, dst + std::size_t(i) * chunkBytes,
                                            ChunkRawBytes(dstBytes, chunkBytes, std::size_t(i)));
        }
    }
    ThrowFirstChunkError(errors, "Packed plane corrupt in");
}

} // namespace

PlaneCodec CodecForPackType(int packType)
{
    switch (packType) {
    case 0: return PlaneCodec::Raw;
    case 2: return PlaneCodec::Zlib;
    default: return PlaneCodec::Fast;
    }
}

PlaneCodec CodecFromStoredId(unsigned id)
{
    const auto codec = static_cast<PlaneCodec>(id);
    if (id > 0xFF || !IsCodec(codec))
        RTE_THROW_MSG(RTE::Exception, "Unknown plane codec " << id);
    return codec;
}

void PackPlane(PlaneCodec codec, const void* src, std::size_t bytes, unsigned elementSize,
               std::vector<std::uint8_t>& out, std::size_t chunkBytes)
{
    VerifyPackArguments(codec, src, bytes, elementSize, chunkBytes);
    const auto* in = static_cast<const std::uint8_t*>(src);
    if (codec == PlaneCodec::Raw) {
        out.assign(in, in + bytes);
        return;
    }
    out.clear();
    out.resize(ChunkedCapacity(bytes, chunkBytes));
    out.resize(PackChunked(codec, in, bytes, elementSize, out.data(), chunkBytes));
}

std::size_t PackedPlaneCapacity(PlaneCodec codec, std::size_t bytes, std::size_t chunkBytes)
{
    RTE_VERIFY(IsCodec(codec), "Unknown plane codec");
    if (codec == PlaneCodec::Raw)
        return bytes;
    RTE_VERIFY(chunkBytes > 0 && chunkBytes <= kMaxChunkBytes, "Chunk size must be above 0 and at most 4 MiB");
    return ChunkedCapacity(bytes, chunkBytes);
}

std::size_t PackPlaneInto(PlaneCodec codec, const void* src, std::size_t bytes, unsigned elementSize,
                          std::uint8_t* out, std::size_t capacity, std::size_t chunkBytes)
{
    VerifyPackArguments(codec, src, bytes, elementSize, chunkBytes);
    RTE_VERIFY(out != nullptr || capacity == 0, "No memory to pack into");
    RTE_VERIFY(capacity >= PackedPlaneCapacity(codec, bytes, chunkBytes), "Too little memory to pack the plane into");
    const auto* in = static_cast<const std::uint8_t*>(src);
    if (codec == PlaneCodec::Raw) {
        if (bytes > 0)
            std::memcpy(out, in, bytes);
        return bytes;
    }
    return PackChunked(codec, in, bytes, elementSize, out, chunkBytes);
}

void CheckPackedPlane(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes, std::size_t dstBytes,
                      unsigned elementSize)
{
    RTE_VERIFY(IsCodec(codec), "Unknown plane codec");
    RTE_VERIFY(IsElementSize(elementSize), "Plane element size must be 1, 2, 4 or 8");
    RTE_VERIFY(src != nullptr || srcBytes == 0, "Packed plane without data");
    if (codec == PlaneCodec::Raw) {
        if (srcBytes != dstBytes)
            RTE_THROW_MSG(RTE::Exception, "Raw plane of " << srcBytes << " bytes where " << dstBytes
                                                          << " are expected");
        return;
    }
    CheckChunked(codec, src, srcBytes, dstBytes, elementSize);
}

void UnpackPlane(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes, void* dst, std::size_t dstBytes,
                 unsigned elementSize)
{
    RTE_VERIFY(IsCodec(codec), "Unknown plane codec");
    RTE_VERIFY(IsElementSize(elementSize), "Plane element size must be 1, 2, 4 or 8");
    RTE_VERIFY(dstBytes % elementSize == 0, "Plane size is not a whole number of elements");
    RTE_VERIFY(src != nullptr || srcBytes == 0, "Packed plane without data");
    RTE_VERIFY(dst != nullptr || dstBytes == 0, "Plane without memory");
    auto* out = static_cast<std::uint8_t*>(dst);
    if (codec == PlaneCodec::Raw) {
        if (srcBytes != dstBytes)
            RTE_THROW_MSG(RTE::Exception, "Raw plane of " << srcBytes << " bytes where " << dstBytes
                                                          << " are expected");
        if (dstBytes > 0)
            std::memcpy(out, src, dstBytes);
        return;
    }
    UnpackChunked(codec, src, srcBytes, out, dstBytes, elementSize);
}

} // namespace BufferApi::Private
