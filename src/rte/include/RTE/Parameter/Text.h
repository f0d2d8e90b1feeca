#pragma once
// A parameter node holding a text.

#include <RTE/Parameter/Node.h>

namespace RTE {
namespace Parameter {

class RTE_API C_Text : public C_Node {
public:
    static const char* const EditorLineEdit; // "LineEdit", the default

    C_Text(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
           const QString& value);

    E_NodeKind GetKind() const override { return E_NodeKind::Text; }
    boost::shared_ptr<C_Node> Clone() const override;

    const QString& GetValue() const { return m_value; }
    void SetValue(const QString& value);

private:
    QString m_value;
};

} // namespace Parameter
} // namespace RTE
