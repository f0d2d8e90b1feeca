#include <DataObjects/ImageVolumeVariant.h>

#include <RTE/Exception.h>

#include <algorithm>
#include <typeinfo>

namespace DataObjects {

ImageVolumeVariant::ImageVolumeVariant(const ImageVolumeVariant& other) : m_name(other.m_name)
{
    m_planes.reserve(other.m_planes.size());
    for (const auto& plane : other.m_planes)
        m_planes.push_back(plane->Clone());
}

ImageVolumeVariant& ImageVolumeVariant::operator=(const ImageVolumeVariant& other)
{
    if (this != &other) {
        ImageVolumeVariant copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ImageVolumeVariant::~ImageVolumeVariant() = default;

unsigned ImageVolumeVariant::GetWidth() const { return m_planes.empty() ? 0 : m_planes.front()->GetWidth(); }

unsigned ImageVolumeVariant::GetHeight() const { return m_planes.empty() ? 0 : m_planes.front()->GetHeight(); }

BufferApi::E_DataType ImageVolumeVariant::GetDataType() const
{
    return m_planes.empty() ? BufferApi::DATATYPE_UNKNOWN : m_planes.front()->GetDataType();
}

ImageVariant& ImageVolumeVariant::GetXYPlane(unsigned plane)
{
    RTE_VERIFY(plane < m_planes.size(), "Image volume plane index out of range");
    return *m_planes[plane];
}

const ImageVariant& ImageVolumeVariant::GetXYPlane(unsigned plane) const
{
    RTE_VERIFY(plane < m_planes.size(), "Image volume plane index out of range");
    return *m_planes[plane];
}

void ImageVolumeVariant::AddXYPlane(std::unique_ptr<ImageVariant> plane)
{
    RTE_VERIFY(plane != nullptr, "Image volume plane is null");
    if (!m_planes.empty()) {
        const ImageVariant& first = *m_planes.front();
        RTE_VERIFY(typeid(*plane) == typeid(first) && plane->GetWidth() == first.GetWidth() &&
                       plane->GetHeight() == first.GetHeight(),
                   "Image volume planes differ in pixel type or size");
    }
    m_planes.push_back(std::move(plane));
}

MaskVolume ImageVolumeVariant::GetMaskVolume() const
{
    MaskVolume masks;
    for (const auto& plane : m_planes)
        masks.AddMask(plane->GetMask());
    return masks;
}

bool ImageVolumeVariant::IsMaskAllValid() const
{
    return std::all_of(m_planes.begin(), m_planes.end(),
                       [](const std::unique_ptr<ImageVariant>& plane) { return plane->GetMask().IsAllValid(); });
}

} // namespace DataObjects
