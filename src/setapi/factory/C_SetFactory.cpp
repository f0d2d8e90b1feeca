#include <SetApi/factory/C_SetFactory.h>

#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <algorithm>
#include <exception>

namespace SetApi {

I_SetFactoryObserver::~I_SetFactoryObserver() = default;

C_SetFactory& C_SetFactory::Instance()
{
    static C_SetFactory instance;
    return instance;
}

C_SetFactory::C_SetFactory() = default;

C_SetFactory::~C_SetFactory()
{
    // Observers are not told. The cache goes last: a set closing may still look at the registries.
    m_viewCallbackSets.clear();
    m_typedCreators.clear();
    m_observers.clear();
    m_setClasses.clear();
    m_persistentCache.clear();
}

std::shared_ptr<I_Set> C_SetFactory::Open(std::string path)
{
    std::lock_guard<std::recursive_mutex> lock(m_cacheMutex);
    if (path.empty())
        return std::make_shared<C_NullSet>(path);
    try {
        path = C_SetUtilities::PrepareSetName(path);
        return OpenNormalised(path);
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error("Could not open set '" + path + "' --> '" + e.what() + "'");
    } catch (...) {
        RTE::C_Logger("Set").error("Could not open set '" + path + "' --> unknown error");
    }
    return std::make_shared<C_NullSet>(path);
}

std::shared_ptr<I_Set> C_SetFactory::OpenNormalised(const std::string& path)
{
    bool flag = false;
    std::shared_ptr<I_Set> cached = Find(path, flag);
    if (cached->IsOpen())
        return cached;

    C_DataSetParameter parameters;
    if (!C_SetUtilities::ReadSetGroupVariables(path + ".set", parameters))
        return std::make_shared<C_NullSet>(path);

    std::string identifier, viewCallback, loadCallback;
    parameters.GetValue("SetIdentifier", identifier);
    parameters.GetValue("SetViewCallback", viewCallback);
    parameters.GetValue("SetLoadCallback", loadCallback);

    // A registered view callback beats the identifier.
    const auto view = m_viewCallbackSets.find(QString::fromStdString(viewCallback));
    if (view != m_viewCallbackSets.end()) {
        std::shared_ptr<I_Set> set = view->second(QString::fromStdString(path));
        return set ? set : std::make_shared<C_NullSet>(path);
    }

    if (identifier.empty())
        identifier = viewCallback.empty() && loadCallback.empty() ? DefaultSetIdentifier : CallbackSetIdentifier;

    const auto setClass = m_setClasses.find(identifier);
    if (setClass == m_setClasses.end())
        return std::make_shared<C_NullSet>(path);
    // Not cached: a set lives only as long as its callers hold it.
    std::shared_ptr<I_Set> set(setClass->second.first(path));
    return set ? set : std::make_shared<C_NullSet>(path);
}

std::shared_ptr<I_Set> C_SetFactory::Create(std::string path, std::string typeIdentifier, I_Set::E_SetType type,
                                            bool flag)
{
    std::shared_ptr<I_Set> result = std::make_shared<C_NullSet>(path);
    if (typeIdentifier.empty())
        typeIdentifier = DefaultSetIdentifier;

    std::lock_guard<std::mutex> lock(m_registryMutex);
    const auto setClass = m_setClasses.find(typeIdentifier);
    if (setClass != m_setClasses.end()) {
        try {
            std::shared_ptr<I_Set> created(setClass->second.second(path, type, flag));
            if (created)
                result = std::move(created);
        } catch (...) {
            // A set class that cannot make the set leaves the caller with a null set; by design
            // nothing is logged here, the set class has said what it had to say.
            result = std::make_shared<C_NullSet>(path);
        }
    }
    if (result->IsOpen())
        NotifyOnCreate(result->GetName());
    return result;
}

std::shared_ptr<I_Set> C_SetFactory::Create(const QString& path, const QString& typeName)
{
    std::shared_ptr<I_Set> result = std::make_shared<C_NullSet>(path.toStdString());

    std::lock_guard<std::mutex> lock(m_registryMutex);
    const auto creator = m_typedCreators.find(typeName);
    if (creator != m_typedCreators.end()) {
        try {
            std::shared_ptr<I_Set> created = creator->second(path);
            if (created)
                result = std::move(created);
        } catch (...) {
            // As above: the default null set stays.
        }
    }
    if (result->IsOpen())
        NotifyOnCreate(result->GetName());
    return result;
}

bool C_SetFactory::Exists(std::string path)
{
    if (path.empty())
        return false;
    bool flag = false;
    {
        // Pinning may happen on another thread at the same time; the cache is read under its lock.
        std::lock_guard<std::recursive_mutex> lock(m_cacheMutex);
        if (Find(path, flag)->IsOpen())
            return true;
    }
    return RTE::FileSystem::Exists(C_SetUtilities::PrepareSetName(path) + ".set");
}

std::shared_ptr<I_Set> C_SetFactory::Find(const std::string& path, bool& /*flag*/)
{
    const std::string name = C_SetUtilities::PrepareSetName(path);
    for (const std::shared_ptr<I_Set>& set : m_persistentCache)
        if (set->GetName() == name)
            return set;
    return std::make_shared<C_NullSet>();
}

void C_SetFactory::AddPersistant(std::shared_ptr<I_Set> set)
{
    std::lock_guard<std::recursive_mutex> lock(m_cacheMutex);
    m_persistentCache.push_back(std::move(set));
}

void C_SetFactory::RemovePersistant(std::shared_ptr<I_Set> set)
{
    std::lock_guard<std::recursive_mutex> lock(m_cacheMutex);
    const auto it = std::find(m_persistentCache.begin(), m_persistentCache.end(), set);
    if (it != m_persistentCache.end())
        m_persistentCache.erase(it);
}

void C_SetFactory::Register(std::string identifier, OpenFunction open, CreateFunction create)
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    if (identifier.empty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Set identifier is empty"));
    if (m_setClasses.count(identifier) != 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Set is already registered"));
    if (!open)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Open method is NULL"));
    if (!create)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Create method is NULL"));
    m_setClasses.emplace(std::move(identifier), std::make_pair(std::move(open), std::move(create)));
}

void C_SetFactory::Register(const QString& typeName, SetCreator creator)
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    m_typedCreators[typeName] = std::move(creator);
}

void C_SetFactory::RegisterViewCallbackSet(const QString& name, SetCreator creator)
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    m_viewCallbackSets[name] = std::move(creator);
}

