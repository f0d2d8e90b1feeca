#include <RTE/Parameter/Enumeration.h>

#include <RTE/Exception.h>

#include <boost/make_shared.hpp>

namespace RTE {
namespace Parameter {

const char* const C_Enumeration::EditorComboBox = "ComboBox";

C_EnumerationEntry::C_EnumerationEntry(const QString& name, const QString& title, const QString& description,
                                       int value)
    : m_name(name), m_title(title), m_description(description), m_value(value)
{
}

C_Enumeration::C_Enumeration(const QString& name, const QString& title, const QString& description,
                             E_AccessMode mode, const char* editor)
    : C_Node(name, title, description, mode, editor)
{
}

boost::shared_ptr<C_Node> C_Enumeration::Clone() const
{
    auto copy = boost::make_shared<C_Enumeration>(GetName(), GetTitle(), GetDescription(), GetAccessMode(),
                                                  GetEditor());
    for (const auto& entry : m_entries)
        copy->m_entries.push_back(boost::make_shared<C_EnumerationEntry>(*entry));
    copy->m_selected = m_selected;
    return copy;
}

void C_Enumeration::AddEntry(const boost::shared_ptr<C_EnumerationEntry>& entry)
{
    RTE_VERIFY(entry != nullptr, "An enumeration entry must not be null");
    if (FindEntry(entry->GetName()))
        RTE_THROW_MSG(VerificationFailed, "Enumeration '" << GetName() << "' already has an entry named '"
                                                          << entry->GetName() << "'");
    m_entries.push_back(entry);
    if (m_selected < 0)
        m_selected = 0;
}

boost::shared_ptr<C_EnumerationEntry> C_Enumeration::GetEntry(unsigned index) const
{
    if (index >= m_entries.size())
        RTE_THROW_MSG(VerificationFailed, "Enumeration '" << GetName() << "' has no entry " << index);
    return m_entries[index];
}

boost::shared_ptr<C_EnumerationEntry> C_Enumeration::FindEntry(const QString& name) const
{
    for (const auto& entry : m_entries)
        if (entry->GetName() == name)
            return entry;
    return {};
}

void C_Enumeration::ClearEntries()
{
    m_entries.clear();
    m_selected = -1;
}

boost::shared_ptr<C_EnumerationEntry> C_Enumeration::GetSelected() const
{
    return m_selected < 0 ? boost::shared_ptr<C_EnumerationEntry>() : m_entries[static_cast<size_t>(m_selected)];
}

void C_Enumeration::SetSelectedIndex(int index)
{
    if (index < -1 || index >= static_cast<int>(m_entries.size()))
        RTE_THROW_MSG(VerificationFailed, "Enumeration '" << GetName() << "' has no entry " << index);
    if (index == m_selected)
        return;
    m_selected = index;
    NotifyChanged();
}

void C_Enumeration::SelectByName(const QString& name)
{
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i]->GetName() == name)
            return SetSelectedIndex(static_cast<int>(i));
    RTE_THROW_MSG(VerificationFailed, "Enumeration '" << GetName() << "' has no entry named '" << name << "'");
}

void C_Enumeration::SelectByValue(int value)
{
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i]->GetValue() == value)
            return SetSelectedIndex(static_cast<int>(i));
    RTE_THROW_MSG(VerificationFailed, "Enumeration '" << GetName() << "' has no entry of value " << value);
}

} // namespace Parameter
} // namespace RTE
