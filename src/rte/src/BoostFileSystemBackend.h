#pragma once
// The default file-system backend, on boost::filesystem and, for file streams, unbuffered C
// stdio. The only place of the runtime that calls the platform's file functions.

#include <RTE/FileSystem.h>

namespace RTE {
namespace Private {

class BoostFileSystemBackend : public I_FileSystemBackend {
public:
    bool Exists(const std::string& path) override;
    bool IsDirectory(const std::string& path) override;
    // A path that does not exist is judged by its folder. Besides the process's permission, at
    // least one write permission bit must be set: a file nobody may write counts as read-only
    // even for an administrator, as a read-only file attribute does.
    bool WriteAccess(const std::string& path) override;
    void CreateDirectory(const std::string& path) override;
    // Refuses a path that is a file.
    void RemoveDirectory(const std::string& path) override;
    // Refuses a folder.
    void RemoveFile(const std::string& path) override;
    void Rename(const std::string& from, const std::string& to) override;
    void ReplaceFile(const std::string& from, const std::string& to) override;
    // Refuses to copy a file onto itself, a folder, or onto a folder.
    void CopyFile(const std::string& from, const std::string& to, bool overwrite) override;
    // A folder that does not exist has no files; one that cannot be read raises RTE::FileError.
    // Symbolic links to folders are not followed; sub-folders that may not be read are skipped.
    std::vector<std::string> ListFiles(const std::string& folder, bool recursive) override;
    // Unbuffered C stdio with 64-bit offsets: each Append is one write and each ReadAt a seek and
    // one read, straight on the caller's memory. Paths are taken byte for byte (UTF-8 turned wide
    // on Windows); paths that name no file (empty, with a NUL) are refused.
    std::unique_ptr<I_WritableFile> OpenForWriting(const std::string& path) override;
    std::unique_ptr<I_ReadableFile> OpenForReading(const std::string& path) override;
    // On Linux a second descriptor with O_DIRECT serves the reads whose target, offset and size
    // are multiples of 4096; when the file system refuses O_DIRECT (at open, or with EINVAL on a
    // read) the file reads buffered from then on. Elsewhere the same as OpenForReading.
    std::unique_ptr<I_ReadableFile> OpenForDirectReading(const std::string& path) override;
    // On Linux one descriptor opened with O_DIRECT (or without, where the file system refuses it
    // at open or at the first write): whole 4 KiB blocks from aligned memory are written straight,
    // the rest is staged in an aligned block of the file's own; Close writes the staged tail,
    // trims the file to the bytes appended (and so any room reserved beyond) and waits for
    // fdatasync. Without direct I/O, writeback is started behind the data every few MiB and pages
    // written back are dropped from the cache. Elsewhere an ordinary file flushed to disk at Close.
    std::unique_ptr<I_WritableFile> OpenForDirectWriting(const std::string& path) override;
    // syncfs on Linux, fsync of the folder on other POSIX systems; nothing on Windows.
    void SyncFolder(const std::string& path) override;
};

} // namespace Private
} // namespace RTE
