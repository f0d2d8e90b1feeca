#include "Commands.h"
#include "UnopenedSet.h"

#include <SetApi/factory/C_SetFileSystemHierarchy.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <RTE/Exception.h>

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <iomanip>
#include <memory>
#include <vector>

namespace SetApiTool {

namespace {

struct S_Entry {
    std::size_t depth = 0;
    std::string name;
    std::string type; // empty for a set file that does not open
    std::string why;  // for such a set file, what it is, when that is known
    unsigned size = 0;
};

std::string BareName(const SetApi::I_Set& set)
{
    const std::string name = SetApi::C_SetUtilities::PrepareSetName(set.GetName());
    return QFileInfo(QString::fromStdString(name)).fileName().toStdString();
}

class Lister {
public:
    Lister(const QString& root, bool recursive) : m_hierarchy(root), m_recursive(recursive)
    {
        m_visited.insert(QFileInfo(root).canonicalFilePath());
    }

    std::vector<S_Entry> List()
    {
        Add(m_hierarchy.GetRootSets(), 0);
        return std::move(m_entries);
    }

private:
    void Add(const std::vector<std::shared_ptr<SetApi::I_Set>>& sets, std::size_t depth)
    {
        for (const std::shared_ptr<SetApi::I_Set>& set : sets) {
            S_Entry entry;
            entry.depth = depth;
            entry.name = BareName(*set);
            if (set->IsOpen()) {
                entry.type = SetApi::GetSetTypeDisplayName(set->GetSetType()).toStdString();
                entry.size = set->GetSize();
            } else {
                entry.why = DescribeUnopenedSet(SetApi::C_SetUtilities::PrepareSetName(set->GetName()));
            }
            m_entries.push_back(entry);
            if (m_recursive && m_hierarchy.HasSetChildren(set) && FirstVisit(*set))
                Add(m_hierarchy.GetChildrenOfSet(set), depth + 1);
        }
    }

    // A folder reached a second time (through a link that points back up) is not listed again, so
    // that a loop in the file system cannot make the listing endless.
    bool FirstVisit(const SetApi::I_Set& set)
    {
        const QString folder = QFileInfo(QString::fromStdString(set.GetName())).canonicalFilePath();
        if (folder.isEmpty() || m_visited.contains(folder))
            return false;
        m_visited.insert(folder);
        return true;
    }

    SetApi::C_SetFileSystemHierarchy m_hierarchy;
    bool m_recursive;
    QSet<QString> m_visited;
    std::vector<S_Entry> m_entries;
};

} // namespace

int RunList(const std::string& folder, bool recursive, std::ostream& out)
{
    const QFileInfo info(QString::fromStdString(folder));
    if (!info.exists())
        RTE_THROW_MSG(RTE::Exception, "there is no folder '" << folder << "'");
    if (!info.isDir())
        RTE_THROW_MSG(RTE::Exception, "'" << folder << "' is no folder");

    const std::vector<S_Entry> entries = Lister(info.absoluteFilePath(), recursive).List();

    std::size_t nameWidth = 0, typeWidth = 0;
    for (const S_Entry& entry : entries) {
        nameWidth = std::max(nameWidth, 2 * entry.depth + entry.name.size());
        typeWidth = std::max(typeWidth, entry.type.size());
    }
    for (const S_Entry& entry : entries) {
        const std::string indented = std::string(2 * entry.depth, ' ') + entry.name;
        out << std::left << std::setw(int(nameWidth)) << indented << "  ";
        if (entry.type.empty())
            out << (entry.why.empty() ? "(does not open)" : "(" + entry.why + ")") << "\n";
        else
            out << std::setw(int(typeWidth)) << entry.type << "  " << entry.size
                << (entry.size == 1 ? " buffer\n" : " buffers\n");
    }
    return 0;
}

} // namespace SetApiTool
