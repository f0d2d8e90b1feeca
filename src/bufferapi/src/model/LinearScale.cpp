#include "model/LinearScale.h"

#include <utility>

namespace BufferApi {

I_Scale::~I_Scale() = default;

namespace Private {

LinearScale::LinearScale(double factor, double offset, std::string unit, std::string description)
    : m_factor(factor), m_offset(offset), m_unit(std::move(unit)), m_description(std::move(description))
{
}

std::unique_ptr<I_Scale> LinearScale::Clone() const
{
    return std::make_unique<LinearScale>(*this);
}

const LinearScale& LinearScale::Identity()
{
    static const LinearScale identity(1.0, 0.0, std::string(), std::string());
    return identity;
}

} // namespace Private
} // namespace BufferApi
