#include <BufferApi/DataType.h>

namespace BufferApi {

std::size_t GetDataTypeSize(E_DataType type)
{
    switch (type) {
    case DATATYPE_BYTE: return 1;
    case DATATYPE_RGB: return 4;
    case DATATYPE_DOUBLE: return 8;
    case DATATYPE_FLOAT: return 4;
    case DATATYPE_INT32: return 4;
    case DATATYPE_UINT32: return 4;
    case DATATYPE_WORD: return 2;
    default: return 0;
    }
}

bool IsValidDataType(int code)
{
    return code >= DATATYPE_BYTE && code <= DATATYPE_WORD;
}

} // namespace BufferApi
