#pragma once
// The synthetic camera images of the recording tests: image `image` of camera `camera` is a pure
// function of the two numbers, so that a process that reads a recording back can check every pixel
// without having seen the writer. Shared by the crash test and the program it kills.

#include <BufferApi/Creation.h>
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

// One image of all cameras: one word frame per camera, each of its own size.
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
        buffer->AddFrame(std::move(frame));
    }
    return buffer;
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
