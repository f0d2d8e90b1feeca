#pragma once
// Synthetic camera buffers for the demo: the same index always gives the same bits.

#include <memory>

namespace BufferApi {
class I_Buffer;
}

namespace SetApiTool {

// Two image frames of width x height:
//   frame 0 "Camera 1": word pixels, a dark background with vignetting, read noise and bright
//                       particle images that drift with the index (12-bit values);
//   frame 1 "Temperature": float pixels of a smooth field in kelvin, NaN where masked out.
// Each frame has a mask that cuts off the corners outside an ellipse (zero bytes), the float typed
// scalar "Correlation" with a linear value scale, x/y/intensity scales, text and array attributes
// and a settings text; the buffer has attributes of its own.
std::unique_ptr<BufferApi::I_Buffer> MakeDemoBuffer(unsigned index, unsigned width, unsigned height);

} // namespace SetApiTool
