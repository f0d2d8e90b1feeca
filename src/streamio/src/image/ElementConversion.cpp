#include "image/ElementConversion.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace SetApi {
namespace Private {
namespace ImageStream {

static_assert(sizeof(bool) == 1, "mask targets hold one byte per element");

namespace {

template <class Source>
std::uint16_t ToWord(Source value)
{
    if constexpr (std::is_floating_point<Source>::value) {
        if (!(value > 0)) // negative, zero and NaN
            return 0;
        if (value >= Source(65535))
            return 65535;
        return static_cast<std::uint16_t>(std::round(value));
    } else {
        return static_cast<std::uint16_t>(value);
    }
}

float ToFloat(double value)
{
    if (value > double(std::numeric_limits<float>::max()))
        return std::numeric_limits<float>::infinity();
    if (value < -double(std::numeric_limits<float>::max()))
        return -std::numeric_limits<float>::infinity();
    return static_cast<float>(value); // NaN stays NaN
}

template <class Source, class Target, class Function>
void Each(const void* src, Target* dst, std::size_t count, Function convert)
{
    const auto* in = static_cast<const Source*>(src);
    for (std::size_t i = 0; i < count; ++i)
        dst[i] = convert(in[i]);
}

template <class Target, class Function>
void Dispatch(ElementType from, const void* src, Target* dst, std::size_t count, Function convert)
{
    switch (from) {
    case ElementType::Word: Each<std::uint16_t>(src, dst, count, convert); break;
    case ElementType::Byte:
    case ElementType::Mask: Each<std::uint8_t>(src, dst, count, convert); break;
    case ElementType::Float: Each<float>(src, dst, count, convert); break;
    case ElementType::Double: Each<double>(src, dst, count, convert); break;
    }
}

} // namespace

template <>
bool IsNativeTarget<std::uint16_t>(ElementType type)
{
    return type == ElementType::Word;
}
template <>
bool IsNativeTarget<float>(ElementType type)
{
    return type == ElementType::Float;
}
template <>
bool IsNativeTarget<double>(ElementType type)
{
    return type == ElementType::Double;
}
template <>
bool IsNativeTarget<bool>(ElementType type)
{
    return type == ElementType::Byte || type == ElementType::Mask;
}

void ConvertElements(ElementType from, const void* src, std::uint16_t* dst, std::size_t count)
{
    Dispatch(from, src, dst, count, [](auto v) { return ToWord(v); });
}

void ConvertElements(ElementType from, const void* src, float* dst, std::size_t count)
{
    if (from == ElementType::Double)
        Each<double>(src, dst, count, [](double v) { return ToFloat(v); });
    else
        Dispatch(from, src, dst, count, [](auto v) { return static_cast<float>(v); });
}

void ConvertElements(ElementType from, const void* src, double* dst, std::size_t count)
{
    Dispatch(from, src, dst, count, [](auto v) { return static_cast<double>(v); });
}

void ConvertElements(ElementType from, const void* src, bool* dst, std::size_t count)
{
    if (from == ElementType::Byte || from == ElementType::Mask)
        std::memcpy(dst, src, count);
    else
        Dispatch(from, src, dst, count, [](auto v) { return v != 0; });
}

} // namespace ImageStream
} // namespace Private
} // namespace SetApi