bool C_SetFactory::IsRegistered(const std::string& identifier) const
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    return m_setClasses.count(identifier) != 0;
}

bool C_SetFactory::IsTypedCreatorRegistered(const QString& typeName) const
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    return m_typedCreators.count(typeName) != 0;
}

std::vector<std::string> C_SetFactory::GetRegisteredIdentifiers() const
{
    std::lock_guard<std::mutex> lock(m_registryMutex);
    std::vector<std::string> identifiers;
    for (const auto& entry : m_setClasses)
        identifiers.push_back(entry.first);
    return identifiers;
}

void C_SetFactory::Attach(I_SetFactoryObserver* observer)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    if (std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end())
        m_observers.push_back(observer);
}

void C_SetFactory::Detach(I_SetFactoryObserver* observer)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

void C_SetFactory::NotifyOnCreate(std::string path)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    for (I_SetFactoryObserver* observer : m_observers)
        observer->OnCreate(path);
}

void C_SetFactory::NotifyOnRemove(std::string path)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    for (I_SetFactoryObserver* observer : m_observers)
        observer->OnRemove(path);
}

void C_SetFactory::NotifyOnRename(const std::string& from, const std::string& to)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    for (I_SetFactoryObserver* observer : m_observers)
        observer->OnRename(from, to);
}

void C_SetFactory::NotifyOnDataChanged(std::string path) { m_dataChanged(QString::fromStdString(path)); }

boost::signals2::connection C_SetFactory::ConnectToDataChanged(const DataChangedSlot& slot)
{
    return m_dataChanged.connect(slot);
}

} // namespace SetApi
