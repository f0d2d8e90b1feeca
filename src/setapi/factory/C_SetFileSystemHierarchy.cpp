#include <SetApi/factory/C_SetFileSystemHierarchy.h>

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/Exception.h>

#include <QFileInfo>
#include <QStringList>

namespace SetApi {

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

std::string NameOf(const std::shared_ptr<I_Set>& set)
{
    RTE_VERIFY(set, "Set is null.");
    return set->GetName();
}

// The path of the set that would lie in the folder of `parent` under the bare name of `set`.
std::string PathInParent(const std::shared_ptr<I_Set>& set, const std::shared_ptr<I_Set>& parent)
{
    const QString bareName = QFileInfo(QString::fromStdString(NameOf(set)) + ".set").completeBaseName();
    const QString folder = QFileInfo(QString::fromStdString(NameOf(parent)) + "/").absolutePath();
    return (folder + "/" + bareName).toStdString();
}

void VerifyBareName(const QString& newName)
{
    RTE_VERIFY(!newName.contains('/') && !newName.contains('\\'), "The new name must not contain a hierarchy path!");
}

void Remove(const std::string& path)
{
    if (!Factory().Exists(path))
        return;
    std::string error;
    if (!Factory().Remove(path, error))
        RTE_THROW_MSG(RTE::Exception, "Could not remove set" << path << ". Error: " << error);
}

void Copy(const std::string& source, const std::string& target)
{
    RTE_VERIFY(Factory().Copy(source, target, true, true), "CopySet failed");
}

void Move(const std::string& source, const std::string& target)
{
    // A failed move reports with the copy's text on purpose: callers match on it.
    RTE_VERIFY(Factory().Move(source, target), "CopySet failed");
}

} // namespace

C_SetFileSystemHierarchy::C_SetFileSystemHierarchy(const QString& rootFolder)
{
    SetRootFolder(rootFolder);
}

C_SetFileSystemHierarchy::~C_SetFileSystemHierarchy()
{
    m_dataChangedConnection.disconnect();
    Factory().Detach(this);
}

void C_SetFileSystemHierarchy::SetRootFolder(const QString& folder)
{
    if (folder.isEmpty())
        return;
    if (!QDir(folder).exists())
        RTE_THROW_MSG(RTE::VerificationFailed, "Set hierarchy root folder does not exists: " << folder);

    // Detaching first keeps a second root from leaving a second entry (and double events).
    Factory().Detach(this);
    m_root = QDir(folder);
    Factory().Attach(this);
    // Assigning to the scoped connection drops the former one.
    m_dataChangedConnection = Factory().ConnectToDataChanged([this](const QString& path) { OnSetDataChanged(path); });
}

std::string C_SetFileSystemHierarchy::FullPath(const QString& relativePath) const
{
    return (m_root.absolutePath() + "/" + relativePath).toStdString();
}

I_SetHierarchy::SetList C_SetFileSystemHierarchy::GetRootSets() { return GetSetsFromPath(m_root); }

I_SetHierarchy::SetList C_SetFileSystemHierarchy::GetChildrenOfSet(std::shared_ptr<I_Set> set)
{
    const QDir folder(QString::fromStdString(NameOf(set)));
    if (!folder.exists())
        return {};
    return GetSetsFromPath(folder);
}

I_SetHierarchy::SetList C_SetFileSystemHierarchy::GetSetsFromPath(QDir dir) const
{
    if (!dir.exists())
        RTE_THROW_MSG(RTE::VerificationFailed, "Path does not exists: " << dir.dirName());

    SetList sets;
    const QFileInfoList entries = dir.entryInfoList(QStringList{QStringLiteral("*.set")}, QDir::Files, QDir::Name);
    sets.reserve(static_cast<size_t>(entries.size()));
    for (const QFileInfo& entry : entries)
        sets.push_back(Factory().Open(entry.absoluteFilePath().toStdString()));
    return sets;
}

bool C_SetFileSystemHierarchy::HasSetChildren(std::shared_ptr<I_Set> parent) const
{
    RTE_VERIFY(parent, "Parent set must not be null.");
    const QDir folder(QString::fromStdString(parent->GetName()));
    if (!folder.exists())
        return false;
    return !folder.entryList(QStringList{QStringLiteral("*.set")}).isEmpty();
}

// The factory's answer is not looked at: a rename onto an existing name fails silently here.
void C_SetFileSystemHierarchy::RenameSet(const QString& relativePath, const QString& newName)
{
    VerifyBareName(newName);
    Factory().Rename(FullPath(relativePath), newName.toStdString());
}

void C_SetFileSystemHierarchy::RenameSet(std::shared_ptr<I_Set> set, const QString& newName)
{
    VerifyBareName(newName);
    Factory().Rename(NameOf(set), newName.toStdString());
}

void C_SetFileSystemHierarchy::DeleteSet(const QString& relativePath) { Remove(FullPath(relativePath)); }

void C_SetFileSystemHierarchy::DeleteSet(std::shared_ptr<I_Set> set) { Remove(NameOf(set)); }

void C_SetFileSystemHierarchy::CopySet(const QString& relativeSource, const QString& relativeTarget)
{
    Copy(FullPath(relativeSource), FullPath(relativeTarget));
}

std::shared_ptr<I_Set> C_SetFileSystemHierarchy::CopySet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent)
{
    const std::string target = PathInParent(set, newParent);
    const std::string source = set->GetName();
    if (Factory().Same(source, target))
        return set;
    Copy(source, target);
    return Factory().Open(target);
}

void C_SetFileSystemHierarchy::MoveSet(const QString& relativeSource, const QString& relativeTarget)
{
    Move(FullPath(relativeSource), FullPath(relativeTarget));
}

void C_SetFileSystemHierarchy::MoveSet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent)
{
    const std::string target = PathInParent(set, newParent);
    const std::string source = set->GetName();
    if (Factory().Same(source, target))
        return;
    Move(source, target);
}

std::shared_ptr<I_Set> C_SetFileSystemHierarchy::GetSetFromPath(const QString& relativePath)
{
    return Factory().Open(FullPath(relativePath));
}

void C_SetFileSystemHierarchy::FireRelative(boost::signals2::signal<void(const QString&)>& signal,
                                            const QString& path) const
{
    const QString absolutePath = QDir(path).absolutePath();
    const QString root = m_root.absolutePath();
    // A textual prefix test: a sibling folder whose name extends the root's name passes it too.
    if (absolutePath.indexOf(root, 0, Qt::CaseSensitive) != 0)
        return;
    signal(absolutePath.mid(root.length() + 1));
}

void C_SetFileSystemHierarchy::OnCreate(const std::string& path) { FireRelative(m_setCreated, QString::fromStdString(path)); }

void C_SetFileSystemHierarchy::OnRemove(const std::string& path) { FireRelative(m_setRemoved, QString::fromStdString(path)); }

// Renames are deliberately not passed on: listeners learn of them by reading the tree again.
void C_SetFileSystemHierarchy::OnRename(const std::string& /*oldPath*/, const std::string& /*newPath*/) {}

void C_SetFileSystemHierarchy::OnSetDataChanged(const QString& path) { FireRelative(m_setDataChanged, path); }

} // namespace SetApi
