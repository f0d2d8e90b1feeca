#pragma once
// The library's scale: value = factor * x + offset, with unit and description.

#include <BufferApi/Export.h>
#include <BufferApi/I_Scale.h>

#include <string>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API LinearScale final : public I_Scale {
public:
    LinearScale(double factor, double offset, std::string unit, std::string description);

    double GetFactor() const override { return m_factor; }
    double GetOffset() const override { return m_offset; }
    const std::string& GetUnit() const override { return m_unit; }
    const std::string& GetDescription() const override { return m_description; }
    double Apply(double value) const override { return m_factor * value + m_offset; }
    std::unique_ptr<I_Scale> Clone() const override;

    // The shared identity scale (factor 1, offset 0, no texts); immutable, so safe to share.
    static const LinearScale& Identity();

private:
    double m_factor;
    double m_offset;
    std::string m_unit;
    std::string m_description;
};

} // namespace Private
} // namespace BufferApi
