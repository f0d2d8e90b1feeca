#pragma once
// The planes of one frame as images, one per depth, all of one pixel type and size.

#include <DataObjects/Image.h>
#include <DataObjects/MaskVolume.h>

#include <memory>
#include <string>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API ImageVolumeVariant {
public:
    ImageVolumeVariant() = default;
    // Deep copies.
    ImageVolumeVariant(const ImageVolumeVariant& other);
    ImageVolumeVariant& operator=(const ImageVolumeVariant& other);
    ImageVolumeVariant(ImageVolumeVariant&&) noexcept = default;
    ImageVolumeVariant& operator=(ImageVolumeVariant&&) noexcept = default;
    ~ImageVolumeVariant();

    unsigned GetDepth() const { return static_cast<unsigned>(m_planes.size()); }
    bool IsEmpty() const { return m_planes.empty(); }
    // Of plane 0; 0 and DATATYPE_UNKNOWN for an empty volume.
    unsigned GetWidth() const;
    unsigned GetHeight() const;
    BufferApi::E_DataType GetDataType() const;

    // Plane `plane`; another index raises RTE::VerificationFailed.
    ImageVariant& GetXYPlane(unsigned plane);
    const ImageVariant& GetXYPlane(unsigned plane) const;
    // Appends a plane; null, or a plane of another pixel type or size than plane 0, raises
    // RTE::VerificationFailed.
    void AddXYPlane(std::unique_ptr<ImageVariant> plane);

    // Copies of the planes' masks.
    MaskVolume GetMaskVolume() const;
    // True when no plane's mask has a zero byte.
    bool IsMaskAllValid() const;

    // The name of the frame the volume stands for.
    const std::string& GetName() const { return m_name; }
    void SetName(const std::string& name) { m_name = name; }

private:
    std::vector<std::unique_ptr<ImageVariant>> m_planes;
    std::string m_name;
};

} // namespace DataObjects
