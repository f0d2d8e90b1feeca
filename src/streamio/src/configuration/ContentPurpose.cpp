#include <StreamIO/ContentPurpose.h>

#include <limits>

namespace SetApi {

C_ContentPurpose::C_ContentPurpose(bool frames, bool entireImage, bool allImages, std::uint32_t startFrame,
                                   std::uint32_t endFrame)
    : m_frames(frames), m_entireImage(entireImage), m_allImages(allImages), m_startFrame(startFrame),
      m_endFrame(endFrame)
{
}

C_ContentPurpose C_ContentPurpose::CreateFrameLink(unsigned frame)
{
    return C_ContentPurpose(true, false, true, frame, frame);
}

C_ContentPurpose C_ContentPurpose::CreateGlobalAttributesLink()
{
    // The global attribute stream holds one record for every image and feeds no frame.
    return C_ContentPurpose(false, true, true, 0, 0);
}

std::uint32_t C_ContentPurpose::FrameCount() const
{
    if (m_endFrame < m_startFrame)
        return 0;
    const std::uint64_t count = std::uint64_t(m_endFrame) - m_startFrame + 1;
    // The full range 0..2^32-1 holds one frame more than the type can count; it saturates, which
    // no camera can match anyway.
    if (count > std::numeric_limits<std::uint32_t>::max())
        return std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(count);
}

bool C_ContentPurpose::operator==(const C_ContentPurpose& other) const
{
    return m_frames == other.m_frames && m_entireImage == other.m_entireImage && m_allImages == other.m_allImages
           && m_startFrame == other.m_startFrame && m_endFrame == other.m_endFrame;
}

} // namespace SetApi
