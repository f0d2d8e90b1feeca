#include "image/ImageStreamFormat.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <cstring>

namespace SetApi {
namespace Private {
namespace ImageStream {

namespace {

using BufferApi::Private::Crc32;
using BufferApi::Private::LoadLE;
using BufferApi::Private::StoreLE;

const std::uint8_t kStreamMagic[8] = {0x89, 'S', 'I', 'S', '\r', '\n', 0x1A, '\n'};
const std::uint8_t kIndexMagic[8] = {0x89, 'S', 'I', 'X', '\r', '\n', 0x1A, '\n'};
const std::uint8_t kRecordMagic[4] = {'S', 'I', 'S', 'R'};

std::uint64_t U64(const std::uint8_t* p) { return LoadLE(p, 8); }
std::uint32_t U32(const std::uint8_t* p) { return std::uint32_t(LoadLE(p, 4)); }
std::uint16_t U16(const std::uint8_t* p) { return std::uint16_t(LoadLE(p, 2)); }

bool IsCodecId(unsigned id) { return id <= static_cast<unsigned>(PlaneCodec::Fast); }

} // namespace

unsigned ElementSize(unsigned elementType)
{
    switch (elementType) {
    case unsigned(ElementType::Word): return 2;
    case unsigned(ElementType::Byte): return 1;
    case unsigned(ElementType::Float): return 4;
    case unsigned(ElementType::Double): return 8;
    case unsigned(ElementType::Mask): return 1;
    default: return 0;
    }
}

const char* CheckShape(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t framesPerImage,
                       unsigned elementType)
{
    if (ElementSize(elementType) == 0)
        return "unknown element type";
    if (width == 0 || height == 0 || depth == 0 || framesPerImage == 0)
        return "zero width, height, depth or frames per image";
    if (width > kMaxSide || height > kMaxSide)
        return "width or height above 2^20";
    if (std::uint64_t(width) * height * ElementSize(elementType) > kMaxPlaneBytes)
        return "plane larger than 1 GiB";
    if (std::uint64_t(depth) * framesPerImage > kMaxPlanesPerRecord)
        return "more than 16384 planes per image";
    return nullptr;
}

Layout MakeLayout(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t framesPerImage,
                  ElementType elementType, PlaneCodec codec)
{
    Layout layout;
    layout.elementSize = ElementSize(unsigned(elementType));
    layout.planes = depth * framesPerImage;
    layout.planeBytes = std::uint64_t(width) * height * layout.elementSize;
    layout.paddedPlaneBytes = RoundUpToBlock(layout.planeBytes);
    layout.recordHeaderUsed = RecordHeaderUsed(layout.planes);
    layout.recordHeaderBytes = std::uint32_t(RoundUpToBlock(layout.recordHeaderUsed));
    layout.rawRecordBytes = layout.recordHeaderBytes + layout.paddedPlaneBytes * layout.planes;
    if (codec == PlaneCodec::Raw) {
        layout.maxStoredBytes = layout.planeBytes;
        layout.minRecordBytes = layout.rawRecordBytes;
    } else {
        // A packed plane (packed-plane.md) is a 24-byte header, 8 bytes per chunk of at least one
        // block, and chunks no larger than what they hold.
        const std::uint64_t chunks = layout.planeBytes / kBlockBytes + 1;
        layout.maxStoredBytes = layout.planeBytes + 24 + 8 * chunks;
        layout.minRecordBytes = layout.recordHeaderBytes + kBlockBytes * layout.planes;
    }
    return layout;
}

void EncodeStreamHeader(const StreamHeader& h, std::uint8_t* out)
{
    std::memset(out, 0, kStreamHeaderBytes);
    std::memcpy(out, kStreamMagic, 8);
    StoreLE(h.major, out + 8, 2);
    StoreLE(h.minor, out + 10, 2);
    StoreLE(kStreamHeaderBytes, out + 12, 4);
    StoreLE(kBlockBytes, out + 16, 4);
    StoreLE(h.width, out + 20, 4);
    StoreLE(h.height, out + 24, 4);
    StoreLE(h.depth, out + 28, 4);
    StoreLE(h.framesPerImage, out + 32, 4);
    out[36] = std::uint8_t(h.elementType);
    out[37] = std::uint8_t(ElementSize(unsigned(h.elementType)));
    out[38] = std::uint8_t(h.codec);
    out[39] = h.flags;
    StoreLE(h.recordHeaderBytes, out + 40, 4);
    StoreLE(h.planeBytes, out + 48, 8);
    StoreLE(h.recordBytes, out + 56, 8);
    StoreLE(h.streamId, out + 64, 8);
    StoreLE(Crc32(out, kStreamHeaderBytes - 4), out + kStreamHeaderBytes - 4, 4);
}

std::string DecodeStreamHeader(const std::uint8_t* in, std::size_t bytes, StreamHeader& h, Layout& layout)
{
    if (bytes == 0)
        return "is empty";
    if (bytes < 12)
        return std::memcmp(in, kStreamMagic, bytes < 8 ? bytes : 8) == 0 ? "is truncated in its header"
                                                                          : "is not an image stream";
    if (std::memcmp(in, kStreamMagic, 8) != 0)
        return "is not an image stream";
    h.major = U16(in + 8);
    h.minor = U16(in + 10);
    if (h.major > kMajorVersion)
        return "was written by a newer version (" + std::to_string(h.major) + "." + std::to_string(h.minor) +
               ") of the image stream format";
    if (h.major < 1)
        return "has the unknown version " + std::to_string(h.major) + "." + std::to_string(h.minor);
    if (bytes < 16)
        return "is truncated in its header";
    // A later minor version may append fields; the checksum is always the header's last field.
    h.headerBytes = U32(in + 12);
    if (h.headerBytes < kStreamHeaderBytes || h.headerBytes > kBlockBytes || h.headerBytes % 4 != 0)
        return "has a header of invalid size " + std::to_string(h.headerBytes);
    if (bytes < h.headerBytes)
        return "is truncated in its header";
    if (Crc32(in, h.headerBytes - 4) != U32(in + h.headerBytes - 4))
        return "has a damaged header (checksum mismatch)";
    if (U32(in + 16) != kBlockBytes)
        return "has an unknown block size " + std::to_string(U32(in + 16));
    h.width = U32(in + 20);
    h.height = U32(in + 24);
    h.depth = U32(in + 28);
    h.framesPerImage = U32(in + 32);
    const unsigned type = in[36];
    if (const char* fault = CheckShape(h.width, h.height, h.depth, h.framesPerImage, type))
        return std::string("has an invalid header: ") + fault;
    h.elementType = ElementType(type);
    if (in[37] != ElementSize(type))
        return "has an invalid header: element size does not match the element type";
    if (!IsCodecId(in[38]))
        return "has an invalid header: unknown codec " + std::to_string(unsigned(in[38]));
    h.codec = PlaneCodec(in[38]);
    if (h.elementType == ElementType::Mask && h.codec != PlaneCodec::Raw)
        return "has an invalid header: a compressed mask stream";
    h.flags = in[39];
    if (const unsigned unknown = h.flags & ~unsigned(kKnownFlags)) {
        static const char kHex[] = "0123456789ABCDEF";
        return std::string("has an invalid header: unknown flags 0x") + kHex[unknown >> 4] + kHex[unknown & 15];
    }
    h.recordHeaderBytes = U32(in + 40);
    h.planeBytes = U64(in + 48);
    h.recordBytes = U64(in + 56);
    h.streamId = U64(in + 64);
    layout = MakeLayout(h.width, h.height, h.depth, h.framesPerImage, h.elementType, h.codec);
    if (h.recordHeaderBytes != layout.recordHeaderBytes || h.planeBytes != layout.planeBytes ||
        h.recordBytes != (h.codec == PlaneCodec::Raw ? layout.rawRecordBytes : 0))
        return "has an invalid header: sizes do not match the shape";
    return std::string();
}

void EncodeRecordHeader(const RecordHeader& h, std::uint8_t* out)
{
    std::memcpy(out, kRecordMagic, 4);
    const std::uint32_t used = RecordHeaderUsed(h.planes);
    StoreLE(used, out + 4, 4);
    StoreLE(h.streamId, out + 8, 8);
    StoreLE(h.image, out + 16, 8);
    StoreLE(h.recordBytes, out + 24, 8);
    StoreLE(h.planes, out + 32, 4);
    StoreLE(0, out + 36, 4);
    StoreLE(Crc32(out, used - 4), out + used - 4, 4);
}

void PutPlaneEntry(std::uint8_t* out, std::uint32_t plane, std::uint64_t storedBytes, std::uint64_t checksum)
{
    std::uint8_t* entry = out + kRecordFixedBytes + kPlaneEntryBytes * plane;
    StoreLE(storedBytes, entry, 8);
    StoreLE(checksum, entry + 8, 8);
}

std::uint64_t StoredBytesOf(const std::uint8_t* in, std::uint32_t plane)
{
    return U64(in + kRecordFixedBytes + kPlaneEntryBytes * plane);
}

std::uint64_t ChecksumOf(const std::uint8_t* in, std::uint32_t plane)
{
    return U64(in + kRecordFixedBytes + kPlaneEntryBytes * plane + 8);
}

std::uint64_t RecordBytesFor(const Layout& layout, const std::uint8_t* in)
{
    std::uint64_t bytes = layout.recordHeaderBytes;
    for (std::uint32_t p = 0; p < layout.planes; ++p)
        bytes += RoundUpToBlock(StoredBytesOf(in, p));
    return bytes;
}

const char* CheckRecordHeader(const std::uint8_t* in, const StreamHeader& stream, const Layout& layout,
                              std::uint64_t image, RecordHeader& h)
{
    if (std::memcmp(in, kRecordMagic, 4) != 0)
        return "no record header where the image should begin";
    if (U32(in + 4) != layout.recordHeaderUsed)
        return "record header of wrong size";
    if (Crc32(in, layout.recordHeaderUsed - 4) != U32(in + layout.recordHeaderUsed - 4))
        return "record header damaged (checksum mismatch)";
    h.streamId = U64(in + 8);
    h.image = U64(in + 16);
    h.recordBytes = U64(in + 24);
    h.planes = U32(in + 32);
    if (h.streamId != stream.streamId)
        return "record belongs to another stream";
    if (h.image != image)
        return "record holds another image";
    if (h.planes != layout.planes || U32(in + 36) != 0)
        return "record header with another plane count";
    for (std::uint32_t p = 0; p < layout.planes; ++p) {
        const std::uint64_t stored = StoredBytesOf(in, p);
        if (stored > layout.maxStoredBytes || stored == 0 ||
            (stream.codec == PlaneCodec::Raw && stored != layout.planeBytes))
            return "record header with an invalid plane size";
    }
    if (h.recordBytes != RecordBytesFor(layout, in))
        return "record header with an invalid record size";
    return nullptr;
}

void EncodeIndexHeader(std::uint64_t streamId, std::uint8_t* out)
{
    std::memset(out, 0, kIndexHeaderBytes);
    std::memcpy(out, kIndexMagic, 8);
    StoreLE(kMajorVersion, out + 8, 2);
    StoreLE(kMinorVersion, out + 10, 2);
    StoreLE(kIndexHeaderBytes, out + 12, 4);
    StoreLE(kIndexEntryBytes, out + 16, 4);
    StoreLE(streamId, out + 24, 8);
    StoreLE(Crc32(out, kIndexHeaderBytes - 4), out + kIndexHeaderBytes - 4, 4);
}

const char* CheckIndexHeader(const std::uint8_t* in, std::size_t bytes, std::uint64_t streamId)
{
    if (bytes < kIndexHeaderBytes)
        return "index header truncated";
    if (std::memcmp(in, kIndexMagic, 8) != 0)
        return "not an index of an image stream";
    if (Crc32(in, kIndexHeaderBytes - 4) != U32(in + kIndexHeaderBytes - 4))
        return "index header damaged (checksum mismatch)";
    if (U16(in + 8) != kMajorVersion || U32(in + 12) != kIndexHeaderBytes || U32(in + 16) != kIndexEntryBytes)
        return "index of another version";
    if (U64(in + 24) != streamId)
        return "index of another stream";
    return nullptr;
}

void EncodeIndexEntry(const IndexEntry& entry, std::uint8_t* out)
{
    StoreLE(entry.image, out, 8);
    StoreLE(entry.offset, out + 8, 8);
    StoreLE(entry.recordBytes, out + 16, 8);
    StoreLE(0, out + 24, 4);
    StoreLE(Crc32(out, kIndexEntryBytes - 4), out + kIndexEntryBytes - 4, 4);
}

const char* CheckIndexEntry(const std::uint8_t* in, std::uint64_t image, const Layout& layout, std::uint64_t dataBytes,
                            IndexEntry& entry)
{
    if (Crc32(in, kIndexEntryBytes - 4) != U32(in + kIndexEntryBytes - 4))
        return "index entry damaged (checksum mismatch)";
    entry.image = U64(in);
    entry.offset = U64(in + 8);
    entry.recordBytes = U64(in + 16);
    if (entry.image != image || U32(in + 24) != 0)
        return "index entry of another image";
    // Records lie one after the other behind the header block, each at least minRecordBytes long.
    if (entry.offset % kBlockBytes != 0 || entry.offset < kBlockBytes ||
        (entry.offset - kBlockBytes) / layout.minRecordBytes < image || entry.recordBytes % kBlockBytes != 0 ||
        entry.recordBytes < layout.minRecordBytes)
        return "index entry with an impossible record position";
    if (entry.recordBytes > dataBytes || entry.offset > dataBytes - entry.recordBytes)
        return "index entry of a record beyond the end of the data file";
    return nullptr;
}

} // namespace ImageStream
} // namespace Private
} // namespace SetApi
