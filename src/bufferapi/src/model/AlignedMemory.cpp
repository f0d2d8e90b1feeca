#include "model/AlignedMemory.h"

#include <BufferApi/PlaneMemoryCache.h>

#include <RTE/Exception.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <vector>

namespace BufferApi {
namespace Private {

namespace {
// In front of the aligned start lie the original pointer and the size of the whole block.
constexpr std::size_t HEADER = 2 * sizeof(std::size_t);
// Room for the alignment and for the header.
constexpr std::size_t SLACK = PLANE_ALIGNMENT - 1 + HEADER;
// Smaller blocks come cheaply from the C allocator's own free lists.
constexpr std::size_t CACHED_MINIMUM = 256 * 1024;

struct Block {
    std::size_t total;
    void* raw;
};

// Freed large blocks, oldest first. Lives until the process ends, so that planes freed during
// static destruction still find it.
class BlockCache {
public:
    // A held block of exactly that size, or null.
    void* Take(std::size_t total)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_blocks.rbegin(); it != m_blocks.rend(); ++it) {
            if (it->total == total) {
                void* raw = it->raw;
                m_held -= total;
                m_blocks.erase(std::next(it).base());
                return raw;
            }
        }
        return nullptr;
    }

    // Keeps the block when it fits under the limit, making room by giving back the oldest.
    bool Keep(std::size_t total, void* raw)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (total > m_limit)
            return false;
        TrimTo(m_limit - total);
        m_blocks.push_back({total, raw});
        m_held += total;
        return true;
    }

    void SetLimit(std::size_t limit)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_limit = limit;
        TrimTo(limit);
    }

    std::size_t GetLimit()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_limit;
    }

    std::size_t GetHeld()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_held;
    }

private:
    void TrimTo(std::size_t bytes)
    {
        std::size_t drop = 0;
        while (m_held > bytes && drop < m_blocks.size()) {
            m_held -= m_blocks[drop].total;
            std::free(m_blocks[drop].raw);
            ++drop;
        }
        m_blocks.erase(m_blocks.begin(), m_blocks.begin() + std::ptrdiff_t(drop));
    }

    std::mutex m_mutex;
    std::size_t m_limit = DEFAULT_PLANE_MEMORY_CACHE_LIMIT;
    std::size_t m_held = 0;
    std::vector<Block> m_blocks;
};

BlockCache& Cache()
{
    static BlockCache* cache = new BlockCache;
    return *cache;
}

void* AlignedStart(void* raw)
{
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(raw) + HEADER;
    return reinterpret_cast<void*>((start + PLANE_ALIGNMENT - 1) & ~std::uintptr_t(PLANE_ALIGNMENT - 1));
}

} // namespace

AlignedBlock AllocateAligned(std::size_t bytes, bool zeroed)
{
    if (bytes == 0)
        bytes = 1;
    if (bytes > std::numeric_limits<std::size_t>::max() - SLACK)
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane memory of " << QString::number(qulonglong(bytes))
                                                                  << " bytes exceeds the address space");
    const std::size_t total = bytes + SLACK;
    void* raw = total >= CACHED_MINIMUM ? Cache().Take(total) : nullptr;
    const bool reused = raw != nullptr;
    if (!reused)
        raw = zeroed ? std::calloc(total, 1) : std::malloc(total);
    if (raw == nullptr)
        RTE_THROW_MSG(RTE::Exception,
                      "Out of memory: cannot allocate " << QString::number(qulonglong(bytes)) << " bytes of plane memory");
    void* block = AlignedStart(raw);
    if (reused && zeroed)
        std::memset(block, 0, bytes);
    char* header = static_cast<char*>(block) - HEADER;
    std::memcpy(header, &raw, sizeof(void*));
    std::memcpy(header + sizeof(std::size_t), &total, sizeof(std::size_t));
    return AlignedBlock(block);
}

void FreeAligned(void* block) noexcept
{
    if (block == nullptr)
        return;
    const char* header = static_cast<const char*>(block) - HEADER;
    void* raw = nullptr;
    std::size_t total = 0;
    std::memcpy(&raw, header, sizeof(void*));
    std::memcpy(&total, header + sizeof(std::size_t), sizeof(std::size_t));
    try {
        if (total >= CACHED_MINIMUM && Cache().Keep(total, raw))
            return;
    } catch (...) {
        // No room to remember the block: it goes back to the system.
    }
    std::free(raw);
}

std::size_t CheckedPlaneBytes(unsigned width, unsigned height, std::size_t elementSize)
{
    const std::size_t max = std::numeric_limits<std::size_t>::max();
    const std::size_t elements = std::size_t(width) * height; // two 32-bit factors fit in 64 bits
    const bool fits = (height == 0 || std::size_t(width) <= max / height) &&
                      (elementSize == 0 || elements <= max / elementSize);
    if (!fits)
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane of " << width << " x " << height << " elements of "
                                                           << QString::number(qulonglong(elementSize))
                                                           << " bytes is too large to be addressed");
    return elements * elementSize;
}

} // namespace Private

void SetPlaneMemoryCacheLimit(std::size_t bytes) { Private::Cache().SetLimit(bytes); }

std::size_t GetPlaneMemoryCacheLimit() { return Private::Cache().GetLimit(); }

std::size_t GetPlaneMemoryCacheSize() { return Private::Cache().GetHeld(); }

} // namespace BufferApi
