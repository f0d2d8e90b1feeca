#include <SetApi/stream/PlaneWidening.h>

#include <RTE/Exception.h>

#include <cstdint>
#include <cstring>

namespace SetApi {
namespace Private {

namespace {

// Works on elements of one size; the element type only fixes the stride.
template <typename Element>
void Widen(Element* data, std::size_t width, std::size_t height, std::size_t targetWidth, std::size_t targetHeight)
{
    if (width != targetWidth) {
        // Row y moves from y * width to y * targetWidth, which is never before its source: walking
        // from the last row to the first, no row is overwritten before it has been moved.
        for (std::size_t y = height; y-- > 0;) {
            Element* target = data + y * targetWidth;
            std::memmove(target, data + y * width, width * sizeof(Element));
            std::memset(target + width, 0, (targetWidth - width) * sizeof(Element));
        }
    }
    std::memset(data + height * targetWidth, 0, (targetHeight - height) * targetWidth * sizeof(Element));
}

} // namespace

void WidenPlane(void* data, std::size_t elementSize, unsigned width, unsigned height, unsigned targetWidth,
                unsigned targetHeight)
{
    if (elementSize != 1 && elementSize != 2 && elementSize != 4 && elementSize != 8)
        RTE_THROW_MSG(RTE::VerificationFailed, "Planes of " << elementSize << "-byte elements cannot be widened.");
    RTE_VERIFY(width <= targetWidth && height <= targetHeight, "A plane cannot be widened to a smaller size.");
    if (width == targetWidth && height == targetHeight)
        return;
    switch (elementSize) {
    case 1:
        Widen(static_cast<std::uint8_t*>(data), width, height, targetWidth, targetHeight);
        break;
    case 2:
        Widen(static_cast<std::uint16_t*>(data), width, height, targetWidth, targetHeight);
        break;
    case 4:
        Widen(static_cast<std::uint32_t*>(data), width, height, targetWidth, targetHeight);
        break;
    case 8:
        Widen(static_cast<std::uint64_t*>(data), width, height, targetWidth, targetHeight);
        break;
    }
}

} // namespace Private
} // namespace SetApi
