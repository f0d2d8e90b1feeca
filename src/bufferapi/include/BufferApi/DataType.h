#pragma once
// Element types of frames and planes, by their stored codes.

namespace BufferApi {

enum E_DataType {
    DATATYPE_UNKNOWN = 0,
    DATATYPE_BYTE = 1,   // unsigned 8-bit; masks are byte planes read as bool
    DATATYPE_RGB = 2,    // 3 x 8-bit colour
    DATATYPE_DOUBLE = 3, // 64-bit IEEE
    DATATYPE_FLOAT = 4,  // 32-bit IEEE
    DATATYPE_INT32 = 5,  // signed 32-bit
    DATATYPE_UINT32 = 6, // unsigned 32-bit
    DATATYPE_WORD = 7    // unsigned 16-bit
};

} // namespace BufferApi
