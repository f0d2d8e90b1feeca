#pragma once
// The single entry through which every set comes into being: a process-wide singleton with the
// registry of set classes by type identifier, the registry of typed creators and view-callback
// sets by name, the persistent cache of sets the host keeps open on purpose, and the observers.
//
// Open and Create never fail by exception: on any failure they hand out a C_NullSet that carries
// the path, and callers ask IsOpen(). Exceptions leave the factory only from Register and from a
// failed mutex operation.
//
// Locks: a recursive cache mutex held through the whole of Open (open functions may call Open for
// sub-sets and source sets), a registry mutex held through both Create overloads, and an observer
// mutex held while observers run. The order is registry before observer. Open reads the registries
// without the registry mutex: registration is finished at library load, before sets are opened.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>

#include <QString>

#include <boost/signals2/connection.hpp>
#include <boost/signals2/signal.hpp>

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace SetApi {

class I_SetFactoryObserver;
class C_CopyFiles;

class SETAPI_API C_SetFactory {
public:
    // Each set class exports a static Open and Create of these signatures. The flag of Create is
    // the one given to C_SetFactory::Create, handed on untouched.
    using OpenFunction = std::function<I_Set*(const std::string& path)>;
    using CreateFunction = std::function<I_Set*(const std::string& path, I_Set::E_SetType type, bool flag)>;
    using SetCreator = std::function<std::shared_ptr<I_Set>(const QString& path)>;
    using DataChangedSlot = std::function<void(const QString& path)>;

    // The identifiers the factory itself knows: the default one, and the one of a set file that has
    // callback values but no identifier (registered by the host, if at all).
    static constexpr const char* DefaultSetIdentifier = "Set";
    static constexpr const char* CallbackSetIdentifier = "SetCL";

    static C_SetFactory& Instance();

    // Opens the set of that name (with or without ".set"), or returns the pinned one. The kind of
    // set is told by the "SetIdentifier" line of the set file alone.
    std::shared_ptr<I_Set> Open(std::string path);
    // Makes a set through the set-class registry; an empty identifier means "Set".
    std::shared_ptr<I_Set> Create(std::string path, std::string typeIdentifier, I_Set::E_SetType type, bool flag);
    // Makes a set through the typed creators.
    std::shared_ptr<I_Set> Create(const QString& path, const QString& typeName);
    // The set is pinned and open, or its ".set" file exists. A folder alone makes no set.
    bool Exists(std::string path);

    // Deletes a set from disk, set file and folder as one: both are first renamed out of the way,
    // so that a failure at any step puts back what was moved and leaves the set as it was. False
    // with `error` saying why ("No write access to SET", "SET does not exist", ...); false with an
    // empty `error` when there is no such set. Tells the observers on success.
    bool Remove(const std::string& path, std::string& error);
    // The same, without the error text.
    bool Remove(const QString& path);
    // Whether two set names are the same, compared in upper case.
    bool Same(std::string a, std::string b);
    // Renames set file and folder within their parent folder; `newName` is a bare name. False,
    // with nothing touched, when a set of the new name exists. Nothing is rolled back when the
    // folder was renamed and the set file then could not be.
    bool Rename(std::string path, std::string newName);
    // Moves a set to another full path: by renaming when the file system allows, else by copying
    // and then removing the source. A set at the target is replaced. False when the source does
    // not exist, the target is empty or names the source, or both ways failed.
    bool Move(std::string from, std::string to);
    // Copies a set. `recursive` copies the folders of child sets too. With `keepExisting` an
    // existing target keeps its set files while its other files are replaced; without it the
    // target set is removed first. False when the source does not exist or the copy failed.
    bool Copy(std::string from, std::string to, bool recursive, bool keepExisting);
    // The same copy, watched: `whileCopying` runs on the calling thread once the copier of the
    // folder's content has started (with progress figures on); it may poll the copier's
    // progress and call Abort. The copy's result comes when it returns. An aborted copy returns
    // false and leaves what it had copied in the target.
    bool Copy(std::string from, std::string to, bool recursive, bool keepExisting,
              const std::function<void(C_CopyFiles& copier)>& whileCopying);

    void AddPersistant(std::shared_ptr<I_Set> set);
    void RemovePersistant(std::shared_ptr<I_Set> set);

    // Raises RTE::VerificationFailed for an empty identifier, one already registered, or an empty
    // function.
    void Register(std::string identifier, OpenFunction open, CreateFunction create);
    // Assigns without a check: a later call replaces an earlier one.
    void Register(const QString& typeName, SetCreator creator);
    void RegisterViewCallbackSet(const QString& name, SetCreator creator);

    // Appends unless already attached; Detach removes every entry of the pointer.
    void Attach(I_SetFactoryObserver* observer);
    void Detach(I_SetFactoryObserver* observer);
    void NotifyOnCreate(std::string path);
    void NotifyOnRemove(std::string path);

    // Fires the data-changed signal with the path; takes no factory mutex.
    void NotifyOnDataChanged(std::string path);
    // Connects a slot to the data-changed signal; the caller keeps the connection.
    boost::signals2::connection ConnectToDataChanged(const DataChangedSlot& slot);

    // Whether a set class / typed creator / view-callback set is registered under the name.
    bool IsRegistered(const std::string& identifier) const;
    bool IsTypedCreatorRegistered(const QString& typeName) const;
    std::vector<std::string> GetRegisteredIdentifiers() const;

    C_SetFactory(const C_SetFactory&) = delete;
    C_SetFactory& operator=(const C_SetFactory&) = delete;

private:
    C_SetFactory();
    ~C_SetFactory();

    // Looks up the persistent cache by exact name after normalisation; a C_NullSet with the empty
    // name when there is none. Takes no lock; the flag is accepted and left untouched.
    std::shared_ptr<I_Set> Find(const std::string& path, bool& flag);
    std::shared_ptr<I_Set> OpenNormalised(const std::string& path);
    void NotifyOnRename(const std::string& from, const std::string& to);
    // Unpins the set of that name, if it is pinned and open.
    void RemoveFromPersistantCache(std::string path);

    boost::signals2::signal<void(const QString&)> m_dataChanged;
    std::list<std::shared_ptr<I_Set>> m_persistentCache;
    std::recursive_mutex m_cacheMutex;
    mutable std::mutex m_registryMutex;
    std::map<std::string, std::pair<OpenFunction, CreateFunction>> m_setClasses;
    std::mutex m_observerMutex;
    std::vector<I_SetFactoryObserver*> m_observers;
    std::map<QString, SetCreator> m_typedCreators;
    std::map<QString, SetCreator> m_viewCallbackSets;
};

} // namespace SetApi
