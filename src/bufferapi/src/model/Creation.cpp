// The public creation functions: frames with zero-filled (or, for readers, unspecified) planes,
// planes over caller memory.
#include <BufferApi/Creation.h>

#include "model/Buffer.h"
#include "model/FrameFactory.h"
#include "model/Plane.h"

#include <memory>

namespace BufferApi {

I_Buffer* CreateBuffer()
{
    return new Private::Buffer();
}

I_Buffer* CreateBufferCopy(const I_Buffer& source)
{
    std::unique_ptr<I_Buffer> copy(CreateBuffer());
    for (unsigned frame = 0; frame < source.GetNumberOfFrames(); ++frame)
        copy->AddFrame(source.GetFrame(frame)->Clone());
    copy->GetAttributeStore() = source.GetAttributeStore();
    return copy.release();
}

I_FrameImage* CreateImageFrame(E_DataType type, unsigned width, unsigned height, unsigned depth)
{
    auto frame = Private::CreateFrame(E_FrameKind::Image, type, width, height, depth, 1, Private::PlaneMemory::Zeroed);
    return static_cast<I_FrameImage*>(frame.release());
}

I_FrameImage* CreateImageFrameForOverwrite(E_DataType type, unsigned width, unsigned height, unsigned depth)
{
    auto frame =
        Private::CreateFrame(E_FrameKind::Image, type, width, height, depth, 1, Private::PlaneMemory::Uninitialised);
    // Only the planes made here are left as they come; whatever is added later is zero-filled.
    Private::SetPlaneMemory(*frame, Private::PlaneMemory::Zeroed);
    return static_cast<I_FrameImage*>(frame.release());
}

I_FrameVector* CreateVectorFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, unsigned gridSize)
{
    auto frame =
        Private::CreateFrame(E_FrameKind::Vector, type, width, height, depth, gridSize, Private::PlaneMemory::Zeroed);
    return static_cast<I_FrameVector*>(frame.release());
}

I_FrameVector3C* CreateVector3CFrame(E_DataType type, unsigned width, unsigned height, unsigned depth,
                                     unsigned gridSize)
{
    auto frame =
        Private::CreateFrame(E_FrameKind::Vector3C, type, width, height, depth, gridSize, Private::PlaneMemory::Zeroed);
    return static_cast<I_FrameVector3C*>(frame.release());
}

I_PlaneBase* CreatePlane(E_DataType type, unsigned width, unsigned height, void* data)
{
    if (data == nullptr)
        return Private::MakePlane(type, width, height, Private::PlaneMemory::Zeroed).release();
    return Private::MakeViewPlane(type, width, height, data).release();
}

} // namespace BufferApi
