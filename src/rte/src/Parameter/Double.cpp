#include <RTE/Parameter/Double.h>

#include <RTE/Exception.h>

#include <boost/make_shared.hpp>

#include <cmath>
#include <cstring>
#include <limits>

namespace RTE {
namespace Parameter {

const char* const C_Double::EditorSpinBox = "DoubleSpinBox";

namespace {
bool Fits(const C_RangeT<double>& range, double value)
{
    return std::isnan(value) || (range.GetMin() <= value && value <= range.GetMax());
}

void CheckRange(const C_RangeT<double>& range, double value)
{
    if (std::isnan(range.GetMin()) || std::isnan(range.GetMax()) || range.IsEmpty())
        RTE_THROW_MSG(VerificationFailed, "Invalid double parameter range [" << range.GetMin() << ", "
                                                                              << range.GetMax() << "]");
    if (!Fits(range, value))
        RTE_THROW_MSG(VerificationFailed, "Double parameter value " << value << " is outside the range ["
                                                                    << range.GetMin() << ", " << range.GetMax()
                                                                    << "]");
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }
} // namespace

C_RangeT<double> C_Double::DefaultRange()
{
    return {-std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
}

C_Double::C_Double(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
                   double value, const C_RangeT<double>& range)
    : C_Node(name, title, description, mode, EditorSpinBox), m_value(value), m_range(range)
{
    CheckRange(range, value);
}

boost::shared_ptr<C_Node> C_Double::Clone() const
{
    auto copy = boost::make_shared<C_Double>(GetName(), GetTitle(), GetDescription(), GetAccessMode(), m_value,
                                             m_range);
    copy->CopyAttributesFrom(*this);
    return copy;
}

bool C_Double::Accepts(double value) const { return Fits(m_range, value); }

void C_Double::SetValue(double value)
{
    CheckRange(m_range, value);
    if (SameBits(value, m_value))
        return;
    m_value = value;
    NotifyChanged();
}

void C_Double::SetRange(const C_RangeT<double>& range)
{
    CheckRange(range, m_value);
    m_range = range;
}

void C_Double::SetValueAndRange(double value, const C_RangeT<double>& range)
{
    CheckRange(range, value);
    m_range = range;
    SetValue(value);
}

} // namespace Parameter
} // namespace RTE
