// Removing whole sets: the set file and the folder go as one, or not at all.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/FileSystem.h>
#include <RTE/String.h>

#include <boost/filesystem/path.hpp>

#include <cstdlib>
#include <exception>

namespace SetApi {

bool C_SetFactory::Same(std::string a, std::string b)
{
    RTE::String::ToUpper(a);
    RTE::String::ToUpper(b);
    return a == b;
}

void C_SetFactory::RemoveFromPersistantCache(std::string path)
{
    std::lock_guard<std::recursive_mutex> lock(m_cacheMutex);
    bool flag = false;
    const std::shared_ptr<I_Set> pinned = Find(path, flag);
    if (!pinned->IsOpen())
        return;
    for (auto it = m_persistentCache.begin(); it != m_persistentCache.end(); ++it) {
        if (it->get() == pinned.get()) {
            m_persistentCache.erase(it);
            return;
        }
    }
}

bool C_SetFactory::Remove(const QString& path)
{
    std::string error;
    return Remove(path.toStdString(), error);
}

bool C_SetFactory::Remove(const std::string& path, std::string& error)
{
    error.clear();
    if (!Exists(path))
        return false;
    RemoveFromPersistantCache(path);
    if (!Exists(path))
        return true; // a pinned set without files: unpinning was all there was to do

    const std::string folder = C_SetUtilities::PrepareSetName(path);
    const std::string setFile = folder + ".set";
    const bool fileExists = RTE::FileSystem::Exists(setFile);
    const bool folderExists = RTE::FileSystem::IsDirectory(folder);
    if (fileExists && !RTE::FileSystem::WriteAccess(setFile)) {
        error = "No write access to SET";
        return false;
    }
    if (!fileExists && !folderExists) {
        error = "SET does not exist";
        return false;
    }

    // Both halves step aside under a temporary name first; each failure puts back what has moved.
    const int drawnFirst = std::rand();
    const int drawnSecond = std::rand();
    const std::string temporary = boost::filesystem::path(folder).parent_path().generic_string() + "/_Temp" +
                                  std::to_string(drawnSecond) + std::to_string(drawnFirst);
    const std::string temporaryFile = temporary + ".set";
    if (folderExists) {
        try {
            RTE::FileSystem::Rename(folder, temporary);
        } catch (const std::exception&) {
            error = "SET folder may be used by other application";
            return false;
        }
    }
    if (fileExists) {
        try {
            RTE::FileSystem::Rename(setFile, temporaryFile);
        } catch (const std::exception&) {
            if (folderExists)
                RTE::FileSystem::Rename(temporary, folder);
            error = "SET file may be used by other application";
            return false;
        }
    }
    if (RTE::FileSystem::Exists(temporary)) {
        try {
            RTE::FileSystem::RemoveDirectory(temporary);
        } catch (const std::exception&) {
            RTE::FileSystem::Rename(temporary, folder);
            if (fileExists)
                RTE::FileSystem::Rename(temporaryFile, setFile);
            error = "SET directory can't be removed";
            return false;
        }
    }
    if (RTE::FileSystem::Exists(temporaryFile)) {
        try {
            RTE::FileSystem::RemoveFile(temporaryFile);
        } catch (const std::exception&) {
            RTE::FileSystem::Rename(temporaryFile, setFile);
            error = "SET file can't be removed";
            return false;
        }
    }
    NotifyOnRemove(path);
    return true;
}

} // namespace SetApi
