#include <DataObjects/C_BufferAttributes.h>
#include <DataObjects/ImageConversion.h>

#include "PixelDispatch.h"

#include <BufferApi/I_Component.h>
#include <BufferApi/I_PlaneBase.h>
#include <RTE/Exception.h>

#include <cstring>

namespace DataObjects {

namespace {

// The pixel plane of an image frame, checked for type, range and memory.
const BufferApi::I_PlaneBase& CheckedPixelPlane(const BufferApi::I_FrameImage& frame, unsigned plane)
{
    const BufferApi::E_DataType type = frame.GetDataType();
    if (type == BufferApi::DATATYPE_RGB)
        RTE_THROW(RTE::Exception, QStringLiteral("RGB images are not supported"));
    if (type < BufferApi::DATATYPE_BYTE || type > BufferApi::DATATYPE_WORD)
        RTE_THROW_MSG(RTE::Exception, "Unknown image data type " << static_cast<int>(type));
    if (plane >= frame.GetDepth())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Plane " << plane << " is out of range for a frame of depth " << frame.GetDepth());
    const BufferApi::I_PlaneBase* pixels = frame.GetPixelPlane(plane);
    RTE_VERIFY(pixels != nullptr && pixels->HasData(), "Frame has no pixel data");
    return *pixels;
}

template <typename T>
void CopyPixels(ImageData<T>& data, const BufferApi::I_PlaneBase& plane)
{
    std::memcpy(data.GetData(), plane.GetData(), data.GetPixelCount() * sizeof(T));
}

std::unique_ptr<ImageDataVariant> MakeImageData(const BufferApi::I_FrameImage& frame, unsigned plane)
{
    const BufferApi::I_PlaneBase& pixels = CheckedPixelPlane(frame, plane);
    std::unique_ptr<ImageDataVariant> result;
    Private::DispatchByDataType(frame.GetDataType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        auto data = std::make_unique<ImageData<T>>(pixels.GetWidth(), pixels.GetHeight());
        CopyPixels(*data, pixels);
        result = std::move(data);
    });
    return result;
}

std::unique_ptr<ImageVariant> MakeImage(BufferApi::I_FrameImage& frame, unsigned plane, bool withMask)
{
    const BufferApi::I_PlaneBase& pixels = CheckedPixelPlane(frame, plane);
    std::unique_ptr<ImageVariant> image;
    Private::DispatchByDataType(frame.GetDataType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        auto typed = std::make_unique<Image<T>>(pixels.GetWidth(), pixels.GetHeight());
        CopyPixels(typed->GetData(), pixels);
        image = std::move(typed);
    });

    image->SetScaleX(GetScaleFromFrame(frame, BufferApi::SCALE_X));
    image->SetScaleY(GetScaleFromFrame(frame, BufferApi::SCALE_Y));
    image->SetScaleI(GetScaleFromFrame(frame, BufferApi::SCALE_I));
    image->GetAttributes() = ToAttributes(frame.GetAttributeStore());
    image->GetScalarFields().DeepCopyFrom(GetScalarFields(frame, plane));

    const BufferApi::I_Component* mask = withMask ? frame.GetMask() : nullptr;
    if (mask != nullptr && plane < mask->GetPlaneCount()) {
        const BufferApi::I_PlaneBase* maskPlane = mask->GetPlane(plane);
        if (maskPlane != nullptr && maskPlane->HasData() && maskPlane->GetWidth() == image->GetWidth() &&
            maskPlane->GetHeight() == image->GetHeight())
            std::memcpy(image->GetMask().GetData(), maskPlane->GetData(), image->GetMask().GetByteSize());
    }
    return image;
}

BufferApi::I_FrameImage& ImageFrameOf(BufferApi::I_Buffer& buffer, unsigned frame)
{
    if (frame >= buffer.GetNumberOfFrames())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Frame " << frame << " is out of range for a buffer of " << buffer.GetNumberOfFrames()
                               << " frames");
    auto* image = dynamic_cast<BufferApi::I_FrameImage*>(buffer.GetFrame(frame));
    RTE_VERIFY(image != nullptr, "Frame of buffer is not from type image");
    return *image;
}

ImageVolumeVariant MakeVolume(BufferApi::I_FrameImage& frame, bool withMask)
{
    ImageVolumeVariant volume;
    volume.SetName(frame.GetName());
    for (unsigned plane = 0; plane < frame.GetDepth(); ++plane)
        volume.AddXYPlane(MakeImage(frame, plane, withMask));
    return volume;
}

} // namespace

std::unique_ptr<ImageVariant> GetImage(BufferApi::I_FrameImage&& frame, unsigned plane, bool withMask)
{
    return MakeImage(frame, plane, withMask);
}

std::unique_ptr<ImageDataVariant> GetImageData(BufferApi::I_FrameImage&& frame, unsigned plane)
{
    return MakeImageData(frame, plane);
}

std::unique_ptr<ImageVolumeVariant> GetImageVolume(BufferApi::I_Buffer&& buffer, unsigned frame, bool withMask)
{
    return std::make_unique<ImageVolumeVariant>(MakeVolume(ImageFrameOf(buffer, frame), withMask));
}

std::unique_ptr<ImageBufferVariant> GetImageBuffer(BufferApi::I_Buffer&& buffer, bool withMask)
{
    auto result = std::make_unique<ImageBufferVariant>();
    result->GetGlobalAttributes() = ToAttributes(buffer.GetAttributeStore());
    for (unsigned frame = 0; frame < buffer.GetNumberOfFrames(); ++frame)
        result->AddImageVolume(MakeVolume(ImageFrameOf(buffer, frame), withMask));
    return result;
}

ScalarFields GetScalarFields(BufferApi::I_Frame& frame, unsigned plane) { return ScalarFields(frame, plane); }

} // namespace DataObjects
