#include <DataObjects/ImageBufferVariant.h>

#include <RTE/Exception.h>

#include <algorithm>

namespace DataObjects {

ImageBufferVariant::ImageBufferVariant(const ImageBufferVariant& other) : m_globalAttributes(other.m_globalAttributes)
{
    m_volumes.reserve(other.m_volumes.size());
    for (const auto& volume : other.m_volumes)
        m_volumes.push_back(std::make_unique<ImageVolumeVariant>(*volume));
}

ImageBufferVariant& ImageBufferVariant::operator=(const ImageBufferVariant& other)
{
    if (this != &other) {
        ImageBufferVariant copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ImageBufferVariant::~ImageBufferVariant() = default;

ImageVolumeVariant& ImageBufferVariant::GetImageVolume(unsigned frame)
{
    RTE_VERIFY(frame < m_volumes.size(), "Image buffer frame index out of range");
    return *m_volumes[frame];
}

const ImageVolumeVariant& ImageBufferVariant::GetImageVolume(unsigned frame) const
{
    RTE_VERIFY(frame < m_volumes.size(), "Image buffer frame index out of range");
    return *m_volumes[frame];
}

void ImageBufferVariant::AddImageVolume(ImageVolumeVariant volume)
{
    m_volumes.push_back(std::make_unique<ImageVolumeVariant>(std::move(volume)));
}

bool ImageBufferVariant::IsMaskAllValid() const
{
    return std::all_of(m_volumes.begin(), m_volumes.end(),
                       [](const std::unique_ptr<ImageVolumeVariant>& volume) { return volume->IsMaskAllValid(); });
}

} // namespace DataObjects
