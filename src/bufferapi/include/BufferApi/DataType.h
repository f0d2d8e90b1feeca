#pragma once
// Element types of frames, planes and array attributes, by their stored codes.

#include <BufferApi/Export.h>

#include <cstddef>

namespace BufferApi {

enum E_DataType {
    DATATYPE_UNKNOWN = 0,
    DATATYPE_BYTE = 1,   // unsigned 8-bit; masks are byte planes read as bool
    DATATYPE_RGB = 2,    // colour, one 32-bit word 0x00RRGGBB per pixel
    DATATYPE_DOUBLE = 3, // 64-bit IEEE
    DATATYPE_FLOAT = 4,  // 32-bit IEEE
    DATATYPE_INT32 = 5,  // signed 32-bit
    DATATYPE_UINT32 = 6, // unsigned 32-bit
    DATATYPE_WORD = 7    // unsigned 16-bit
};

// Size of one element in bytes: 1, 4, 8, 4, 4, 4, 2 for the codes 1 to 7; 0 for any other value.
BUFFERAPI_API std::size_t GetDataTypeSize(E_DataType type);

// Whether the value is one of the codes 1 to 7.
BUFFERAPI_API bool IsValidDataType(int code);

// The code of an element type, for templates: DataTypeOf<unsigned short>::value == DATATYPE_WORD.
template <typename T> struct DataTypeOf;
template <> struct DataTypeOf<unsigned char> { static constexpr E_DataType value = DATATYPE_BYTE; };
template <> struct DataTypeOf<double> { static constexpr E_DataType value = DATATYPE_DOUBLE; };
template <> struct DataTypeOf<float> { static constexpr E_DataType value = DATATYPE_FLOAT; };
template <> struct DataTypeOf<int> { static constexpr E_DataType value = DATATYPE_INT32; };
template <> struct DataTypeOf<unsigned int> { static constexpr E_DataType value = DATATYPE_UINT32; };
template <> struct DataTypeOf<unsigned short> { static constexpr E_DataType value = DATATYPE_WORD; };

} // namespace BufferApi
