#include <DataObjects/C_BufferAttributes.h>
#include <DataObjects/GlobalAndFrameAttributes.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <RTE/Exception.h>

namespace DataObjects {

namespace {

template <typename T>
C_AttributeValue FromArray(const BufferApi::I_AttributePlane& plane)
{
    const auto* data = static_cast<const T*>(plane.GetData());
    const unsigned count = data ? plane.GetCount() : 0;
    if (count == 1)
        return C_AttributeValue(data[0]);
    return C_AttributeValue(std::vector<T>(data, data + count));
}

template <typename T>
bool SetArray(BufferApi::AttributeStore& store, const std::string& name, const C_AttributeValue& value)
{
    const std::vector<T> values = value.GetValue<std::vector<T>>();
    return store.SetArray(name, static_cast<unsigned>(values.size()), BufferApi::DataTypeOf<T>::value,
                          values.empty() ? nullptr : values.data());
}

} // namespace

C_AttributeValue ToAttributeValue(const BufferApi::I_AttributeBase& attribute)
{
    if (attribute.IsString()) {
        const auto& text = dynamic_cast<const BufferApi::I_AttributeString&>(attribute);
        return C_AttributeValue(text.GetValue());
    }
    const auto* plane = dynamic_cast<const BufferApi::I_AttributePlane*>(&attribute);
    if (plane == nullptr)
        return C_AttributeValue();
    switch (plane->GetDataType()) {
    case BufferApi::DATATYPE_WORD: return FromArray<unsigned short>(*plane);
    case BufferApi::DATATYPE_INT32: return FromArray<int>(*plane);
    case BufferApi::DATATYPE_FLOAT: return FromArray<float>(*plane);
    case BufferApi::DATATYPE_DOUBLE: return FromArray<double>(*plane);
    default: return C_AttributeValue();
    }
}

C_Attributes ToAttributes(const BufferApi::AttributeStore& store)
{
    C_Attributes attributes;
    for (std::size_t i = 0; i < store.GetCount(); ++i) {
        const BufferApi::I_AttributeBase& attribute = store.At(i);
        C_AttributeValue value = ToAttributeValue(attribute);
        if (!value.IsNull() && !attribute.GetName().empty())
            attributes.Set(attribute.GetName(), value);
    }
    return attributes;
}

C_BufferAttributes::C_BufferAttributes(BufferApi::I_Buffer& buffer) : m_store(buffer.GetAttributeStore()) {}
C_BufferAttributes::C_BufferAttributes(BufferApi::I_Frame& frame) : m_store(frame.GetAttributeStore()) {}
C_BufferAttributes::C_BufferAttributes(BufferApi::AttributeStore& store) : m_store(store) {}
C_BufferAttributes::~C_BufferAttributes() = default;

void C_BufferAttributes::Set(const std::string& name, const C_AttributeValue& value)
{
    RTE_VERIFY(!name.empty(), "Attribute name is empty");
    bool done = true;
    switch (value.GetType()) {
    case C_AttributeValue::TYPE_NULL: m_store.Remove(name); break;
    case C_AttributeValue::TYPE_STRING: m_store.SetString(name, value.GetValue<std::string>()); break;
    case C_AttributeValue::TYPE_WORD:
    case C_AttributeValue::TYPE_WORD_LIST: done = SetArray<unsigned short>(m_store, name, value); break;
    case C_AttributeValue::TYPE_INT:
    case C_AttributeValue::TYPE_INT_LIST: done = SetArray<int>(m_store, name, value); break;
    case C_AttributeValue::TYPE_FLOAT:
    case C_AttributeValue::TYPE_FLOAT_LIST: done = SetArray<float>(m_store, name, value); break;
    case C_AttributeValue::TYPE_DOUBLE:
    case C_AttributeValue::TYPE_DOUBLE_LIST: done = SetArray<double>(m_store, name, value); break;
    }
    if (!done)
        RTE_THROW_MSG(RTE::VerificationFailed, "Attribute '" << name << "' could not be set");
}

bool C_BufferAttributes::Remove(const std::string& name) { return m_store.Remove(name); }

void C_BufferAttributes::Clear() { m_store.Clear(); }

bool C_BufferAttributes::Contains(const std::string& name) const { return m_store.Find(name) != nullptr; }

bool C_BufferAttributes::IsEmpty() const { return m_store.IsEmpty(); }

C_Attribute C_BufferAttributes::GetAttribute(const std::string& name) const
{
    const BufferApi::I_AttributeBase* found = m_store.Find(name);
    return found ? C_Attribute(name, ToAttributeValue(*found)) : C_Attribute();
}

C_AttributeValue C_BufferAttributes::GetAttributeValue(const std::string& name) const
{
    const BufferApi::I_AttributeBase* found = m_store.Find(name);
    return found ? ToAttributeValue(*found) : C_AttributeValue();
}

std::vector<C_Attribute> C_BufferAttributes::GetAttributes() const { return ToAttributes(m_store).GetAttributes(); }

std::unique_ptr<C_AttributesContainer> C_BufferAttributes::Clone() const
{
    return std::make_unique<C_Attributes>(ToAttributes(m_store));
}

GlobalAndFrameAttributes GetBufferAttributes(const BufferApi::I_Buffer& buffer)
{
    GlobalAndFrameAttributes result;
    result.global = ToAttributes(buffer.GetAttributeStore());
    const unsigned frameCount = buffer.GetNumberOfFrames();
    result.frames.reserve(frameCount);
    for (unsigned i = 0; i < frameCount; ++i)
        result.frames.push_back(ToAttributes(buffer.GetFrame(i)->GetAttributeStore()));
    return result;
}

} // namespace DataObjects
