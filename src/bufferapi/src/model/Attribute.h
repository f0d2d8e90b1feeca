#pragma once
// The concrete attributes: a text, or an array of word, 32-bit int, float or double elements.

#include <BufferApi/Export.h>
#include <BufferApi/I_Attribute.h>

#include <cstdint>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API AttributeString final : public I_AttributeString {
public:
    AttributeString(std::string name, std::string value);
    const std::string& GetName() const override { return m_name; }
    bool IsString() const override { return true; }
    std::unique_ptr<I_AttributeBase> Clone() const override;
    const std::string& GetValue() const override { return m_value; }

private:
    std::string m_name;
    std::string m_value;
};

class BUFFERAPI_API AttributeArray final : public I_AttributePlane {
public:
    // Copies count elements of `type` from `data`; the caller has checked type and data.
    AttributeArray(std::string name, E_DataType type, unsigned count, const void* data);
    const std::string& GetName() const override { return m_name; }
    bool IsString() const override { return false; }
    std::unique_ptr<I_AttributeBase> Clone() const override;
    E_DataType GetDataType() const override { return m_type; }
    unsigned GetCount() const override { return m_count; }
    const void* GetData() const override { return m_count == 0 ? nullptr : m_storage.data(); }

    // Whether arrays of that element type can be stored.
    static bool IsArrayType(E_DataType type);

private:
    std::string m_name;
    E_DataType m_type;
    unsigned m_count;
    std::vector<std::uint64_t> m_storage; // 8-byte words keep every element type aligned
};

} // namespace Private
} // namespace BufferApi
