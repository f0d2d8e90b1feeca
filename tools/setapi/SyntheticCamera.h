#pragma once
// Synthetic camera images for `setapi record`: particle images (Gaussian spots that drift from one
// image to the next) on a noisy, vignetted background, so that packing and compression meet data
// like a real recording's. The same index always gives the same bits, which is how a recording is
// checked after it is read back.
//
// Rendering is cheap: the noisy background is computed once, as one table a little larger than a
// frame, and an image takes it from one of 16 offsets (a copy per row); the particles are a fixed
// table per camera whose positions move with the index, each drawn as a small separable Gaussian.

#include <BufferApi/DataType.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace BufferApi {
class I_Buffer;
}

namespace SetApiTool {

struct S_SyntheticShape {
    unsigned cameras = 2;
    unsigned width = 1024;
    unsigned height = 1024;
    BufferApi::E_DataType type = BufferApi::DATATYPE_WORD; // word (12-bit values) or float
};

class SyntheticRecording {
public:
    // The nominal frame rate: image n is taken n milliseconds after image 0.
    static constexpr unsigned FramePeriodMilliseconds = 1;

    // `startMilliseconds` (since the epoch, UTC) is the time of image 0, given in the global
    // attribute "AcquisitionTime" as "yyyy-MM-dd hh:mm:ss.zzz". A type other than word and float,
    // no camera or an empty frame raise RTE::VerificationFailed.
    SyntheticRecording(const S_SyntheticShape& shape, long long startMilliseconds);
    ~SyntheticRecording();
    SyntheticRecording(const SyntheticRecording&) = delete;
    SyntheticRecording& operator=(const SyntheticRecording&) = delete;

    const S_SyntheticShape& GetShape() const { return m_shape; }
    // Bytes of pixel data of one image (all cameras).
    std::size_t GetImageBytes() const;

    // A new buffer for image `index`: one image frame per camera, unnamed, of the shape's size and
    // type, each with x, y and intensity scales (the same for every image) and the attributes
    // "CameraName" ("Camera <n>") and "ExposureTime"; the buffer carries "AcquisitionTime",
    // "ImageIndex" and "Source". Only what a recording keeps is set, so that a buffer read back
    // from either kind of set equals the one made here bit for bit. Safe to call from several
    // threads at once.
    std::unique_ptr<BufferApi::I_Buffer> MakeImage(unsigned index) const;

private:
    struct S_Particle {
        float x, y;       // position in image 0
        float vx, vy;     // drift per image, in pixels
        float peak;       // counts at the centre
        float sigma;      // spot radius, in pixels
    };

    void RenderCamera(unsigned camera, unsigned index, void* pixels) const;
    std::string AcquisitionTimeOf(unsigned index) const;

    S_SyntheticShape m_shape;
    long long m_startMilliseconds = 0; // since the epoch, UTC
    std::size_t m_patternStride = 0;   // elements between two of the 16 background offsets
    std::vector<std::uint16_t> m_wordBackground;
    std::vector<float> m_floatBackground;
    std::vector<std::vector<S_Particle>> m_particles; // per camera
};

} // namespace SetApiTool
