#include <RTE/Parameter/Category.h>

#include "ContainerChecks.h"

#include <RTE/Exception.h>

#include <boost/make_shared.hpp>

namespace RTE {
namespace Parameter {

C_Category::C_Category(const QString& name, const QString& title, const QString& description, E_AccessMode mode)
    : C_Node(name, title, description, mode, "")
{
}

C_Category::~C_Category() { Clear(); }

boost::shared_ptr<C_Node> C_Category::Clone() const
{
    auto copy = boost::make_shared<C_Category>(GetName(), GetTitle(), GetDescription(), GetAccessMode());
    copy->CopyAttributesFrom(*this);
    copy->m_children.reserve(m_children.size());
    for (const auto& child : m_children)
        copy->Add(child->Clone());
    return copy;
}

void C_Category::Add(const boost::shared_ptr<C_Node>& child)
{
    Private::CheckNewChild(*this, child);
    RTE_VERIFY(!child->GetName().isEmpty(), "A parameter in a category must have a name");
    if (m_index.contains(child->GetName()))
        RTE_THROW_MSG(VerificationFailed, "Category '" << GetName() << "' already has a parameter named '"
                                                       << child->GetName() << "'");
    m_children.push_back(child);
    m_index.insert(child->GetName(), child);
    child->m_parent = this;
}

boost::shared_ptr<C_Node> C_Category::Find(const QString& name) const
{
    return m_index.value(name);
}

boost::shared_ptr<C_Node> C_Category::FindPath(const QString& path) const
{
    if (path.isEmpty())
        return {};
    const C_Category* category = this;
    boost::shared_ptr<C_Node> node;
    qsizetype start = 0;
    for (;;) {
        const qsizetype slash = path.indexOf(QLatin1Char('/'), start);
        const QString step = path.mid(start, slash < 0 ? -1 : slash - start);
        node = category->Find(step);
        if (!node || slash < 0)
            return node;
        if (node->GetKind() != E_NodeKind::Category)
            return {};
        category = static_cast<const C_Category*>(node.get());
        start = slash + 1;
    }
}

bool C_Category::Remove(const QString& name)
{
    const boost::shared_ptr<C_Node> node = m_index.take(name);
    if (!node)
        return false;
    for (auto it = m_children.begin(); it != m_children.end(); ++it) {
        if (*it == node) {
            node->m_parent = nullptr;
            m_children.erase(it);
            break;
        }
    }
    return true;
}

void C_Category::Clear()
{
    for (const auto& child : m_children)
        child->m_parent = nullptr;
    m_children.clear();
    m_index.clear();
}

boost::shared_ptr<C_Node> C_Category::GetChildAt(unsigned index) const
{
    if (index >= m_children.size())
        RTE_THROW_MSG(VerificationFailed, "Category '" << GetName() << "' has no parameter " << index
                                                       << " (count " << m_children.size() << ")");
    return m_children[index];
}

} // namespace Parameter
} // namespace RTE
