#pragma once
// The tree of sets of a project, seen as an abstract view: a set's children are the sets whose
// ".set" files lie directly in its folder, and the top level is a root folder. Sets are addressed
// either by objects or by names relative to the root.
//
// The three signals carry the path, relative to the root, of a set that was created, removed, or
// whose data changed. They fire on the thread that caused the event; a slot must not attach or
// detach hierarchies.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>

#include <QString>

#include <boost/signals2/signal.hpp>

#include <memory>
#include <vector>

namespace SetApi {

class SETAPI_API I_SetHierarchy {
public:
    using SetList = std::vector<std::shared_ptr<I_Set>>;

    I_SetHierarchy() = default;
    I_SetHierarchy(const I_SetHierarchy&) = delete;
    I_SetHierarchy& operator=(const I_SetHierarchy&) = delete;
    virtual ~I_SetHierarchy();

    virtual SetList GetRootSets() = 0;
    virtual SetList GetChildrenOfSet(std::shared_ptr<I_Set> set) = 0;
    // Whether the set's folder holds any ".set" entry; opens no set.
    virtual bool HasSetChildren(std::shared_ptr<I_Set> parent) const = 0;
    // `newName` is a bare name within the set's parent folder.
    virtual void RenameSet(const QString& relativePath, const QString& newName) = 0;
    virtual void RenameSet(std::shared_ptr<I_Set> set, const QString& newName) = 0;
    virtual void DeleteSet(const QString& relativePath) = 0;
    virtual void DeleteSet(std::shared_ptr<I_Set> set) = 0;
    virtual void CopySet(const QString& relativeSource, const QString& relativeTarget) = 0;
    // Copies the set into the folder of `newParent` and returns the copy.
    virtual std::shared_ptr<I_Set> CopySet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent) = 0;
    virtual void MoveSet(const QString& relativeSource, const QString& relativeTarget) = 0;
    virtual void MoveSet(std::shared_ptr<I_Set> set, std::shared_ptr<I_Set> newParent) = 0;
    virtual std::shared_ptr<I_Set> GetSetFromPath(const QString& relativePath) = 0;

    boost::signals2::signal<void(const QString&)> m_setCreated;
    boost::signals2::signal<void(const QString&)> m_setRemoved;
    boost::signals2::signal<void(const QString&)> m_setDataChanged;
};

} // namespace SetApi
