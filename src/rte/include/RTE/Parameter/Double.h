#pragma once
// A parameter node holding a double within a closed range.
//
// The range check: a value v fits when min <= v <= max. NaN has no order and fits every range, so a
// node can carry "no value"; infinities fit only a range that reaches them. A range must not be
// empty and its bounds must not be NaN. "Equal" values (which do not signal) are values with the
// same bits, so that -0 after +0 and a NaN of another payload count as changes.

#include <RTE/Parameter/Node.h>
#include <RTE/Range.h>

namespace RTE {
namespace Parameter {

class RTE_API C_Double : public C_Node {
public:
    static const char* const EditorSpinBox; // "DoubleSpinBox", the default

    // From the negative to the positive largest finite double.
    static C_RangeT<double> DefaultRange();

    // Raises RTE::VerificationFailed for a bad range or a value outside it.
    C_Double(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
             double value, const C_RangeT<double>& range = DefaultRange());

    E_NodeKind GetKind() const override { return E_NodeKind::Double; }
    boost::shared_ptr<C_Node> Clone() const override;

    double GetValue() const { return m_value; }
    // Raises RTE::VerificationFailed, changing nothing, for a value outside the range.
    void SetValue(double value);
    // Whether SetValue would accept the value.
    bool Accepts(double value) const;

    const C_RangeT<double>& GetRange() const { return m_range; }
    void SetRange(const C_RangeT<double>& range);
    void SetValueAndRange(double value, const C_RangeT<double>& range);

private:
    double m_value;
    C_RangeT<double> m_range;
};

} // namespace Parameter
} // namespace RTE
