#pragma once
// File access of the library family. Every operation goes through one backend, the file-system
// seam: the default backend works on boost::filesystem (file streams on unbuffered C stdio);
// tests install a backend that wraps it to inject faults (the Nth rename fails, a write finds the
// disk full, ...), and a port to another platform replaces it in one place. Failures raise
// RTE::FileError (a std::exception) naming the path.

#include <RTE/Export.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace RTE {

// How a file is opened for reading. Direct reads go around the system's page cache (O_DIRECT on
// Linux) when the file system allows it and the read's target address, file offset and size are
// all multiples of 4096 bytes; every other read, and every read on a system or file system
// without direct I/O, is an ordinary buffered one. The bytes read are the same either way.
enum class ReadMode { Buffered, Direct };

// How a file is opened for writing. Direct writes go around the page cache (O_DIRECT on Linux)
// where the file system allows it: whole 4 KiB blocks are written straight from the caller's
// memory when it is 4 KiB aligned, everything else through a small aligned block of the file's
// own. Where the file system refuses direct I/O, writes are buffered, start their writeback as
// they go and drop the written pages from the cache. Either way a Direct file is durable on disk
// when Close returns, and it holds exactly the bytes appended.
enum class WriteMode { Buffered, Direct };

// A file open for writing from its start. Appends go straight to the system without a buffer of
// their own, so large blocks are written without a copy. Used by one thread at a time; the
// destructor closes the file without raising (call Close to learn about failures).
class RTE_API I_WritableFile {
public:
    virtual ~I_WritableFile();
    // Writes the bytes at the end of the file. A failure raises RTE::FileWriteError naming the path
    // and the system's reason ("No space left on device"); what went to the file before it stays.
    virtual void Append(const void* data, std::size_t size) = 0;
    // Closes the file; further calls do nothing. Raises RTE::FileWriteError if the system reports
    // that data could not be written. A WriteMode::Direct file is durable on disk when it returns.
    virtual void Close() = 0;
    // Whether whole aligned blocks currently go around the page cache (see WriteMode).
    virtual bool IsDirect() const;
    // A hint that the file will grow to about `bytes`: the file system may set aside room for it
    // in large extents. Room not used is given back at Close. The default does nothing.
    virtual void Reserve(std::uint64_t bytes);
    // For a writer of many files that makes them durable all at once with FileSystem::SyncFolder:
    // Close of this WriteMode::Direct file then does not wait for the disk. The default does
    // nothing (a buffered file never waits at Close).
    virtual void DeferSync();
};

// A file open for reading at any offset, without a buffer of its own: a read goes straight into
// the caller's memory. Used by one thread at a time.
class RTE_API I_ReadableFile {
public:
    virtual ~I_ReadableFile();
    // The size in bytes.
    virtual std::uint64_t Size() = 0;
    // Reads up to `size` bytes from `offset` into `data` and returns how many were read: fewer than
    // asked only at the end of the file, 0 from there on. A failure raises RTE::FileError naming
    // the path and the system's reason.
    virtual std::size_t ReadAt(std::uint64_t offset, void* data, std::size_t size) = 0;
    // Whether 4 KiB-aligned reads currently go around the page cache (see ReadMode).
    virtual bool IsDirect() const;
};

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
    // Puts the file `from` in place of the file `to` in one step: whoever opens `to` sees either
    // the old file or the new one, never none. `to` need not exist. Both lie in one folder.
    virtual void ReplaceFile(const std::string& from, const std::string& to) = 0;
    // Copies one file; without overwrite an existing target is a failure.
    virtual void CopyFile(const std::string& from, const std::string& to, bool overwrite) = 0;
    // The plain files (not folders) of a folder, as paths relative to it, with '/' between parts.
    virtual std::vector<std::string> ListFiles(const std::string& folder, bool recursive) = 0;
    // Creates the file or empties an existing one and opens it for writing. Raises
    // RTE::FileWriteError naming the path and the reason.
    virtual std::unique_ptr<I_WritableFile> OpenForWriting(const std::string& path) = 0;
    // Opens an existing file for reading. Raises RTE::FileError naming the path and the reason (a
    // missing file, a folder, no permission).
    virtual std::unique_ptr<I_ReadableFile> OpenForReading(const std::string& path) = 0;
    // As OpenForReading, with direct reads where the system allows (ReadMode::Direct). Falls back
    // silently to buffered reads; the default does so always.
    virtual std::unique_ptr<I_ReadableFile> OpenForDirectReading(const std::string& path);
    // As OpenForWriting, with WriteMode::Direct. The default opens an ordinary buffered file.
    virtual std::unique_ptr<I_WritableFile> OpenForDirectWriting(const std::string& path);
    // Makes everything written to files in the folder durable on disk (the whole file system's
    // pending writes, where the system has no finer call). The default does nothing.
    virtual void SyncFolder(const std::string& path);
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
    static void ReplaceFile(const std::string& from, const std::string& to);
    // File streams of the backend; see I_FileSystemBackend.
    static std::unique_ptr<I_WritableFile> OpenForWriting(const std::string& path);
    static std::unique_ptr<I_WritableFile> OpenForWriting(const std::string& path, WriteMode mode);
    static void SyncFolder(const std::string& path);
    static std::unique_ptr<I_ReadableFile> OpenForReading(const std::string& path);
    static std::unique_ptr<I_ReadableFile> OpenForReading(const std::string& path, ReadMode mode);

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
