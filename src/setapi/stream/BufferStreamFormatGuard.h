#pragma once
// What the first image of a recording fixed, and the check of every image against it: the number
// of frames, each frame's width, height and depth, the element type, whether frames have masks,
// and the list of scalar fields with their types. The streams were made for exactly that shape, so
// an image that deviates would be written wrongly (or read out of bounds); it is refused with
// RTE::VerificationFailed before a byte of it is written.
//
// The first image is checked for consistency among its own frames (same element type, masks and
// scalar fields in every frame; sizes may differ per frame) and its shape is recorded only when
// the whole check passes.

#include <BufferApi/DataType.h>

#include <map>
#include <string>
#include <vector>

namespace BufferApi {
class I_Buffer;
}
namespace DataObjects {
class ImageBufferVariant;
}

namespace SetApi {
namespace Private {

class BufferStreamFormatGuard {
public:
    // Checks the image; the first one (no shape recorded yet) records its shape.
    // For a buffer the mask flag of every frame is compared; an ImageBufferVariant always has
    // masks, so its mask flag is true and not compared.
    void Check(const BufferApi::I_Buffer* buffer);
    void Check(const DataObjects::ImageBufferVariant& buffer);

    // Whether a first image has been recorded.
    bool HasShape() const { return !m_frames.empty(); }
    // Forgets the shape, so that the next image is a first one again (used when the streams of a
    // first image could not be set up).
    void Reset();

    // One frame as the guard sees it.
    struct FrameShape {
        bool isImage = false; // an image frame with pixel memory and a non-zero size
        unsigned width = 0;
        unsigned height = 0;
        unsigned depth = 0;
        BufferApi::E_DataType dataType = BufferApi::DATATYPE_UNKNOWN;
        bool hasMask = false;
        std::vector<std::string> scalarNames;
        std::vector<BufferApi::E_DataType> scalarTypes; // by the order of scalarNames
    };

private:
    void Check(const std::vector<FrameShape>& frames, bool compareMasks);

    std::vector<FrameShape> m_frames;
    std::map<std::string, BufferApi::E_DataType> m_scalarTypes;
};

} // namespace Private
} // namespace SetApi
