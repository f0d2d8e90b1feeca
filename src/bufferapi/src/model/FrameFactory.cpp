#include "model/FrameFactory.h"

#include "model/FrameKinds.h"

#include <RTE/Exception.h>

namespace BufferApi {
namespace Private {

std::unique_ptr<I_Frame> CreateEmptyFrame(E_FrameKind kind, E_DataType type, unsigned width, unsigned height,
                                          unsigned depth, unsigned gridSize, PlaneMemory memory)
{
    switch (kind) {
    case E_FrameKind::Image: return std::make_unique<ImageFrame>(type, width, height, depth, memory);
    case E_FrameKind::Vector: return std::make_unique<VectorFrame>(type, width, height, depth, gridSize, memory);
    case E_FrameKind::Vector3C:
        return std::make_unique<Vector3CFrame>(type, width, height, depth, gridSize, memory);
    }
    RTE_THROW_MSG(RTE::VerificationFailed, "Unknown frame kind " << int(kind));
}

std::unique_ptr<I_Frame> CreateFrame(E_FrameKind kind, E_DataType type, unsigned width, unsigned height,
                                     unsigned depth, unsigned gridSize, PlaneMemory memory)
{
    auto frame = CreateEmptyFrame(kind, type, width, height, depth, gridSize, memory);
    switch (kind) {
    case E_FrameKind::Image: frame->AddComponent(I_FrameImage::COMPONENT_PIXEL, type); break;
    case E_FrameKind::Vector:
        frame->AddComponent(I_FrameVector::COMPONENT_U, type);
        frame->AddComponent(I_FrameVector::COMPONENT_V, type);
        break;
    case E_FrameKind::Vector3C:
        frame->AddComponent(I_FrameVector3C::COMPONENT_U, type);
        frame->AddComponent(I_FrameVector3C::COMPONENT_V, type);
        frame->AddComponent(I_FrameVector3C::COMPONENT_W, type);
        break;
    }
    return frame;
}

namespace {
I_PlaneMemoryPolicy& PolicyOf(const I_Frame& frame)
{
    auto* policy = dynamic_cast<I_PlaneMemoryPolicy*>(const_cast<I_Frame*>(&frame));
    RTE_VERIFY(policy != nullptr, "The frame was not made by the buffer library");
    return *policy;
}
} // namespace

PlaneMemory GetPlaneMemory(const I_Frame& frame)
{
    return PolicyOf(frame).GetPlaneMemory();
}

void SetPlaneMemory(I_Frame& frame, PlaneMemory memory)
{
    I_PlaneMemoryPolicy& policy = PolicyOf(frame);
    if ((policy.GetPlaneMemory() == PlaneMemory::None) != (memory == PlaneMemory::None))
        RTE_THROW_MSG(RTE::VerificationFailed, "Frame '" << frame.GetName()
                                                         << "': plane memory cannot be switched to or from none");
    policy.SetPlaneMemory(memory);
}

} // namespace Private
} // namespace BufferApi
