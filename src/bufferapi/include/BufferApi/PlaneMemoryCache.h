#pragma once
// Memory of large planes (256 KiB and more) is kept for reuse when its frame goes, up to a limit,
// and handed to the next plane of exactly the same size. A fresh block from the system costs a
// page fault and a zero-fill per 4 KiB on its first touch, which for a recording's images is
// more than reading them from the page cache; a reader that loads image after image therefore
// reuses the memory of the image before. The cached blocks count in the process's resident
// memory; a limit of 0 turns the cache off and gives every block back at once.

#include <BufferApi/Export.h>

#include <cstddef>

namespace BufferApi {

// The default limit: 64 MiB, room for one image of four 2560 x 2160 word cameras.
constexpr std::size_t DEFAULT_PLANE_MEMORY_CACHE_LIMIT = std::size_t(64) << 20;

// Sets the most bytes the cache keeps; blocks beyond a lowered limit are given back at once.
BUFFERAPI_API void SetPlaneMemoryCacheLimit(std::size_t bytes);
BUFFERAPI_API std::size_t GetPlaneMemoryCacheLimit();
// The bytes the cache holds now.
BUFFERAPI_API std::size_t GetPlaneMemoryCacheSize();

} // namespace BufferApi
