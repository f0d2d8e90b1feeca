#pragma once
// Packing and unpacking of one plane: a contiguous block of elements of 1, 2, 4 or 8 bytes,
// little-endian in memory. Raw copies; zlib and the fast pack ("IMX") write the chunked stream
// of docs/formats/packed-plane.md, whose chunks pack and unpack in parallel.
// All functions are thread-safe and keep no state between calls.

#include <BufferApi/Export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace BufferApi::Private {

// The codec of a packed plane, by the id stored in files beside the plane.
enum class PlaneCodec : std::uint8_t { Raw = 0, Zlib = 1, Fast = 2 };

// Pack type 0 is raw, 2 zlib, and every other value the fast pack.
BUFFERAPI_API PlaneCodec CodecForPackType(int packType);

// The codec for an id read from a file; raises RTE::Exception for an unknown id.
BUFFERAPI_API PlaneCodec CodecFromStoredId(unsigned id);

// Unpacked bytes per chunk written by PackPlane, and the largest chunk UnpackPlane accepts.
constexpr std::size_t kDefaultChunkBytes = 512 * 1024;
constexpr std::size_t kMaxChunkBytes = 4 * 1024 * 1024;

// Packs `bytes` bytes at src (a whole number of elements) into out, which is cleared first;
// out's capacity is reused. chunkBytes must be a multiple of elementSize, at most kMaxChunkBytes;
// it is ignored for raw. Raises RTE::VerificationFailed for bad arguments.
BUFFERAPI_API void PackPlane(PlaneCodec codec, const void* src, std::size_t bytes, unsigned elementSize,
                             std::vector<std::uint8_t>& out, std::size_t chunkBytes = kDefaultChunkBytes);

// The room PackPlaneInto needs for a plane of `bytes` bytes: the plane itself plus the stream's
// header and chunk table (the plane for raw). Raises RTE::VerificationFailed for bad arguments.
BUFFERAPI_API std::size_t PackedPlaneCapacity(PlaneCodec codec, std::size_t bytes,
                                              std::size_t chunkBytes = kDefaultChunkBytes);

// As PackPlane, into caller memory of `capacity` bytes, at least PackedPlaneCapacity; returns the
// bytes written. Lets a caller pack into memory of its own choice, such as the 4 KiB aligned
// blocks that direct I/O writes without a copy.
BUFFERAPI_API std::size_t PackPlaneInto(PlaneCodec codec, const void* src, std::size_t bytes, unsigned elementSize,
                                        std::uint8_t* out, std::size_t capacity,
                                        std::size_t chunkBytes = kDefaultChunkBytes);

// Unpacks exactly dstBytes into dst from the srcBytes at src. Anything inconsistent (sizes,
// checksums, corrupt or truncated stream, trailing bytes) raises RTE::Exception with a text that
// names the fault; dst is then partly written. Never reads or writes outside the two ranges and
// allocates at most one chunk of scratch per thread besides a table proportional to srcBytes.
BUFFERAPI_API void UnpackPlane(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes, void* dst,
                               std::size_t dstBytes, unsigned elementSize);

// The checks of UnpackPlane that need no destination: header, chunk table and sizes against the
// input and the expected plane size. A reader calls it before it sets memory aside for the plane,
// so that a small file cannot make it allocate what it merely claims.
BUFFERAPI_API void CheckPackedPlane(PlaneCodec codec, const std::uint8_t* src, std::size_t srcBytes,
                                    std::size_t dstBytes, unsigned elementSize);

} // namespace BufferApi::Private
