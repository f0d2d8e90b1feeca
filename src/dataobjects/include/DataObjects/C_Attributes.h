#pragma once
// Attributes held in memory. A value type: copies are independent.

#include <DataObjects/C_AttributesContainer.h>

namespace DataObjects {

class DATAOBJECTS_API C_Attributes : public C_AttributesContainer {
public:
    C_Attributes() = default;
    C_Attributes(const C_Attributes&) = default;
    C_Attributes& operator=(const C_Attributes&) = default;
    C_Attributes(C_Attributes&&) noexcept = default;
    C_Attributes& operator=(C_Attributes&&) noexcept = default;
    ~C_Attributes() override;

    void Set(const std::string& name, const C_AttributeValue& value) override;
    bool Remove(const std::string& name) override;
    void Clear() override;
    bool Contains(const std::string& name) const override;
    bool IsEmpty() const override;
    C_Attribute GetAttribute(const std::string& name) const override;
    C_AttributeValue GetAttributeValue(const std::string& name) const override;
    std::vector<C_Attribute> GetAttributes() const override;
    std::unique_ptr<C_AttributesContainer> Clone() const override;

    std::size_t GetCount() const { return m_attributes.size(); }

    bool operator==(const C_Attributes& other) const { return m_attributes == other.m_attributes; }
    bool operator!=(const C_Attributes& other) const { return !(*this == other); }

private:
    const C_Attribute* Find(const std::string& name) const;

    std::vector<C_Attribute> m_attributes;
};

} // namespace DataObjects
