#include <DataObjects/LinearScale.h>

#include <BufferApi/I_Scale.h>

namespace DataObjects {

LinearScale::LinearScale(double factor, double offset, std::string unit, std::string description)
    : m_factor(factor), m_offset(offset), m_unit(std::move(unit)), m_description(std::move(description))
{
}

LinearScale::LinearScale(const RTE::S_Scale& scale)
    : m_factor(scale.factor), m_offset(scale.offset), m_unit(scale.unit.toStdString()),
      m_description(scale.description.toStdString())
{
}

LinearScale::LinearScale(const BufferApi::I_Scale& scale)
    : m_factor(scale.GetFactor()), m_offset(scale.GetOffset()), m_unit(scale.GetUnit()),
      m_description(scale.GetDescription())
{
}

RTE::S_Scale LinearScale::ToScale() const
{
    return RTE::S_Scale(m_factor, m_offset, QString::fromStdString(m_unit), QString::fromStdString(m_description));
}

std::unique_ptr<BufferApi::I_Scale> LinearScale::CreateBufferScale() const
{
    return std::unique_ptr<BufferApi::I_Scale>(
        BufferApi::C_ScaleFactory::GetInstance().CreateLinearScale(m_factor, m_offset, m_unit, m_description));
}

bool LinearScale::operator==(const LinearScale& other) const
{
    return m_factor == other.m_factor && m_offset == other.m_offset && m_unit == other.m_unit &&
           m_description == other.m_description;
}

LinearScale GetScaleFromFrame(const BufferApi::I_Frame& frame, BufferApi::E_ScaleType axis)
{
    return LinearScale(frame.GetScale(axis));
}

} // namespace DataObjects
