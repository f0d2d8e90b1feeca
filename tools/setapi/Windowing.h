#pragma once
// Linear windowing of a plane to 8-bit grey, as the PNG export shows data of any element type.

#include "PlaneView.h"

#include <vector>

namespace SetApiTool {

// The range of the valid, finite values of a plane. Masked-out pixels, NaN and infinities take no
// part. `empty` when no pixel qualifies.
struct S_Window {
    double low = 0;
    double high = 0;
    bool empty = true;
};

S_Window FindWindow(const S_PlaneView& view);

// One byte per pixel: low maps to 0, high to 255, linearly and rounded to nearest. Pixels that took
// no part in the window (masked out, NaN) are 0; +infinity is 255 and -infinity 0. A window of one
// value (a constant plane) gives 128 for every valid pixel; an empty window gives all 0. RGB pixels
// are shown by their luminance (0.299 R + 0.587 G + 0.114 B) without windowing.
std::vector<unsigned char> WindowToGrey8(const S_PlaneView& view);

} // namespace SetApiTool
