#pragma once
// Element-wise conversion of a plane of the stream's element type into a target of another
// type, for loads into a target that is not the stream's own type:
// - to word: byte and mask values as they are; float and double rounded to the nearest integer
//   (halves away from zero) and clamped to 0..65535, NaN giving 0;
// - to float and double: the value (double to float rounds to nearest, beyond the float range
//   giving an infinity of the sign);
// - to bool: true for every nonzero value, NaN included; byte and mask planes are copied byte for
//   byte (the target is mask memory, one byte per element).

#include "image/ImageStreamFormat.h"

#include <cstddef>
#include <cstdint>

namespace SetApi {
namespace Private {
namespace ImageStream {

// Whether a target of this type takes the stream's bytes unchanged.
template <class Target>
bool IsNativeTarget(ElementType type);

void ConvertElements(ElementType from, const void* src, std::uint16_t* dst, std::size_t count);
void ConvertElements(ElementType from, const void* src, float* dst, std::size_t count);
void ConvertElements(ElementType from, const void* src, double* dst, std::size_t count);
void ConvertElements(ElementType from, const void* src, bool* dst, std::size_t count);

} // namespace ImageStream
} // namespace Private
} // namespace SetApi
