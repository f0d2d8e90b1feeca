#pragma once
// Bit-exact comparison of two buffers, as the demo checks what it reads back.

#include <string>

namespace BufferApi {
class I_Buffer;
}

namespace SetApiTool {

// Empty when the buffers are equal bit for bit: frame count; per frame its kind, name, size, depth,
// element type, settings text, grid size (vector frames), the five axis scales, the attributes and
// every component (the pixels, the mask, typed scalars, vector components) in order with name,
// type, value scale and the bytes of every plane; and the buffer attributes. Scales compare factor
// and offset by their bits. Otherwise a description of the first difference found.
std::string FirstDifference(const BufferApi::I_Buffer& expected, const BufferApi::I_Buffer& actual);

} // namespace SetApiTool
