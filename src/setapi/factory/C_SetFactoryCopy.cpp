// Copying whole sets. The source is only read: whatever fails, it stays as it was, and what was
// copied before the failure stays in the target.

#include <SetApi/factory/C_CopyFiles.h>
#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include "SetNesting.h"

#include <RTE/FileSystem.h>
#include <RTE/String.h>

#include <exception>
#include <functional>
#include <vector>

namespace SetApi {
namespace {

// Copies the content of the folder `from` into the folder `to`; false when that failed.
using ContentCopy = std::function<bool(const std::string& from, const std::string& to)>;

// Removes the plain files of the folder that match the pattern, one by one; set files stay when
// asked. A file that cannot be removed is skipped, a folder that cannot be listed ends the
// cleaning: either way the copy goes on.
void RemoveFilesTolerantly(const std::string& folder, const std::string& pattern, bool keepSetFiles)
{
    std::vector<std::string> files;
    try {
        files = RTE::FileSystem::GetFiles(folder, pattern, false, true);
    } catch (const std::exception&) {
        return;
    }
    for (const std::string& file : files) {
        if (keepSetFiles) {
            std::string extension = RTE::FileSystem::ExtractExtension(file, true);
            RTE::String::ToUpper(extension);
            if (extension == "SET")
                continue;
        }
        try {
            RTE::FileSystem::RemoveFile(file);
        } catch (const std::exception&) {
        }
    }
}

bool CopySet(C_SetFactory& factory, std::string from, std::string to, bool recursive, bool keepExisting,
             const ContentCopy& copyContent)
{
    from = C_SetUtilities::PrepareSetName(from);
    to = C_SetUtilities::PrepareSetName(to);
    const std::string fromFile = from + ".set";
    const std::string toFile = to + ".set";
    if (!factory.Exists(fromFile))
        return false;
    if (factory.Same(from, to) || to.empty())
        return false;
    // Into its own folder a recursive copy would copy without end; onto a set that holds it,
    // replacing the target would delete the source first.
    if (Private::IsInsideSetFolder(to, from) || Private::IsInsideSetFolder(from, to))
        return false;

    if (factory.Exists(to)) {
        if (!keepExisting) {
            std::string error;
            if (!factory.Remove(to, error))
                return false;
        } else {
            RemoveFilesTolerantly(to, ".*", true);
        }
    }
    try {
        RTE::FileSystem::CopyFile(fromFile, toFile, true);
    } catch (const std::exception&) {
        return false;
    }
    try {
        RTE::FileSystem::CreateDirectory(to);
    } catch (const std::exception&) {
        return false;
    }
    if (!copyContent(from, to))
        return false;
    // The set files of child sets whose folders were not copied must not stay behind.
    if (!recursive && keepExisting)
        RemoveFilesTolerantly(to, ".*\\.set", false);
    factory.NotifyOnCreate(to);
    return true;
}

} // namespace

bool C_SetFactory::Copy(std::string from, std::string to, bool recursive, bool keepExisting)
{
    return CopySet(*this, std::move(from), std::move(to), recursive, keepExisting,
                   [recursive](const std::string& source, const std::string& target) {
                       return C_SetUtilities::CopyFiles(source, target, recursive);
                   });
}

bool C_SetFactory::Copy(std::string from, std::string to, bool recursive, bool keepExisting,
                        const std::function<void(C_CopyFiles& copier)>& whileCopying)
{
    return CopySet(*this, std::move(from), std::move(to), recursive, keepExisting,
                   [recursive, &whileCopying](const std::string& source, const std::string& target) {
                       C_CopyFiles copier;
                       copier.SetParameters(source, ".*", target, recursive, true);
                       copier.Start();
                       if (whileCopying) {
                           try {
                               whileCopying(copier);
                           } catch (...) {
                               // The copier must not outlive the call; its run is cut short.
                               copier.Abort();
                               copier.WaitUntilFinished();
                               throw;
                           }
                       }
                       return copier.WaitUntilFinished();
                   });
}

} // namespace SetApi
