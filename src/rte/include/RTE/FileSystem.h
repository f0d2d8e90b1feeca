#pragma once
// File access of the library family. Every operation goes through one backend, the file-system
// seam: the default backend works on boost::filesystem; tests install a backend that wraps it to
// inject faults (the Nth rename fails, a removal is refused, ...), and a port to another platform
// replaces it in one place. Failures raise RTE::FileError (a std::exception) naming the path.

#include <RTE/Export.h>

#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace RTE {

// What the library needs of a file system. Paths are narrow UTF-8 strings with '/' or '\'.
class RTE_API I_FileSystemBackend {
public:
    virtual ~I_FileSystemBackend();

    virtual bool Exists(const std::string& path) = 0;
    virtual bool IsDirectory(const std::string& path) = 0;
    // Whether the process may create or change files at the path (a folder or a file).
    virtual bool WriteAccess(const std::string& path) = 0;
    // Creates the folder and any missing parents; an existing folder is no failure.
    virtual void CreateDirectory(const std::string& path) = 0;
    // Removes a folder with everything in it; an absent folder is no failure.
    virtual void RemoveDirectory(const std::string& path) = 0;
    // Removes one file; an absent file is a failure.
    virtual void RemoveFile(const std::string& path) = 0;
    // Renames a file or folder; fails if the target exists.
    virtual void Rename(const std::string& from, const std::string& to) = 0;
    // Copies one file; without overwrite an existing target is a failure.
    virtual void CopyFile(const std::string& from, const std::string& to, bool overwrite) = 0;
    // The plain files (not folders) of a folder, as paths relative to it, with '/' between parts.
    virtual std::vector<std::string> ListFiles(const std::string& folder, bool recursive) = 0;
};

class RTE_API FileSystem {
public:
    static bool Exists(const std::string& path);
    static bool Exists(const QString& path);
    static bool Exists(const char* path) { return Exists(std::string(path)); }
    static bool IsDirectory(const std::string& path);
    static bool WriteAccess(const std::string& path);
    static void CopyFile(const std::string& from, const std::string& to, bool overwrite);
    static void CreateDirectory(const std::string& path);
    // Removes the folder with its content.
    static void RemoveDirectory(const std::string& path);
    static void RemoveFile(const std::string& path);
    static void Rename(const std::string& from, const std::string& to);

    // The path with every '\' turned into '/' and runs of separators folded into one (a leading
    // "//" of a network path stays). Touches no file.
    static std::string FixPath(const std::string& path);
    // The extension of the file name part: ".im7" for "a/B00001.im7", or "im7" with withoutDot.
    // Empty if the file name has no dot.
    static std::string ExtractExtension(const std::string& path, bool withoutDot);
    // The plain files of a folder whose names match the regular expression `pattern` as a whole
    // (ECMAScript syntax, case-sensitive), sorted by name. recursive: look into sub-folders too;
    // fullPaths: folder + '/' + relative path instead of the path relative to the folder.
    // A folder that does not exist gives an empty list; a bad pattern raises RTE::Exception.
    static std::vector<std::string> GetFiles(const std::string& folder, const std::string& pattern,
                                             bool recursive, bool fullPaths);

    // The backend in force; never null.
    static std::shared_ptr<I_FileSystemBackend> GetBackend();
    // Installs a backend; null restores the default one. Returns the one it replaced.
    static std::shared_ptr<I_FileSystemBackend> SetBackend(std::shared_ptr<I_FileSystemBackend> backend);
    // The default backend on boost::filesystem, for wrappers to forward to.
    static std::shared_ptr<I_FileSystemBackend> GetDefaultBackend();
};

} // namespace RTE
