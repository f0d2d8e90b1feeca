#include "model/Attribute.h"

#include <cstring>
#include <utility>

namespace BufferApi {

I_AttributeBase::~I_AttributeBase() = default;

namespace Private {

AttributeString::AttributeString(std::string name, std::string value)
    : m_name(std::move(name)), m_value(std::move(value))
{
}

std::unique_ptr<I_AttributeBase> AttributeString::Clone() const
{
    return std::make_unique<AttributeString>(*this);
}

AttributeArray::AttributeArray(std::string name, E_DataType type, unsigned count, const void* data)
    : m_name(std::move(name)), m_type(type), m_count(count)
{
    const std::size_t bytes = std::size_t(count) * GetDataTypeSize(type); // at most 2^35: fits in 64 bits
    m_storage.resize((bytes + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t));
    if (bytes != 0)
        std::memcpy(m_storage.data(), data, bytes);
}

std::unique_ptr<I_AttributeBase> AttributeArray::Clone() const
{
    return std::make_unique<AttributeArray>(*this);
}

bool AttributeArray::IsArrayType(E_DataType type)
{
    return type == DATATYPE_WORD || type == DATATYPE_INT32 || type == DATATYPE_FLOAT || type == DATATYPE_DOUBLE;
}

} // namespace Private
} // namespace BufferApi
