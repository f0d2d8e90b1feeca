#pragma once
// Widening lets frames of different sizes share a buffer whose frames all have the largest size.
// A reader writes a plane packed at its own size at the start of the target plane; widening then
// moves it in place to the top-left corner of the target and zeroes everything around it.

#include <SetApi/Export.h>

#include <cstddef>

namespace SetApi {
namespace Private {

// `data` holds targetWidth x targetHeight elements of `elementSize` bytes (1, 2, 4 or 8), the first
// width x height of which are a packed plane. Afterwards row y of that plane starts at element
// y * targetWidth, and the elements right of and below it are zero. Nothing is done when the
// sizes match. An element size other than 1, 2, 4, 8, or a plane larger than its target, raises
// RTE::VerificationFailed before anything is touched.
SETAPI_API void WidenPlane(void* data, std::size_t elementSize, unsigned width, unsigned height,
                           unsigned targetWidth, unsigned targetHeight);

} // namespace Private
} // namespace SetApi
