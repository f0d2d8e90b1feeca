#pragma once
// The set hierarchy of a folder on disk. It keeps no state of its own beyond the root: relative
// names become full paths ("<absolute root>/<relative name>") and everything is forwarded to the
// set factory; the factory's notifications of sets created and removed, and its data-changed
// signal, come back as relative names through the hierarchy's signals. Events of sets outside the
// root are dropped. Renames are not passed on: a listener learns of one by reading the tree again.
//
// Listing opens every ".set" file of a folder through the factory, and keeps the ones that do not
// open as C_NullSet entries, so that a list is a true picture of the folder. No name is filtered.
//
// The hierarchy has no lock of its own. It is attached to the factory while it has a root, and
// detaches when destroyed.

#include <SetApi/Export.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/factory/I_SetHierarchy.h>

#include <QDir>
#include <QString>

#include <boost/signals2/connection.hpp>

#include <memory>
#include <string>

namespace SetApi {

class SETAPI_API C_SetFileSystemHierarchy : public I_SetHierarchy, private I_SetFactoryObserver {
public:
    // An empty name leaves the hierarchy without a root (listing the default QDir, the current
    // folder) and unattached; any other goes through SetRootFolder.
    explicit C_SetFileSystemHierarchy(const QString& rootFolder);
    ~C_SetFileSystemHierarchy() override;

    // Makes `folder` the root and attaches to the factory once, however often it is called. An
    // empty name does nothing; a missing folder raises RTE::VerificationFailed and leaves the
    // former root and attachment as they were.
    void SetRootFolder(const QString& folder);

    SetList GetRootSets() override;
    // Empty when the set has no folder. Raises RTE::VerificationFailed for a null set.
    SetList GetChildrenOfSet(std::shared_ptr<I_Set> set) override;
    bool HasSetChildren(std::shared_ptr<I_Set> parent) const override;
    // A name holding '/' or '\' raises RTE::VerificationFailed before anything is touched. A
    // rename that the factory refuses (a set of the new name exists) fails silently.
    void RenameSet(const QString& relativePath, const QString& newName) override;
    void RenameSet(std::shared_ptr<I_Set> set, const QString& newName) override;
    // Nothing happens when there is no such set; a failed removal raises RTE::Exception with the
    // factory's reason.
    void DeleteSet(const QString& relativePath) override;
    void DeleteSet(std::shared_ptr<I_Set> set) override;
    // Recursive copies that keep the target's set files; a failure raises RTE::VerificationFailed.
    void CopySet(const QString& relativeSource, const QString& relativeTarget) override;
    // Returns `set` itself when it already lies in the folder of `newParent`.
    std::shared_ptr<I_Set> CopySet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent) override;
    // A failed move raises RTE::VerificationFailed with the same text as a failed copy.
    void MoveSet(const QString& relativeSource, const QString& relativeTarget) override;
    // Does nothing when `set` already lies in the folder of `newParent`.
    void MoveSet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent) override;
    std::shared_ptr<I_Set> GetSetFromPath(const QString& relativePath) override;

private:
    // The sets of the ".set" files directly in `dir`, by name. Raises RTE::VerificationFailed
    // when the folder does not exist.
    SetList GetSetsFromPath(QDir dir) const;
    std::string FullPath(const QString& relativePath) const;

    void OnCreate(const std::string& path) override;
    void OnRemove(const std::string& path) override;
    void OnRename(const std::string& oldPath, const std::string& newPath) override;
    void OnSetDataChanged(const QString& path);
    // Fires `signal` with the path relative to the root, if the path lies under the root.
    void FireRelative(boost::signals2::signal<void(const QString&)>& signal, const QString& path) const;

    QDir m_root;
    boost::signals2::scoped_connection m_dataChangedConnection;
};

} // namespace SetApi
