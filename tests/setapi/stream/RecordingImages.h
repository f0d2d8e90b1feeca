#pragma once
// The synthetic camera images of the recording tests: image `image` of camera `camera` is a pure
// function of the two numbers, so that a process that reads a recording back can check every pixel
// without having seen the writer. Shared by the crash test and the program it kills.

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace RecordingTesting {

// Mixes all inputs so that a pixel taken from the wrong camera, image, row or column differs.
inline std::uint16_t CameraPixel(unsigned camera, unsigned image, unsigned x, unsigned y)
{
    std::uint32_t v = camera * 0x9E3779B1u ^ image * 0x85EBCA77u ^ y * 0xC2B2AE3Du ^ x * 0x27D4EB2Fu;
    v ^= v >> 15;
    v *= 0x2C1B3C6Du;
    v ^= v >> 12;
    // Runs of equal pixels in part of each row give the packing codec something to pack.
    if ((x / 64 + image) % 3 == 0)
        return static_cast<std::uint16_t>(camera * 1000 + image + y);
    return static_cast<std::uint16_t>(v);
}

// The name each frame of image `image` carries in its attributes.
inline std::string CameraName(unsigned camera, unsigned image)
{
    return "Camera " + std::to_string(camera) + " image " + std::to_string(image);
}

// One image of all cameras: one word frame per camera, each of its own size. The image carries its
// index as the global attribute "ImageIndex", each frame its camera name.
inline std::unique_ptr<BufferApi::I_Buffer> MakeCameraImage(unsigned cameras, const unsigned* widths,
                                                            const unsigned* heights, unsigned image)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned c = 0; c < cameras; ++c) {
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, widths[c], heights[c], 1));
        auto* pixels = static_cast<std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
        for (unsigned y = 0; y < heights[c]; ++y)
            for (unsigned x = 0; x < widths[c]; ++x)
                pixels[std::size_t(y) * widths[c] + x] = CameraPixel(c, image, x, y);
        frame->GetAttributeStore().SetString("CameraName", CameraName(c, image));
        buffer->AddFrame(std::move(frame));
    }
    const std::int32_t index = static_cast<std::int32_t>(image);
    buffer->GetAttributeStore().SetArray("ImageIndex", 1, BufferApi::DATATYPE_INT32, &index);
    return buffer;
}

// Empty when `buffer` carries the attributes of image `image` of MakeCameraImage for its first
// `cameras` frames; otherwise a description of the first difference.
inline std::string CompareCameraAttributes(const BufferApi::I_Buffer& buffer, unsigned cameras, unsigned image)
{
    const std::string what = "image " + std::to_string(image) + ": ";
    const auto* index =
        dynamic_cast<const BufferApi::I_AttributePlane*>(buffer.GetAttributeStore().Find("ImageIndex"));
    if (index == nullptr || index->GetDataType() != BufferApi::DATATYPE_INT32 || index->GetCount() != 1)
        return what + "no ImageIndex";
    if (*static_cast<const std::int32_t*>(index->GetData()) != static_cast<std::int32_t>(image))
        return what + "ImageIndex " + std::to_string(*static_cast<const std::int32_t*>(index->GetData()));
    for (unsigned c = 0; c < cameras && c < buffer.GetNumberOfFrames(); ++c) {
        const auto* name =
            dynamic_cast<const BufferApi::I_AttributeString*>(buffer.GetFrame(c)->GetAttributeStore().Find("CameraName"));
        if (name == nullptr || name->GetValue() != CameraName(c, image))
            return what + "camera " + std::to_string(c) + " without its CameraName";
    }
    return std::string();
}

// Empty when frame `camera` of `buffer` holds image `image` of that camera in its top left
// `width` x `height` pixels (a reader may widen smaller cameras to the largest size, with zeros);
// otherwise a description of the first difference.
inline std::string CompareCameraFrame(const BufferApi::I_Buffer& buffer, unsigned camera, unsigned width,
                                      unsigned height, unsigned image)
{
    if (camera >= buffer.GetNumberOfFrames())
        return "frame " + std::to_string(camera) + " missing";
    const auto* frame = dynamic_cast<const BufferApi::I_FrameImage*>(buffer.GetFrame(camera));
    if (frame == nullptr || frame->GetDataType() != BufferApi::DATATYPE_WORD)
        return "frame " + std::to_string(camera) + " is no word image";
    if (frame->GetWidth() < width || frame->GetHeight() < height)
        return "frame " + std::to_string(camera) + " too small";
    const unsigned stride = frame->GetWidth();
    const auto* pixels = static_cast<const std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
    for (unsigned y = 0; y < frame->GetHeight(); ++y)
        for (unsigned x = 0; x < stride; ++x) {
            const std::uint16_t expected = (x < width && y < height) ? CameraPixel(camera, image, x, y) : 0;
            if (pixels[std::size_t(y) * stride + x] != expected)
                return "image " + std::to_string(image) + " camera " + std::to_string(camera) + " differs at (" +
                       std::to_string(x) + ", " + std::to_string(y) + ")";
        }
    return std::string();
}

} // namespace RecordingTesting
