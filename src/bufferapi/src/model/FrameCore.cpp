#include "model/FrameCore.h"

#include "model/AlignedMemory.h"
#include "model/LinearScale.h"

#include <RTE/Exception.h>

#include <algorithm>

namespace BufferApi {
namespace Private {

I_PlaneMemoryPolicy::~I_PlaneMemoryPolicy() = default;

FrameCore::FrameCore(E_DataType type_, unsigned width_, unsigned height_, unsigned depth_, PlaneMemory memory_)
    : type(type_), width(width_), height(height_), depth(depth_), memory(memory_)
{
    if (!IsValidDataType(type))
        RTE_THROW_MSG(RTE::VerificationFailed, "Unknown element type " << int(type) << " for a frame");
    if (width == 0 || height == 0 || depth == 0)
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Frame size " << width << " x " << height << " x " << depth << " has an empty dimension");
    CheckedPlaneBytes(width, height, GetDataTypeSize(type));
}

FrameCore::FrameCore(const FrameCore& other)
    : type(other.type), width(other.width), height(other.height), depth(other.depth), memory(other.memory),
      name(other.name), settings(other.settings), attributes(other.attributes)
{
    components.reserve(other.components.size());
    for (const auto& component : other.components)
        components.push_back(component->Clone());
    for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis)
        if (other.scales[axis])
            scales[axis] = other.scales[axis]->Clone();
}

Component* FrameCore::ComponentAt(unsigned index) const
{
    if (index >= components.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "Component number " << index << " out of range (frame has "
                                                                   << unsigned(components.size()) << ")");
    return components[index].get();
}

Component* FrameCore::Find(const std::string& componentName) const
{
    for (const auto& component : components)
        if (component->GetName() == componentName)
            return component.get();
    return nullptr;
}

Component* FrameCore::Add(const std::string& componentName, E_DataType componentType)
{
    if (componentName.empty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("A component needs a name"));
    if (Find(componentName) != nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "The frame already has a component '" << componentName << "'");
    if (!IsValidDataType(componentType))
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Unknown element type " << int(componentType) << " for component '" << componentName << "'");
    components.push_back(std::make_unique<Component>(componentName, componentType, width, height, depth, memory));
    return components.back().get();
}

bool FrameCore::Remove(const std::string& componentName)
{
    const auto it = std::find_if(components.begin(), components.end(),
                                 [&](const auto& component) { return component->GetName() == componentName; });
    if (it == components.end())
        return false;
    components.erase(it);
    return true;
}

namespace {
void VerifyAxis(E_ScaleType axis)
{
    if (unsigned(axis) >= SCALE_TYPE_COUNT)
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale axis " << int(axis) << " is not one of 0 to 4");
}
} // namespace

const I_Scale& FrameCore::Scale(E_ScaleType axis) const
{
    VerifyAxis(axis);
    const auto& scale = scales[unsigned(axis)];
    if (scale)
        return *scale;
    return LinearScale::Identity();
}

void FrameCore::SetScale(E_ScaleType axis, std::unique_ptr<I_Scale> scale)
{
    VerifyAxis(axis);
    scales[unsigned(axis)] = std::move(scale);
}

} // namespace Private
} // namespace BufferApi
