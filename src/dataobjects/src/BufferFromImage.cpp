#include <DataObjects/C_BufferAttributes.h>
#include <DataObjects/ImageConversion.h>

#include "PixelDispatch.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <RTE/Exception.h>

#include <cstring>

namespace DataObjects {

namespace {

const char* const NotSupportedImage =
    "Image type not supported by macro. Function is 'CreateBufferFromImageT(...)'.";
const char* const NotSupportedBufferFromData =
    "Image type not supported by macro. Function is 'CreateBufferFromImageDataT(...)'.";
const char* const NotSupportedFrameFromData =
    "Image type not supported by macro. Function is 'CreateFrameFromImageDataT(...)'.";

// The element type of an image's pixel type, found by dynamic_cast; `text` when none takes it.
BufferApi::E_DataType DataTypeOfImage(const ImageVariant& image, const char* text)
{
    BufferApi::E_DataType type = BufferApi::DATATYPE_UNKNOWN;
    const bool found = Private::DispatchByCast<Image>(image, [&](auto tag) {
        type = BufferApi::DataTypeOf<typename decltype(tag)::type>::value;
    });
    if (!found)
        RTE_THROW(RTE::Exception, QString::fromLatin1(text));
    return type;
}

BufferApi::E_DataType DataTypeOfImageData(const ImageDataVariant& data, const char* text)
{
    BufferApi::E_DataType type = BufferApi::DATATYPE_UNKNOWN;
    const bool found = Private::DispatchByCast<ImageData>(data, [&](auto tag) {
        type = BufferApi::DataTypeOf<typename decltype(tag)::type>::value;
    });
    if (!found)
        RTE_THROW(RTE::Exception, QString::fromLatin1(text));
    return type;
}

std::unique_ptr<BufferApi::I_FrameImage> NewFrame(BufferApi::E_DataType type, unsigned width, unsigned height,
                                                  unsigned depth)
{
    return std::unique_ptr<BufferApi::I_FrameImage>(BufferApi::CreateImageFrame(type, width, height, depth));
}

// Pixels of `data` into pixel plane `plane` of the frame, in one block.
void CopyPixels(BufferApi::I_FrameImage& frame, unsigned plane, const ImageDataVariant& data)
{
    BufferApi::I_PlaneBase* pixels = frame.GetPixelPlane(plane);
    const std::size_t bytes = BufferApi::GetDataTypeSize(frame.GetDataType()) * data.GetWidth() * data.GetHeight();
    if (bytes > 0)
        std::memcpy(pixels->GetData(), data.GetRawData(), bytes);
}

// Pixels, mask and scalar fields of one image into plane `plane` of the frame.
void FillPlane(BufferApi::I_FrameImage& frame, unsigned plane, const ImageVariant& image, bool withMask)
{
    CopyPixels(frame, plane, image.GetImageData());
    if (withMask) {
        const Mask& mask = image.GetMask();
        RTE_VERIFY(mask.GetWidth() == image.GetWidth() && mask.GetHeight() == image.GetHeight(),
                   "Mask size does not match the image size");
        BufferApi::I_Component* component = frame.AddMask();
        if (mask.GetByteSize() > 0)
            std::memcpy(component->GetPlane(plane)->GetData(), mask.GetData(), mask.GetByteSize());
    }
    if (!image.GetScalarFields().IsEmpty())
        GetScalarFields(frame, plane).DeepCopyFrom(image.GetScalarFields());
}

// Scales and attributes of an image onto the frame.
void SetFrameProperties(BufferApi::I_FrameImage& frame, const ImageVariant& image)
{
    frame.SetScale(BufferApi::SCALE_X, image.GetScaleX().CreateBufferScale());
    frame.SetScale(BufferApi::SCALE_Y, image.GetScaleY().CreateBufferScale());
    frame.SetScale(BufferApi::SCALE_I, image.GetScaleI().CreateBufferScale());
    frame.SetScale(BufferApi::SCALE_Z, std::unique_ptr<BufferApi::I_Scale>(
                                           BufferApi::C_ScaleFactory::GetInstance().CreateLinearScale(1.0, 0.0, "", "")));
    C_BufferAttributes attributes(frame);
    for (const C_Attribute& attribute : image.GetAttributes().GetAttributes())
        attributes.Set(attribute.GetName(), attribute.GetValue());
}

std::unique_ptr<BufferApi::I_FrameImage> FrameFromImage(const ImageVariant& image, bool withMask)
{
    auto frame = NewFrame(DataTypeOfImage(image, NotSupportedImage), image.GetWidth(), image.GetHeight(), 1);
    FillPlane(*frame, 0, image, withMask);
    SetFrameProperties(*frame, image);
    return frame;
}

std::unique_ptr<BufferApi::I_FrameImage> FrameFromVolume(const ImageVolumeVariant& volume, bool withMask)
{
    RTE_VERIFY(!volume.IsEmpty(), "Image volume has no planes");
    const ImageVariant& first = volume.GetXYPlane(0);
    auto frame = NewFrame(DataTypeOfImage(first, NotSupportedImage), first.GetWidth(), first.GetHeight(),
                          volume.GetDepth());
    for (unsigned plane = 0; plane < volume.GetDepth(); ++plane)
        FillPlane(*frame, plane, volume.GetXYPlane(plane), withMask);
    SetFrameProperties(*frame, first);
    frame->SetName(volume.GetName());
    return frame;
}

std::unique_ptr<BufferApi::I_Buffer> NewBuffer()
{
    return std::unique_ptr<BufferApi::I_Buffer>(BufferApi::CreateBuffer());
}

} // namespace

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImage(const ImageVariant& image, bool withMask)
{
    auto buffer = NewBuffer();
    buffer->AddFrame(FrameFromImage(image, withMask));
    return buffer;
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImage(ImageVariant&& image, bool withMask)
{
    return CreateBufferFromImage(static_cast<const ImageVariant&>(image), withMask);
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageData(const ImageDataVariant& data)
{
    auto buffer = NewBuffer();
    auto frame = NewFrame(DataTypeOfImageData(data, NotSupportedBufferFromData), data.GetWidth(),
                          data.GetHeight(), 1);
    CopyPixels(*frame, 0, data);
    frame->SetScale(BufferApi::SCALE_Z, LinearScale().CreateBufferScale());
    buffer->AddFrame(std::move(frame));
    return buffer;
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageData(ImageDataVariant&& data)
{
    return CreateBufferFromImageData(static_cast<const ImageDataVariant&>(data));
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageVolume(const ImageVolumeVariant& volume, bool withMask)
{
    auto buffer = NewBuffer();
    buffer->AddFrame(FrameFromVolume(volume, withMask));
    return buffer;
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageVolume(ImageVolumeVariant&& volume, bool withMask)
{
    return CreateBufferFromImageVolume(static_cast<const ImageVolumeVariant&>(volume), withMask);
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageBuffer(const ImageBufferVariant& images, bool withMask)
{
    auto buffer = NewBuffer();
    C_BufferAttributes(*buffer).SetAll(images.GetGlobalAttributes());
    for (unsigned frame = 0; frame < images.GetListSize(); ++frame)
        buffer->AddFrame(FrameFromVolume(images.GetImageVolume(frame), withMask));
    return buffer;
}

std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageBuffer(ImageBufferVariant&& images, bool withMask)
{
    return CreateBufferFromImageBuffer(static_cast<const ImageBufferVariant&>(images), withMask);
}

std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImage(const ImageVariant& image, bool withMask)
{
    return FrameFromImage(image, withMask);
}

std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImage(ImageVariant&& image, bool withMask)
{
    return FrameFromImage(image, withMask);
}

std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImageData(const ImageDataVariant& data)
{
    auto frame = NewFrame(DataTypeOfImageData(data, NotSupportedFrameFromData), data.GetWidth(), data.GetHeight(), 1);
    CopyPixels(*frame, 0, data);
    frame->SetScale(BufferApi::SCALE_Z, LinearScale().CreateBufferScale());
    return frame;
}

} // namespace DataObjects
