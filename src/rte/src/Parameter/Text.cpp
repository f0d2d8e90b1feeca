#include <RTE/Parameter/Text.h>

#include <boost/make_shared.hpp>

namespace RTE {
namespace Parameter {

const char* const C_Text::EditorLineEdit = "LineEdit";

C_Text::C_Text(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
               const QString& value)
    : C_Node(name, title, description, mode, EditorLineEdit), m_value(value)
{
}

boost::shared_ptr<C_Node> C_Text::Clone() const
{
    auto copy = boost::make_shared<C_Text>(GetName(), GetTitle(), GetDescription(), GetAccessMode(), m_value);
    copy->CopyAttributesFrom(*this);
    return copy;
}

void C_Text::SetValue(const QString& value)
{
    if (value == m_value) // compares UTF-16 code units: identical text only
        return;
    m_value = value;
    NotifyChanged();
}

} // namespace Parameter
} // namespace RTE
