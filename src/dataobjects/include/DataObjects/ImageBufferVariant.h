#pragma once
// The frames of a buffer as image volumes, with the buffer's global attributes.

#include <DataObjects/C_Attributes.h>
#include <DataObjects/ImageVolumeVariant.h>

#include <memory>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API ImageBufferVariant {
public:
    ImageBufferVariant() = default;
    // Deep copies.
    ImageBufferVariant(const ImageBufferVariant& other);
    ImageBufferVariant& operator=(const ImageBufferVariant& other);
    ImageBufferVariant(ImageBufferVariant&&) noexcept = default;
    ImageBufferVariant& operator=(ImageBufferVariant&&) noexcept = default;
    ~ImageBufferVariant();

    // Number of frames (volumes).
    unsigned GetListSize() const { return static_cast<unsigned>(m_volumes.size()); }
    // Volume `frame`; another index raises RTE::VerificationFailed.
    ImageVolumeVariant& GetImageVolume(unsigned frame);
    const ImageVolumeVariant& GetImageVolume(unsigned frame) const;
    void AddImageVolume(ImageVolumeVariant volume);

    // True when no plane of any volume has a mask with a zero byte.
    bool IsMaskAllValid() const;

    C_Attributes& GetGlobalAttributes() { return m_globalAttributes; }
    const C_Attributes& GetGlobalAttributes() const { return m_globalAttributes; }

private:
    std::vector<std::unique_ptr<ImageVolumeVariant>> m_volumes;
    C_Attributes m_globalAttributes;
};

} // namespace DataObjects
