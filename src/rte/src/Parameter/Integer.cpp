#include <RTE/Parameter/Integer.h>

#include <RTE/Exception.h>

#include <boost/make_shared.hpp>

#include <limits>

namespace RTE {
namespace Parameter {

const char* const C_Integer::EditorSpinBox = "SpinBox";

namespace {
void CheckRange(const C_RangeT<long long>& range, long long value)
{
    if (range.IsEmpty())
        RTE_THROW_MSG(VerificationFailed, "Empty integer parameter range [" << range.GetMin() << ", "
                                                                             << range.GetMax() << "]");
    if (!range.Contains(value))
        RTE_THROW_MSG(VerificationFailed, "Integer parameter value " << value << " is outside the range ["
                                                                     << range.GetMin() << ", " << range.GetMax()
                                                                     << "]");
}
} // namespace

C_RangeT<long long> C_Integer::DefaultRange()
{
    return {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
}

C_Integer::C_Integer(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
                     long long value, const C_RangeT<long long>& range)
    : C_Node(name, title, description, mode, EditorSpinBox), m_value(value), m_range(range)
{
    CheckRange(range, value);
}

boost::shared_ptr<C_Node> C_Integer::Clone() const
{
    auto copy = boost::make_shared<C_Integer>(GetName(), GetTitle(), GetDescription(), GetAccessMode(), m_value,
                                              m_range);
    copy->CopyAttributesFrom(*this);
    return copy;
}

void C_Integer::SetValue(long long value)
{
    CheckRange(m_range, value);
    if (value == m_value)
        return;
    m_value = value;
    NotifyChanged();
}

void C_Integer::SetRange(const C_RangeT<long long>& range)
{
    CheckRange(range, m_value);
    m_range = range;
}

void C_Integer::SetValueAndRange(long long value, const C_RangeT<long long>& range)
{
    CheckRange(range, value);
    m_range = range;
    SetValue(value);
}

} // namespace Parameter
} // namespace RTE
