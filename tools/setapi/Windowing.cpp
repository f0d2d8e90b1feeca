#include "Windowing.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace SetApiTool {

namespace {

bool IsValid(const S_PlaneView& view, std::size_t i) { return view.mask == nullptr || view.mask[i] != 0; }

unsigned char Luminance(std::uint32_t rgb)
{
    const double r = (rgb >> 16) & 0xff, g = (rgb >> 8) & 0xff, b = rgb & 0xff;
    return static_cast<unsigned char>(std::lround(0.299 * r + 0.587 * g + 0.114 * b));
}

} // namespace

S_Window FindWindow(const S_PlaneView& view)
{
    S_Window window;
    const std::size_t count = std::size_t(view.width) * view.height;
    for (std::size_t i = 0; i < count; ++i) {
        if (!IsValid(view, i))
            continue;
        const double value = ValueAt(view, i);
        if (!std::isfinite(value))
            continue;
        if (window.empty) {
            window.low = window.high = value;
            window.empty = false;
        } else if (value < window.low) {
            window.low = value;
        } else if (value > window.high) {
            window.high = value;
        }
    }
    return window;
}

std::vector<unsigned char> WindowToGrey8(const S_PlaneView& view)
{
    const std::size_t count = std::size_t(view.width) * view.height;
    std::vector<unsigned char> grey(count, 0);

    if (view.type == BufferApi::DATATYPE_RGB) {
        for (std::size_t i = 0; i < count; ++i) {
            std::uint32_t rgb;
            std::memcpy(&rgb, static_cast<const unsigned char*>(view.data) + i * sizeof rgb, sizeof rgb);
            grey[i] = IsValid(view, i) ? Luminance(rgb) : 0;
        }
        return grey;
    }

    const S_Window window = FindWindow(view);
    if (window.empty)
        return grey;
    // Halving both ends keeps the span finite even for a window from -DBL_MAX to DBL_MAX; it is zero
    // exactly when the plane is constant (or its values differ only below the smallest normal).
    const double halfLow = window.low * 0.5;
    const double halfSpan = window.high * 0.5 - halfLow;
    for (std::size_t i = 0; i < count; ++i) {
        if (!IsValid(view, i))
            continue;
        const double value = ValueAt(view, i);
        if (std::isnan(value))
            continue;
        if (std::isinf(value)) {
            grey[i] = value > 0 ? 255 : 0;
            continue;
        }
        if (halfSpan <= 0) {
            grey[i] = 128;
            continue;
        }
        const double t = (value * 0.5 - halfLow) / halfSpan;
        const long level = std::lround(t * 255.0);
        grey[i] = static_cast<unsigned char>(level < 0 ? 0 : level > 255 ? 255 : level);
    }
    return grey;
}

} // namespace SetApiTool
