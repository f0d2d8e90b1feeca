#pragma once
// The byte layout of an image stream (docs/formats/image-stream.md): the stream header at the
// start of the data file, the record header before each image's planes, and the header and
// entries of the index file of compressed streams. Encoding and decoding only; no file access.
// Decoders never throw: they answer with the first fault found as a text (null when none), so
// that the reader can probe the end of a damaged stream without raising and logging failures.

#include <codec/PlaneCodec.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace SetApi {
namespace Private {
namespace ImageStream {

using BufferApi::Private::PlaneCodec;

constexpr std::uint16_t kMajorVersion = 1;
// Streams with pixel checksums are written as 1.0, the version that has no flags; a stream
// without them as 1.1, the first version whose readers know the flag.
constexpr std::uint16_t kMinorVersion = 0;
constexpr std::uint16_t kMinorVersionWithFlags = 1;

// Bits of the stream header's flags byte. A reader refuses a header with any other bit set: a
// flag changes what the records mean.
constexpr std::uint8_t kFlagNoPixelChecksums = 0x01; // plane entries carry checksum 0, never checked
constexpr std::uint8_t kKnownFlags = kFlagNoPixelChecksums;

// Every block of the data file starts and ends on this boundary.
constexpr std::uint64_t kBlockBytes = 4096;

constexpr std::uint64_t RoundUpToBlock(std::uint64_t bytes) { return (bytes + kBlockBytes - 1) / kBlockBytes * kBlockBytes; }

// Limits a stream header must keep; they bound what a reader may set aside for one plane.
constexpr std::uint32_t kMaxSide = 1u << 20;          // width and height
constexpr std::uint64_t kMaxPlaneBytes = 1ull << 30; // width * height * element size
constexpr std::uint32_t kMaxPlanesPerRecord = 16384; // depth * frames per image
constexpr std::uint64_t kMaxImages = 0xFFFFFFFFull;  // image indices are 32-bit in the interface

// The element types, with the values of C_ImageWriter::E_BitsPerPixel.
enum class ElementType : std::uint8_t { Word = 1, Byte = 2, Float = 3, Double = 4, Mask = 5 };

// Bytes of one element; 0 for a value that is no element type.
unsigned ElementSize(unsigned elementType);

// ---- stream header: block 0 of the data file ----------------------------------------------

constexpr std::size_t kStreamHeaderBytes = 80;

struct StreamHeader {
    std::uint16_t major = kMajorVersion;
    std::uint16_t minor = kMinorVersion;
    std::uint32_t headerBytes = kStreamHeaderBytes; // where its checksum lies: headerBytes - 4
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0;
    std::uint32_t framesPerImage = 0;
    ElementType elementType = ElementType::Word;
    PlaneCodec codec = PlaneCodec::Raw;
    std::uint8_t flags = 0;
    std::uint64_t streamId = 0;

    // Derived from the fields above (Layout), stored for a reader to check against.
    std::uint32_t recordHeaderBytes = 0;
    std::uint64_t planeBytes = 0;
    std::uint64_t recordBytes = 0; // raw streams; 0 for compressed ones

    bool HasPixelChecksums() const { return (flags & kFlagNoPixelChecksums) == 0; }
};

// Sizes that follow from width, height, depth, frames per image, element type and codec.
struct Layout {
    unsigned elementSize = 0;
    std::uint32_t planes = 0;              // per record: depth * frames per image
    std::uint64_t planeBytes = 0;          // width * height * element size
    std::uint64_t paddedPlaneBytes = 0;    // raw planes: planeBytes rounded up to a block
    std::uint32_t recordHeaderUsed = 0;    // bytes of the record header with its checksum
    std::uint32_t recordHeaderBytes = 0;   // rounded up to blocks
    std::uint64_t rawRecordBytes = 0;      // the stride of raw records
    std::uint64_t maxStoredBytes = 0;      // the largest stored plane a reader accepts
    std::uint64_t minRecordBytes = 0;      // the smallest record of this stream
};

// Checks the shape against the limits; null when it is within them, else the fault.
const char* CheckShape(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t framesPerImage,
                       unsigned elementType);
// The layout of a shape that passed CheckShape.
Layout MakeLayout(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t framesPerImage,
                  ElementType elementType, PlaneCodec codec);

// Writes kStreamHeaderBytes bytes.
void EncodeStreamHeader(const StreamHeader& header, std::uint8_t* out);
// Decodes and checks the header from the first `bytes` bytes of the file (at most one block).
// A version newer in its major number is reported as such; fields are checked against each
// other and the limits. On success `layout` is filled.
std::string DecodeStreamHeader(const std::uint8_t* in, std::size_t bytes, StreamHeader& header, Layout& layout);

// ---- record header: the first block(s) of every record ------------------------------------

constexpr std::size_t kRecordFixedBytes = 40;
constexpr std::size_t kPlaneEntryBytes = 16;

inline std::uint32_t RecordHeaderUsed(std::uint32_t planes)
{
    return std::uint32_t(kRecordFixedBytes + kPlaneEntryBytes * planes + 4);
}

// The fixed part of a record header; the plane entries are read with PlaneEntry.
struct RecordHeader {
    std::uint64_t streamId = 0;
    std::uint64_t image = 0;
    std::uint64_t recordBytes = 0;
    std::uint32_t planes = 0;
};

// Writes the fixed part and the checksum over the fixed part and the plane entries, which the
// caller has put in place with PutPlaneEntry. `out` holds RecordHeaderUsed(header.planes) bytes.
void EncodeRecordHeader(const RecordHeader& header, std::uint8_t* out);
void PutPlaneEntry(std::uint8_t* out, std::uint32_t plane, std::uint64_t storedBytes, std::uint64_t checksum);
std::uint64_t StoredBytesOf(const std::uint8_t* in, std::uint32_t plane);
std::uint64_t ChecksumOf(const std::uint8_t* in, std::uint32_t plane);

// Checks a record header read from the file: magic, checksum, stream id, image index, plane
// count, stored sizes against the layout and the record size against the stored sizes. `in`
// holds layout.recordHeaderUsed bytes. Null when it is sound, else the fault.
const char* CheckRecordHeader(const std::uint8_t* in, const StreamHeader& stream, const Layout& layout,
                              std::uint64_t image, RecordHeader& header);

// The record size that the stored plane sizes give.
std::uint64_t RecordBytesFor(const Layout& layout, const std::uint8_t* in);

// ---- index file of compressed streams ------------------------------------------------------

constexpr std::size_t kIndexHeaderBytes = 64;
constexpr std::size_t kIndexEntryBytes = 32;

void EncodeIndexHeader(std::uint64_t streamId, std::uint8_t* out);
// Null when the bytes are the index header of this stream, else the fault.
const char* CheckIndexHeader(const std::uint8_t* in, std::size_t bytes, std::uint64_t streamId);

struct IndexEntry {
    std::uint64_t image = 0;
    std::uint64_t offset = 0;
    std::uint64_t recordBytes = 0;
};

void EncodeIndexEntry(const IndexEntry& entry, std::uint8_t* out);
// Checks checksum, image index and that the record lies in a data file of `dataBytes` where it
// can lie. Null when it is sound, else the fault.
const char* CheckIndexEntry(const std::uint8_t* in, std::uint64_t image, const Layout& layout, std::uint64_t dataBytes,
                            IndexEntry& entry);

} // namespace ImageStream
} // namespace Private
} // namespace SetApi
