#include <RTE/Parameter/Node.h>
#include <RTE/Parameter/Tree.h>

#include <RTE/Exception.h>

namespace RTE {
namespace Parameter {

const char* NodeKindName(E_NodeKind kind)
{
    switch (kind) {
    case E_NodeKind::Category: return "category";
    case E_NodeKind::Text: return "text";
    case E_NodeKind::Integer: return "integer";
    case E_NodeKind::Double: return "double";
    case E_NodeKind::Enumeration: return "enumeration";
    case E_NodeKind::List: return "list";
    }
    return "?";
}

C_Node::C_Node(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
               const char* editor)
    : m_name(name), m_title(title), m_description(description), m_accessMode(mode), m_editor(editor)
{
    RTE_VERIFY(IsValidAccessMode(mode), "Invalid parameter access mode");
    RTE_VERIFY(editor != nullptr, "A parameter editor must not be null");
}

C_Node::~C_Node() = default;

void C_Node::SetAccessMode(E_AccessMode mode)
{
    RTE_VERIFY(IsValidAccessMode(mode), "Invalid parameter access mode");
    m_accessMode = mode;
}

void C_Node::SetEditor(const char* editor)
{
    RTE_VERIFY(editor != nullptr, "A parameter editor must not be null");
    m_editor = editor;
}

void C_Node::CopyAttributesFrom(const C_Node& other)
{
    m_title = other.m_title;
    m_description = other.m_description;
    m_accessMode = other.m_accessMode;
    m_editor = other.m_editor;
}

C_Node::ChangedSignal& C_Node::Changed()
{
    if (!m_changed)
        m_changed = std::make_unique<ChangedSignal>();
    return *m_changed;
}

void C_Node::NotifyChanged()
{
    if (m_changed)
        (*m_changed)(*this);
    const C_Node* top = this;
    while (top->m_parent)
        top = top->m_parent;
    if (top->m_tree)
        top->m_tree->m_changed(*this);
}

} // namespace Parameter
} // namespace RTE
