#pragma once
// Reading one element of raw plane memory of a given element type as double.

#include <BufferApi/DataType.h>

#include <cstddef>

namespace DataObjects::Private {

inline double ElementAsDouble(const void* data, BufferApi::E_DataType type, std::size_t index)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE: return static_cast<const unsigned char*>(data)[index];
    case BufferApi::DATATYPE_DOUBLE: return static_cast<const double*>(data)[index];
    case BufferApi::DATATYPE_FLOAT: return static_cast<const float*>(data)[index];
    case BufferApi::DATATYPE_INT32: return static_cast<const int*>(data)[index];
    case BufferApi::DATATYPE_RGB:
    case BufferApi::DATATYPE_UINT32: return static_cast<const unsigned int*>(data)[index];
    case BufferApi::DATATYPE_WORD: return static_cast<const unsigned short*>(data)[index];
    default: return 0.0;
    }
}

} // namespace DataObjects::Private
