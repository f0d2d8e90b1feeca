#pragma once
// Which part of a buffer a stream feeds: a range of frames, the whole image (the buffer's global
// attributes), and whether it holds something for every image.

#include <StreamIO/Export.h>

#include <cstdint>

namespace SetApi {

class STREAMIO_API C_ContentPurpose {
public:
    C_ContentPurpose(bool frames = false, bool entireImage = false, bool allImages = false,
                     std::uint32_t startFrame = 0, std::uint32_t endFrame = 0);

    // The purpose of the streams of one frame.
    static C_ContentPurpose CreateFrameLink(unsigned frame);
    // The purpose of the stream of the buffer's global attributes.
    static C_ContentPurpose CreateGlobalAttributesLink();

    bool IsAssociatedToFrames() const { return m_frames; }
    bool IsAssociatedToEntireImage() const { return m_entireImage; }
    bool IsAssociatedToAllImages() const { return m_allImages; }
    std::uint32_t StartFrame() const { return m_startFrame; }
    std::uint32_t EndFrame() const { return m_endFrame; }
    // The number of frames from StartFrame to EndFrame, both included (0 when EndFrame is below
    // StartFrame).
    std::uint32_t FrameCount() const;

    bool operator==(const C_ContentPurpose& other) const;
    bool operator!=(const C_ContentPurpose& other) const { return !(*this == other); }

private:
    bool m_frames;
    bool m_entireImage;
    bool m_allImages;
    std::uint32_t m_startFrame;
    std::uint32_t m_endFrame;
};

} // namespace SetApi
