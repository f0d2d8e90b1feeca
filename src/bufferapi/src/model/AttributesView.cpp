#include <BufferApi/Attributes.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <limits>

namespace BufferApi {

namespace {
AttributeStore& StoreOf(I_Buffer* buffer)
{
    RTE_VERIFY(buffer != nullptr, "Cannot view the attributes of a null buffer");
    return buffer->GetAttributeStore();
}

AttributeStore& StoreOf(I_Frame* frame)
{
    RTE_VERIFY(frame != nullptr, "Cannot view the attributes of a null frame");
    return frame->GetAttributeStore();
}

// The sink has no way to answer "not set", so what the store refuses is raised.
template <typename T>
void AddSinkArray(AttributeStore& store, const QString& name, std::size_t count, const T* values)
{
    if (name.isEmpty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("An attribute needs a name"));
    if (count > std::numeric_limits<unsigned>::max())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Attribute '" << name << "' has too many elements: " << QString::number(qulonglong(count)));
    if (!store.SetArray(name.toStdString(), unsigned(count), DataTypeOf<T>::value, values))
        RTE_THROW_MSG(RTE::VerificationFailed, "Attribute '" << name << "' has no data for its "
                                                             << QString::number(qulonglong(count)) << " elements");
}
} // namespace

C_AttributesView::C_AttributesView(AttributeStore& store) : m_store(store) {}

const I_AttributeBase* C_AttributesView::Get(const std::string& name) const
{
    return m_store.Find(name);
}

void C_AttributesView::GetList(std::vector<std::string>& names, std::vector<const I_AttributeBase*>& attributes) const
{
    names.clear();
    attributes.clear();
    names.reserve(m_store.GetCount());
    attributes.reserve(m_store.GetCount());
    for (std::size_t i = 0; i < m_store.GetCount(); ++i) {
        const I_AttributeBase& attribute = m_store.At(i);
        names.push_back(attribute.GetName());
        attributes.push_back(&attribute);
    }
}

bool C_AttributesView::Remove(const std::string& name)
{
    return m_store.Remove(name);
}

bool C_AttributesView::SetArray(const std::string& name, unsigned count, E_DataType type, const void* data)
{
    return m_store.SetArray(name, count, type, data);
}

bool C_AttributesView::SetString(const std::string& name, const std::string& value)
{
    if (name.empty())
        return false;
    m_store.SetString(name, value);
    return true;
}

std::string C_AttributesView::GetString(const std::string& name) const
{
    std::string value;
    Attributes::GetString(m_store.Find(name), value);
    return value;
}

void C_AttributesView::Add(const QString& name, const QString& value)
{
    if (name.isEmpty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("An attribute needs a name"));
    m_store.SetString(name.toStdString(), value.toStdString());
}

void C_AttributesView::AddArray(const QString& name, std::size_t count, const double* values)
{
    AddSinkArray(m_store, name, count, values);
}

void C_AttributesView::AddArray(const QString& name, std::size_t count, const float* values)
{
    AddSinkArray(m_store, name, count, values);
}

void C_AttributesView::AddArray(const QString& name, std::size_t count, const int* values)
{
    AddSinkArray(m_store, name, count, values);
}

void C_AttributesView::AddArray(const QString& name, std::size_t count, const unsigned short* values)
{
    AddSinkArray(m_store, name, count, values);
}

C_BufferAttributes::C_BufferAttributes(I_Buffer* buffer) : C_AttributesView(StoreOf(buffer)) {}

C_FrameAttributes::C_FrameAttributes(I_Frame* frame) : C_AttributesView(StoreOf(frame)) {}

} // namespace BufferApi
