// Typed scalars are stored as components of the frame named TYPED_SCALAR_PREFIX + name, so
// "TS:Correlation" holds the scalar "Correlation". The prefix keeps them apart from the frame's
// own components (pixels, mask, vector components); buffer files store them as ordinary
// components under the prefixed name. Their value scale is the component's scale.
#include <BufferApi/TypedScalar.h>

#include "model/LinearScale.h"
#include "model/TypedScalarName.h"

#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

namespace BufferApi {

void CreateTypedScalarInFrame(I_Frame* frame, const std::string& name, E_DataType type)
{
    RTE_VERIFY(frame != nullptr, "Cannot create a typed scalar in a null frame");
    RTE_VERIFY(!name.empty(), "A typed scalar needs a name");
    const std::string componentName = Private::TypedScalarComponentName(name);
    if (frame->GetComponent(componentName) != nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "The frame already has a typed scalar '" << name << "'");
    I_Component* component = frame->AddComponent(componentName, type);
    component->SetScale(Private::LinearScale::Identity().Clone());
}

std::vector<std::string> GetNamesOfFrameBoundTypedScalars(const I_Frame* frame)
{
    RTE_VERIFY(frame != nullptr, "Cannot list the typed scalars of a null frame");
    std::vector<std::string> names;
    for (unsigned i = 0; i < frame->GetComponentCount(); ++i) {
        std::string name;
        if (Private::TypedScalarNameOf(frame->GetComponentAt(i)->GetName(), name))
            names.push_back(name);
    }
    return names;
}

C_TypedScalarFrame::C_TypedScalarFrame(I_Frame* frame, const std::string& name) : m_component(nullptr), m_name(name)
{
    RTE_VERIFY(frame != nullptr, "Cannot access a typed scalar of a null frame");
    m_component = frame->GetComponent(Private::TypedScalarComponentName(name));
    if (m_component == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "The frame has no typed scalar '" << name << "'");
}

E_DataType C_TypedScalarFrame::GetDataType() const
{
    return m_component->GetDataType();
}

I_PlaneBase* C_TypedScalarFrame::GetComponent(unsigned plane)
{
    return m_component->GetPlane(plane);
}

const I_Scale& C_TypedScalarFrame::GetScale() const
{
    const I_Scale* scale = m_component->GetScale();
    if (scale != nullptr)
        return *scale;
    return Private::LinearScale::Identity();
}

void C_TypedScalarFrame::SetLinearScale(double factor, double offset, const std::string& unit,
                                        const std::string& description)
{
    m_component->SetScale(std::make_unique<Private::LinearScale>(factor, offset, unit, description));
}

} // namespace BufferApi
