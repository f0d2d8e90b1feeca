// The non-virtual parts of the frame interfaces: component names and the helpers built on the
// virtual operations.
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>

#include <cstring>

namespace BufferApi {

const char* const I_Frame::COMPONENT_MASK = "MASK";
const char* const I_FrameImage::COMPONENT_PIXEL = "PIXEL";
const char* const I_FrameVector::COMPONENT_U = "U";
const char* const I_FrameVector::COMPONENT_V = "V";
const char* const I_FrameVector3C::COMPONENT_U = "U";
const char* const I_FrameVector3C::COMPONENT_V = "V";
const char* const I_FrameVector3C::COMPONENT_W = "W";

I_Frame::~I_Frame() = default;

I_Component* I_Frame::AddMask()
{
    if (I_Component* existing = GetMask())
        return existing;
    I_Component* mask = AddComponent(COMPONENT_MASK, DATATYPE_BYTE);
    for (unsigned p = 0; p < mask->GetPlaneCount(); ++p) {
        I_PlaneBase* plane = mask->GetPlane(p);
        if (plane->HasData())
            std::memset(plane->GetData(), 1, plane->GetByteSize());
    }
    return mask;
}

I_PlaneBase* I_FrameImage::GetPixelPlane(unsigned plane)
{
    I_Component* pixels = GetComponent(COMPONENT_PIXEL);
    if (pixels == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "Image frame '" << GetName() << "' has no component " << COMPONENT_PIXEL);
    return pixels->GetPlane(plane);
}

const I_PlaneBase* I_FrameImage::GetPixelPlane(unsigned plane) const
{
    return const_cast<I_FrameImage*>(this)->GetPixelPlane(plane);
}

} // namespace BufferApi
