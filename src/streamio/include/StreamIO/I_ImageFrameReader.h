#pragma once
// A frame reader that knows depth and element type: word, float, double or byte (bool) data.
// A load into a target of another type than the stream's converts element by element.

#include <StreamIO/I_RecordingFrameReader.h>

namespace SetApi {

class STREAMIO_API I_ImageFrameReader : public I_RecordingFrameReader {
public:
    ~I_ImageFrameReader() override;

    virtual std::uint32_t GetFrameDepth() const = 0;
    using I_RecordingFrameReader::LoadFrame;
    virtual void LoadFrame(std::uint32_t image, std::uint32_t frame, bool* target) = 0;
    virtual void LoadFrame(std::uint32_t image, std::uint32_t frame, double* target) = 0;
    virtual void LoadFrame(std::uint32_t image, std::uint32_t frame, float* target) = 0;
    // Writes plane `plane` of frame `frame` of image `image`, packed at the reader's own width and
    // height, at the start of target. Same failures as LoadFrame.
    virtual void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, bool* target) = 0;
    virtual void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, double* target) = 0;
    virtual void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, float* target) = 0;
    virtual void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame,
                           std::uint16_t* target) = 0;
    virtual bool IsWordData() const = 0;
    virtual bool IsFloatData() const = 0;
    virtual bool IsDoubleData() const = 0;
    // Byte data: masks, and byte images.
    virtual bool IsBoolData() const = 0;
};

} // namespace SetApi
