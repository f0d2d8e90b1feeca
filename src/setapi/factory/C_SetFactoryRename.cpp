// Renaming whole sets within their parent folder. Unlike Remove, a rename rolls nothing back: a
// set file that cannot follow its renamed folder leaves the folder under the new name.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <boost/filesystem/exception.hpp>

namespace SetApi {
namespace {

// The name beside `path` in the same folder. A name without folder part lies in the working
// folder, and so does its new name.
std::string Sibling(const std::string& path, const std::string& newName)
{
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return newName;
    return path.substr(0, slash) + "/" + newName;
}

} // namespace

bool C_SetFactory::Rename(std::string path, std::string newName)
{
    const std::string oldPath = C_SetUtilities::PrepareSetName(path);
    const std::string oldFile = oldPath + ".set";
    const std::string newPath = Sibling(oldPath, newName);
    const std::string newFile = newPath + ".set";
    if (Exists(newPath))
        return false;
    try {
        if (RTE::FileSystem::IsDirectory(oldPath))
            RTE::FileSystem::Rename(oldPath, newPath);
        if (RTE::FileSystem::Exists(oldFile))
            RTE::FileSystem::Rename(oldFile, newFile);
    } catch (const boost::filesystem::filesystem_error& e) {
        RTE::C_Logger("Set").error(e.what());
        return false;
    } catch (const RTE::FileError& e) {
        RTE::C_Logger("Set").error(e.what());
        return false;
    } catch (...) {
        return false;
    }
    NotifyOnRename(oldPath, newPath);
    return true;
}

} // namespace SetApi
