#include <RTE/Parameter/List.h>

#include "ContainerChecks.h"

#include <RTE/Exception.h>

#include <boost/make_shared.hpp>

namespace RTE {
namespace Parameter {

const char* const C_List::EditorLineEdit = "LineEdit";

C_List::C_List(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
               ElementFactory factory)
    : C_Node(name, title, description, mode, EditorLineEdit), m_factory(std::move(factory))
{
}

C_List::~C_List() { Clear(); }

boost::shared_ptr<C_Node> C_List::Clone() const
{
    auto copy = boost::make_shared<C_List>(GetName(), GetTitle(), GetDescription(), GetAccessMode(), m_factory);
    copy->CopyAttributesFrom(*this);
    for (const auto& element : m_elements)
        copy->Append(element->Clone());
    return copy;
}

boost::shared_ptr<C_Node> C_List::Append()
{
    if (!m_factory)
        RTE_THROW_MSG(VerificationFailed, "List '" << GetName() << "' has no element factory");
    boost::shared_ptr<C_Node> element = m_factory();
    if (!element)
        RTE_THROW_MSG(VerificationFailed, "The element factory of list '" << GetName() << "' gave no element");
    Append(element);
    return element;
}

void C_List::Append(const boost::shared_ptr<C_Node>& element)
{
    Private::CheckNewChild(*this, element);
    m_elements.push_back(element);
    element->m_parent = this;
}

boost::shared_ptr<C_Node> C_List::GetAt(unsigned index) const
{
    if (index >= m_elements.size())
        RTE_THROW_MSG(VerificationFailed, "List '" << GetName() << "' has no element " << index << " (size "
                                                   << m_elements.size() << ")");
    return m_elements[index];
}

void C_List::Remove(unsigned index)
{
    if (index >= m_elements.size())
        RTE_THROW_MSG(VerificationFailed, "List '" << GetName() << "' has no element " << index << " (size "
                                                   << m_elements.size() << ")");
    m_elements[index]->m_parent = nullptr;
    m_elements.erase(m_elements.begin() + index);
}

void C_List::Clear()
{
    for (const auto& element : m_elements)
        element->m_parent = nullptr;
    m_elements.clear();
}

} // namespace Parameter
} // namespace RTE
