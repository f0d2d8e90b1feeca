#pragma once
// The masks of the planes of a volume, one per depth.

#include <DataObjects/Mask.h>

#include <utility>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API MaskVolume {
public:
    MaskVolume() = default;
    explicit MaskVolume(std::vector<Mask> masks) : m_masks(std::move(masks)) {}

    unsigned GetDepth() const { return static_cast<unsigned>(m_masks.size()); }
    // Mask of plane `plane`; another index raises RTE::VerificationFailed.
    Mask& GetMask(unsigned plane);
    const Mask& GetMask(unsigned plane) const;
    void AddMask(Mask mask) { m_masks.push_back(std::move(mask)); }
    // True when no plane has a zero byte.
    bool IsAllValid() const;

private:
    std::vector<Mask> m_masks;
};

} // namespace DataObjects
