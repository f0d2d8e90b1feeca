#pragma once
// One plane of a frame as the picture writers see it: element type, size, the elements and, when
// the frame has one, the matching mask plane. A view borrows the memory; the frame must outlive it.

#include <BufferApi/DataType.h>

#include <cstddef>
#include <string>

namespace BufferApi {
class I_Frame;
}

namespace SetApiTool {

struct S_PlaneView {
    BufferApi::E_DataType type = BufferApi::DATATYPE_UNKNOWN;
    unsigned width = 0;
    unsigned height = 0;
    // width * height packed elements of `type`.
    const void* data = nullptr;
    // width * height bytes, non-zero meaning valid; null when every pixel is valid.
    const unsigned char* mask = nullptr;
};

// Plane 0 of the frame's pixels (of the first component of a vector frame) with mask plane 0.
// A frame without pixel memory raises RTE::VerificationFailed.
S_PlaneView ViewOfFirstPlane(const BufferApi::I_Frame& frame);

// The element at position i converted to double (an RGB pixel gives its packed 0x00RRGGBB value).
double ValueAt(const S_PlaneView& view, std::size_t i);

// A short lower-case name of the element type: "byte", "rgb", "double", "float", "int32", "uint32",
// "word", or "unknown (<code>)".
std::string DataTypeName(BufferApi::E_DataType type);

} // namespace SetApiTool
