#include <DataObjects/C_Attributes.h>

#include <RTE/Exception.h>

#include <algorithm>

namespace DataObjects {

C_AttributesContainer::~C_AttributesContainer() = default;

void C_AttributesContainer::SetAll(const C_AttributesContainer& other)
{
    for (const C_Attribute& attribute : other.GetAttributes())
        Set(attribute.GetName(), attribute.GetValue());
}

C_Attributes::~C_Attributes() = default;

const C_Attribute* C_Attributes::Find(const std::string& name) const
{
    auto it = std::find_if(m_attributes.begin(), m_attributes.end(),
                           [&](const C_Attribute& attribute) { return attribute.GetName() == name; });
    return it == m_attributes.end() ? nullptr : &*it;
}

void C_Attributes::Set(const std::string& name, const C_AttributeValue& value)
{
    RTE_VERIFY(!name.empty(), "Attribute name is empty");
    if (value.IsNull()) {
        Remove(name);
        return;
    }
    for (C_Attribute& attribute : m_attributes) {
        if (attribute.GetName() == name) {
            attribute.SetValue(value);
            return;
        }
    }
    m_attributes.emplace_back(name, value);
}

bool C_Attributes::Remove(const std::string& name)
{
    auto it = std::find_if(m_attributes.begin(), m_attributes.end(),
                           [&](const C_Attribute& attribute) { return attribute.GetName() == name; });
    if (it == m_attributes.end())
        return false;
    m_attributes.erase(it);
    return true;
}

void C_Attributes::Clear() { m_attributes.clear(); }

bool C_Attributes::Contains(const std::string& name) const { return Find(name) != nullptr; }

bool C_Attributes::IsEmpty() const { return m_attributes.empty(); }

C_Attribute C_Attributes::GetAttribute(const std::string& name) const
{
    const C_Attribute* found = Find(name);
    return found ? *found : C_Attribute();
}

C_AttributeValue C_Attributes::GetAttributeValue(const std::string& name) const
{
    const C_Attribute* found = Find(name);
    return found ? found->GetValue() : C_AttributeValue();
}

std::vector<C_Attribute> C_Attributes::GetAttributes() const { return m_attributes; }

std::unique_ptr<C_AttributesContainer> C_Attributes::Clone() const { return std::make_unique<C_Attributes>(*this); }

} // namespace DataObjects
