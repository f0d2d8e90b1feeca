#pragma once
// A parameter node that selects one of a list of named entries.
//
// Entries are added in order; entry names are unique within the node. The first entry added becomes
// the selection; afterwards the selection changes only when asked (a change fires Changed()).

#include <RTE/Parameter/Node.h>

#include <vector>

namespace RTE {
namespace Parameter {

// One choice of an enumeration: a name, a title and a description for users, and an int value.
class RTE_API C_EnumerationEntry {
public:
    C_EnumerationEntry(const QString& name, const QString& title, const QString& description, int value);

    const QString& GetName() const { return m_name; }
    const QString& GetTitle() const { return m_title; }
    const QString& GetDescription() const { return m_description; }
    int GetValue() const { return m_value; }

private:
    QString m_name;
    QString m_title;
    QString m_description;
    int m_value;
};

class RTE_API C_Enumeration : public C_Node {
public:
    static const char* const EditorComboBox; // "ComboBox", the default

    C_Enumeration(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
                  const char* editor = EditorComboBox);

    E_NodeKind GetKind() const override { return E_NodeKind::Enumeration; }
    boost::shared_ptr<C_Node> Clone() const override;

    // Raises RTE::VerificationFailed for null or a name the node already has.
    void AddEntry(const boost::shared_ptr<C_EnumerationEntry>& entry);
    unsigned GetEntryCount() const { return static_cast<unsigned>(m_entries.size()); }
    // Raises RTE::VerificationFailed behind the end.
    boost::shared_ptr<C_EnumerationEntry> GetEntry(unsigned index) const;
    // Null if there is no entry of that name.
    boost::shared_ptr<C_EnumerationEntry> FindEntry(const QString& name) const;
    // Removes every entry; nothing is selected then.
    void ClearEntries();

    // -1 when nothing is selected.
    int GetSelectedIndex() const { return m_selected; }
    // Null when nothing is selected.
    boost::shared_ptr<C_EnumerationEntry> GetSelected() const;
    // -1 deselects. Raises RTE::VerificationFailed for an index that is neither -1 nor an entry.
    void SetSelectedIndex(int index);
    // Raise RTE::VerificationFailed if no entry has that name or value (the first match counts).
    void SelectByName(const QString& name);
    void SelectByValue(int value);

private:
    std::vector<boost::shared_ptr<C_EnumerationEntry>> m_entries;
    int m_selected = -1;
};

} // namespace Parameter
} // namespace RTE
