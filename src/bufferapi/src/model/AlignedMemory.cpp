#include "model/AlignedMemory.h"

#include <RTE/Exception.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace BufferApi {
namespace Private {

namespace {
// Room for the alignment and for the original pointer kept in front of the aligned start.
constexpr std::size_t SLACK = PLANE_ALIGNMENT - 1 + sizeof(void*);
} // namespace

AlignedBlock AllocateAligned(std::size_t bytes, bool zeroed)
{
    if (bytes == 0)
        bytes = 1;
    if (bytes > std::numeric_limits<std::size_t>::max() - SLACK)
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane memory of " << QString::number(qulonglong(bytes))
                                                                  << " bytes exceeds the address space");
    const std::size_t total = bytes + SLACK;
    void* raw = zeroed ? std::calloc(total, 1) : std::malloc(total);
    if (raw == nullptr)
        RTE_THROW_MSG(RTE::Exception,
                      "Out of memory: cannot allocate " << QString::number(qulonglong(bytes)) << " bytes of plane memory");
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(raw) + sizeof(void*);
    const std::uintptr_t aligned = (start + PLANE_ALIGNMENT - 1) & ~std::uintptr_t(PLANE_ALIGNMENT - 1);
    void* block = reinterpret_cast<void*>(aligned);
    std::memcpy(static_cast<char*>(block) - sizeof(void*), &raw, sizeof(void*));
    return AlignedBlock(block);
}

void FreeAligned(void* block) noexcept
{
    if (block == nullptr)
        return;
    void* raw = nullptr;
    std::memcpy(&raw, static_cast<char*>(block) - sizeof(void*), sizeof(void*));
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
} // namespace BufferApi
