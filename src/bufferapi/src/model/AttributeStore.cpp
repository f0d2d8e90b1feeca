#include <BufferApi/AttributeStore.h>

#include "model/Attribute.h"

#include <RTE/Exception.h>

#include <algorithm>
#include <utility>

namespace BufferApi {

AttributeStore::AttributeStore() = default;
AttributeStore::AttributeStore(AttributeStore&&) noexcept = default;
AttributeStore& AttributeStore::operator=(AttributeStore&&) noexcept = default;
AttributeStore::~AttributeStore() = default;

AttributeStore::AttributeStore(const AttributeStore& other)
{
    m_attributes.reserve(other.m_attributes.size());
    for (const auto& attribute : other.m_attributes)
        m_attributes.push_back(attribute->Clone());
}

AttributeStore& AttributeStore::operator=(const AttributeStore& other)
{
    if (this != &other) {
        AttributeStore copy(other);
        *this = std::move(copy);
    }
    return *this;
}

std::size_t AttributeStore::GetCount() const
{
    return m_attributes.size();
}

bool AttributeStore::IsEmpty() const
{
    return m_attributes.empty();
}

const I_AttributeBase& AttributeStore::At(std::size_t index) const
{
    if (index >= m_attributes.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "Attribute number " << QString::number(qulonglong(index))
                                                                   << " out of range (there are "
                                                                   << QString::number(qulonglong(m_attributes.size()))
                                                                   << ")");
    return *m_attributes[index];
}

const I_AttributeBase* AttributeStore::Find(const std::string& name) const
{
    for (const auto& attribute : m_attributes)
        if (attribute->GetName() == name)
            return attribute.get();
    return nullptr;
}

void AttributeStore::Set(std::unique_ptr<I_AttributeBase> attribute)
{
    RTE_VERIFY(attribute != nullptr, "Cannot set a null attribute");
    if (attribute->GetName().empty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("An attribute needs a name"));
    for (auto& existing : m_attributes) {
        if (existing->GetName() == attribute->GetName()) {
            existing = std::move(attribute);
            return;
        }
    }
    m_attributes.push_back(std::move(attribute));
}

void AttributeStore::SetString(const std::string& name, const std::string& value)
{
    if (name.empty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("An attribute needs a name"));
    Set(std::make_unique<Private::AttributeString>(name, value));
}

bool AttributeStore::SetArray(const std::string& name, unsigned count, E_DataType type, const void* data)
{
    if (name.empty() || !Private::AttributeArray::IsArrayType(type) || (count != 0 && data == nullptr))
        return false;
    Set(std::make_unique<Private::AttributeArray>(name, type, count, data));
    return true;
}

bool AttributeStore::Remove(const std::string& name)
{
    const auto it = std::find_if(m_attributes.begin(), m_attributes.end(),
                                 [&](const auto& attribute) { return attribute->GetName() == name; });
    if (it == m_attributes.end())
        return false;
    m_attributes.erase(it);
    return true;
}

void AttributeStore::Clear()
{
    m_attributes.clear();
}

} // namespace BufferApi
