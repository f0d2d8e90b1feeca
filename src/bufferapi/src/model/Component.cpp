#include "model/Component.h"

#include "model/Plane.h"

#include <RTE/Exception.h>

#include <utility>

namespace BufferApi {

I_Component::~I_Component() = default;

namespace Private {

Component::Component(std::string name, E_DataType type, unsigned width, unsigned height, unsigned depth,
                     PlaneMemory memory)
    : m_name(std::move(name)), m_type(type)
{
    if (depth == 0)
        RTE_THROW_MSG(RTE::VerificationFailed, "Component '" << m_name << "' needs a depth of at least 1");
    m_planes.reserve(depth);
    for (unsigned p = 0; p < depth; ++p)
        m_planes.push_back(MakePlane(type, width, height, memory));
}

Component::Component(const Component& other)
    : m_name(other.m_name), m_type(other.m_type), m_scale(other.m_scale ? other.m_scale->Clone() : nullptr)
{
    m_planes.reserve(other.m_planes.size());
    for (const auto& plane : other.m_planes)
        m_planes.push_back(ClonePlane(*plane));
}

std::unique_ptr<Component> Component::Clone() const
{
    return std::unique_ptr<Component>(new Component(*this));
}

I_PlaneBase* Component::GetPlane(unsigned plane)
{
    if (plane >= m_planes.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane " << plane << " of component '" << m_name << "' out of range (depth "
                                                        << unsigned(m_planes.size()) << ")");
    return m_planes[plane].get();
}

const I_PlaneBase* Component::GetPlane(unsigned plane) const
{
    return const_cast<Component*>(this)->GetPlane(plane);
}

void Component::SetPlane(unsigned plane, std::unique_ptr<I_PlaneBase> replacement)
{
    const I_PlaneBase* old = GetPlane(plane);
    if (!replacement)
        RTE_THROW_MSG(RTE::VerificationFailed, "Null plane for plane " << plane << " of component '" << m_name << "'");
    if (replacement->GetDataType() != m_type || replacement->GetWidth() != old->GetWidth() ||
        replacement->GetHeight() != old->GetHeight())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Plane of type " << int(replacement->GetDataType()) << " and size " << replacement->GetWidth() << " x "
                                       << replacement->GetHeight() << " does not fit component '" << m_name << "' of type "
                                       << int(m_type) << " and size " << old->GetWidth() << " x " << old->GetHeight());
    m_planes[plane] = std::move(replacement);
}

} // namespace Private
} // namespace BufferApi
