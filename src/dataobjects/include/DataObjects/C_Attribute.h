#pragma once
// One named attribute value.

#include <DataObjects/C_AttributeValue.h>

#include <string>
#include <utility>

namespace DataObjects {

class DATAOBJECTS_API C_Attribute {
public:
    C_Attribute() = default;
    C_Attribute(std::string name, C_AttributeValue value) : m_name(std::move(name)), m_value(std::move(value)) {}

    const std::string& GetName() const { return m_name; }
    const C_AttributeValue& GetValue() const { return m_value; }
    void SetValue(C_AttributeValue value) { m_value = std::move(value); }
    // No name and a null value: what a store answers for a name it does not hold.
    bool IsNull() const { return m_value.IsNull(); }

    bool operator==(const C_Attribute& other) const { return m_name == other.m_name && m_value == other.m_value; }
    bool operator!=(const C_Attribute& other) const { return !(*this == other); }

private:
    std::string m_name;
    C_AttributeValue m_value;
};

} // namespace DataObjects
