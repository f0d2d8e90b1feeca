#pragma once
// The element type code of a pixel type, for the image templates: DATATYPE_UNKNOWN for a type that
// the buffers cannot hold (such images are refused when they are turned into buffers).

#include <BufferApi/DataType.h>

#include <type_traits>

namespace DataObjects {

template <typename T, typename = void>
struct PixelTypeOf {
    static constexpr BufferApi::E_DataType value = BufferApi::DATATYPE_UNKNOWN;
};
template <typename T>
struct PixelTypeOf<T, std::void_t<decltype(BufferApi::DataTypeOf<T>::value)>> {
    static constexpr BufferApi::E_DataType value = BufferApi::DataTypeOf<T>::value;
};

} // namespace DataObjects
