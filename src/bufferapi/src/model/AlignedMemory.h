#pragma once
// Plane memory of the library: blocks that start on a 4 KiB boundary, so that planes can go to
// and come from disk with direct I/O. Portable: the block is over-allocated with the C allocator
// and the aligned start is taken from inside it; the original pointer and the block's size sit
// just before that start.

#include <BufferApi/Export.h>

#include <cstddef>
#include <memory>

namespace BufferApi {
namespace Private {

constexpr std::size_t PLANE_ALIGNMENT = 4096;

// Frees a block of AllocateAligned; null is ignored.
BUFFERAPI_API void FreeAligned(void* block) noexcept;

struct AlignedDeleter {
    void operator()(void* block) const noexcept { FreeAligned(block); }
};
using AlignedBlock = std::unique_ptr<void, AlignedDeleter>;

// A block of `bytes` bytes (at least one) starting on a PLANE_ALIGNMENT boundary, zero-filled
// when `zeroed`. A large block is taken from the cache of freed blocks when one of the same size
// is there (see BufferApi/PlaneMemoryCache.h); otherwise zero-filling uses calloc, so that fresh
// large blocks are zeroed lazily by the system. A
// size that overflows with the alignment slack raises RTE::VerificationFailed, memory that cannot
// be had RTE::Exception.
BUFFERAPI_API AlignedBlock AllocateAligned(std::size_t bytes, bool zeroed);

// width * height * elementSize, raising RTE::VerificationFailed when it does not fit in size_t.
BUFFERAPI_API std::size_t CheckedPlaneBytes(unsigned width, unsigned height, std::size_t elementSize);

} // namespace Private
} // namespace BufferApi
