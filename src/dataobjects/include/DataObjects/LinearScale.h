#pragma once
// A linear scale of one axis: value = factor * raw + offset, with the unit and a description of
// the scaled quantity (both UTF-8).

#include <DataObjects/Export.h>

#include <BufferApi/I_Frame.h>
#include <RTE/Scale.h>

#include <memory>
#include <string>

namespace BufferApi {
class I_Scale;
}

namespace DataObjects {

class DATAOBJECTS_API LinearScale {
public:
    // The identity: factor 1, offset 0, no texts.
    LinearScale() = default;
    LinearScale(double factor, double offset, std::string unit = std::string(),
                std::string description = std::string());
    explicit LinearScale(const RTE::S_Scale& scale);
    explicit LinearScale(const BufferApi::I_Scale& scale);

    double GetFactor() const { return m_factor; }
    double GetOffset() const { return m_offset; }
    const std::string& GetUnit() const { return m_unit; }
    const std::string& GetDescription() const { return m_description; }
    double Apply(double raw) const { return m_factor * raw + m_offset; }

    RTE::S_Scale ToScale() const;
    operator RTE::S_Scale() const { return ToScale(); }
    // A new buffer scale through BufferApi::C_ScaleFactory.
    std::unique_ptr<BufferApi::I_Scale> CreateBufferScale() const;

    bool operator==(const LinearScale& other) const;
    bool operator!=(const LinearScale& other) const { return !(*this == other); }

private:
    double m_factor = 1.0;
    double m_offset = 0.0;
    std::string m_unit;
    std::string m_description;
};

// The scale of one axis of a frame (SCALE_X, SCALE_Y and SCALE_I are the ones images use).
DATAOBJECTS_API LinearScale GetScaleFromFrame(const BufferApi::I_Frame& frame, BufferApi::E_ScaleType axis);

} // namespace DataObjects
