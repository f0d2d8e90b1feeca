// Moving whole sets: by renaming the folder when the file system allows it, else by copying and
// then removing the source. Whatever fails, the source keeps its set file and every buffer file:
// a fast way that fails half-way is undone before the slow way starts, and the slow way removes
// the source only after the copy has succeeded.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include "SetNesting.h"

#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <exception>

namespace SetApi {
namespace {

void RemoveFileQuietly(const std::string& file)
{
    try {
        if (RTE::FileSystem::Exists(file) && !RTE::FileSystem::IsDirectory(file))
            RTE::FileSystem::RemoveFile(file);
    } catch (const std::exception&) {
        // The slow way overwrites the file anyway.
    }
}

} // namespace

bool C_SetFactory::Move(std::string from, std::string to)
{
    from = C_SetUtilities::PrepareSetName(from);
    to = C_SetUtilities::PrepareSetName(to);
    const std::string fromFile = from + ".set";
    const std::string toFile = to + ".set";
    if (!Exists(from))
        return false;
    if (Same(from, to) || to.empty())
        return false;
    // Into its own folder it would copy without end; onto a set that holds it, replacing the
    // target would delete the source first.
    if (Private::IsInsideSetFolder(to, from) || Private::IsInsideSetFolder(from, to))
        return false;

    if (Exists(to)) {
        std::string ignored;
        Remove(to, ignored);
    }
    RemoveFileQuietly(toFile);

    // The fast way: the folder moves in one step; the set file follows by copy and removal.
    bool folderMoved = false;
    bool fileCopied = false;
    bool moved = false;
    try {
        RTE::FileSystem::Rename(from, to);
        folderMoved = true;
        RTE::FileSystem::CopyFile(fromFile, toFile, false);
        fileCopied = true;
        RTE::FileSystem::RemoveFile(fromFile);
        fileCopied = false; // the copy is the set file now
        folderMoved = false;
        NotifyOnRemove(from);
        moved = true;
    } catch (...) {
        // Put the source back together before the slow way copies it.
        if (fileCopied)
            RemoveFileQuietly(toFile);
        if (folderMoved) {
            try {
                RTE::FileSystem::Rename(to, from);
            } catch (const std::exception& e) {
                // The buffers are all in `to`, the set file is still at `from`: copying from
                // the source now would lose them. Leave both as they are.
                RTE::C_Logger("Set").error("Move '" + from + "' to '" + to +
                                           "': the folder could not be moved back: " + e.what());
                return false;
            }
        }
    }

    if (!moved) {
        // The slow way.
        try {
            RTE::FileSystem::CopyFile(fromFile, toFile, true);
            RTE::FileSystem::CreateDirectory(to);
            moved = C_SetUtilities::CopyFiles(from, to, true);
        } catch (const std::exception&) {
            moved = false;
        }
        if (moved && (RTE::FileSystem::Exists(fromFile) || RTE::FileSystem::IsDirectory(from))) {
            // The copy is complete; a source that cannot go is left as it is.
            std::string ignored;
            try {
                Remove(from, ignored);
            } catch (const std::exception&) {
            }
        }
    }
    NotifyOnCreate(to);
    return moved;
}

} // namespace SetApi
