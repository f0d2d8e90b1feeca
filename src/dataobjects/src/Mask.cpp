#include <DataObjects/Mask.h>
#include <DataObjects/MaskVolume.h>

#include <RTE/Exception.h>

#include <algorithm>

namespace DataObjects {

Mask::Mask(unsigned width, unsigned height, unsigned char value)
    : m_width(width), m_height(height), m_bytes(std::size_t(width) * height, value)
{
}

void Mask::Fill(unsigned char value) { std::fill(m_bytes.begin(), m_bytes.end(), value); }

bool Mask::IsAllValid() const
{
    return std::find(m_bytes.begin(), m_bytes.end(), static_cast<unsigned char>(0)) == m_bytes.end();
}

Mask& MaskVolume::GetMask(unsigned plane)
{
    RTE_VERIFY(plane < m_masks.size(), "Mask plane index out of range");
    return m_masks[plane];
}

const Mask& MaskVolume::GetMask(unsigned plane) const
{
    RTE_VERIFY(plane < m_masks.size(), "Mask plane index out of range");
    return m_masks[plane];
}

bool MaskVolume::IsAllValid() const
{
    return std::all_of(m_masks.begin(), m_masks.end(), [](const Mask& mask) { return mask.IsAllValid(); });
}

} // namespace DataObjects
