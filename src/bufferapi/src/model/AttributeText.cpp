// Attribute values as text. Floating-point elements use the shortest decimal form that reads
// back to the same value (std::to_chars without precision), so "0.1" stays "0.1" and no digit of
// a measured value is lost.
#include <BufferApi/Attributes.h>

#include <BufferApi/I_Attribute.h>

#include <charconv>

namespace BufferApi {
namespace Attributes {

namespace {
template <typename T>
void AppendElements(const void* data, unsigned count, std::string& text)
{
    const T* values = static_cast<const T*>(data);
    char digits[64];
    for (unsigned i = 0; i < count; ++i) {
        if (i != 0)
            text += ';';
        const auto result = std::to_chars(digits, digits + sizeof(digits), values[i]);
        text.append(digits, result.ptr);
    }
}
} // namespace

bool GetString(const I_AttributeBase* attribute, std::string& value)
{
    value.clear();
    if (attribute == nullptr)
        return false;
    if (attribute->IsString()) {
        value = static_cast<const I_AttributeString*>(attribute)->GetValue();
        return true;
    }
    const auto* array = static_cast<const I_AttributePlane*>(attribute);
    const void* data = array->GetData();
    const unsigned count = data == nullptr ? 0 : array->GetCount();
    switch (array->GetDataType()) {
    case DATATYPE_DOUBLE: AppendElements<double>(data, count, value); break;
    case DATATYPE_FLOAT: AppendElements<float>(data, count, value); break;
    case DATATYPE_INT32: AppendElements<int>(data, count, value); break;
    case DATATYPE_WORD: AppendElements<unsigned short>(data, count, value); break;
    default: break;
    }
    return true;
}

} // namespace Attributes
} // namespace BufferApi
