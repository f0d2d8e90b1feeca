#pragma once
// A parameter node holding a 64-bit integer within a closed range.

#include <RTE/Parameter/Node.h>
#include <RTE/Range.h>

namespace RTE {
namespace Parameter {

class RTE_API C_Integer : public C_Node {
public:
    static const char* const EditorSpinBox; // "SpinBox", the default

    // The range of a 32-bit int, given when no range is named.
    static C_RangeT<long long> DefaultRange();

    // Raises RTE::VerificationFailed for an empty range or a value outside it.
    C_Integer(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
              long long value, const C_RangeT<long long>& range = DefaultRange());

    E_NodeKind GetKind() const override { return E_NodeKind::Integer; }
    boost::shared_ptr<C_Node> Clone() const override;

    long long GetValue() const { return m_value; }
    // Raises RTE::VerificationFailed, changing nothing, for a value outside the range.
    void SetValue(long long value);

    const C_RangeT<long long>& GetRange() const { return m_range; }
    // Raises RTE::VerificationFailed for an empty range or one that does not hold the current
    // value; SetValueAndRange changes both at once.
    void SetRange(const C_RangeT<long long>& range);
    void SetValueAndRange(long long value, const C_RangeT<long long>& range);

private:
    long long m_value;
    C_RangeT<long long> m_range;
};

} // namespace Parameter
} // namespace RTE
