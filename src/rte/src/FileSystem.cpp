#include <RTE/FileSystem.h>

#include <RTE/Exception.h>

#include "BoostFileSystemBackend.h"

#include <boost/regex.hpp>

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace RTE {
namespace {

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

struct BackendSlot {
    std::mutex mutex;
    std::shared_ptr<I_FileSystemBackend> backend;
};

BackendSlot& Slot()
{
    // Never destroyed: files may be touched during static destruction of other libraries.
    static BackendSlot* slot = [] {
        auto* s = new BackendSlot;
        s->backend = FileSystem::GetDefaultBackend();
        return s;
    }();
    return *slot;
}

} // namespace

I_FileSystemBackend::~I_FileSystemBackend() = default;

I_WritableFile::~I_WritableFile() = default;

I_ReadableFile::~I_ReadableFile() = default;

bool I_ReadableFile::IsDirect() const { return false; }

bool I_WritableFile::IsDirect() const { return false; }

void I_WritableFile::Reserve(std::uint64_t) {}

void I_WritableFile::DeferSync() {}

std::unique_ptr<I_WritableFile> I_FileSystemBackend::OpenForDirectWriting(const std::string& path)
{
    return OpenForWriting(path);
}

void I_FileSystemBackend::SyncFolder(const std::string&) {}

std::unique_ptr<I_ReadableFile> I_FileSystemBackend::OpenForDirectReading(const std::string& path)
{
    return OpenForReading(path);
}

std::shared_ptr<I_FileSystemBackend> FileSystem::GetDefaultBackend()
{
    static auto* backend = new std::shared_ptr<I_FileSystemBackend>(std::make_shared<Private::BoostFileSystemBackend>());
    return *backend;
}

std::shared_ptr<I_FileSystemBackend> FileSystem::GetBackend()
{
    BackendSlot& slot = Slot();
    std::lock_guard<std::mutex> lock(slot.mutex);
    return slot.backend;
}

std::shared_ptr<I_FileSystemBackend> FileSystem::SetBackend(std::shared_ptr<I_FileSystemBackend> backend)
{
    if (!backend)
        backend = GetDefaultBackend();
    BackendSlot& slot = Slot();
    std::lock_guard<std::mutex> lock(slot.mutex);
    std::swap(slot.backend, backend);
    return backend;
}

bool FileSystem::Exists(const std::string& path) { return GetBackend()->Exists(path); }

bool FileSystem::Exists(const QString& path) { return GetBackend()->Exists(path.toStdString()); }

bool FileSystem::IsDirectory(const std::string& path) { return GetBackend()->IsDirectory(path); }

bool FileSystem::WriteAccess(const std::string& path) { return GetBackend()->WriteAccess(path); }

void FileSystem::CopyFile(const std::string& from, const std::string& to, bool overwrite)
{
    GetBackend()->CopyFile(from, to, overwrite);
}

void FileSystem::CreateDirectory(const std::string& path) { GetBackend()->CreateDirectory(path); }

void FileSystem::RemoveDirectory(const std::string& path) { GetBackend()->RemoveDirectory(path); }

void FileSystem::RemoveFile(const std::string& path) { GetBackend()->RemoveFile(path); }

void FileSystem::Rename(const std::string& from, const std::string& to) { GetBackend()->Rename(from, to); }

void FileSystem::ReplaceFile(const std::string& from, const std::string& to) { GetBackend()->ReplaceFile(from, to); }

std::unique_ptr<I_WritableFile> FileSystem::OpenForWriting(const std::string& path)
{
    return GetBackend()->OpenForWriting(path);
}

std::unique_ptr<I_ReadableFile> FileSystem::OpenForReading(const std::string& path)
{
    return GetBackend()->OpenForReading(path);
}

std::unique_ptr<I_WritableFile> FileSystem::OpenForWriting(const std::string& path, WriteMode mode)
{
    return mode == WriteMode::Direct ? GetBackend()->OpenForDirectWriting(path) : GetBackend()->OpenForWriting(path);
}

void FileSystem::SyncFolder(const std::string& path) { GetBackend()->SyncFolder(path); }

std::unique_ptr<I_ReadableFile> FileSystem::OpenForReading(const std::string& path, ReadMode mode)
{
    return mode == ReadMode::Direct ? GetBackend()->OpenForDirectReading(path) : GetBackend()->OpenForReading(path);
}

std::string FileSystem::FixPath(const std::string& path)
{
    std::string fixed;
    fixed.reserve(path.size());
    std::size_t i = 0;
    while (i < path.size() && IsSeparator(path[i]))
        ++i;
    if (i >= 2)
        fixed = "//";
    else if (i == 1)
        fixed = "/";
    bool afterSeparator = i > 0;
    for (; i < path.size(); ++i) {
        if (IsSeparator(path[i])) {
            if (!afterSeparator)
                fixed += '/';
            afterSeparator = true;
        } else {
            fixed += path[i];
            afterSeparator = false;
        }
    }
    return fixed;
}

std::string FileSystem::ExtractExtension(const std::string& path, bool withoutDot)
{
    const std::size_t separator = path.find_last_of("/\\");
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot < nameStart)
        return std::string();
    return path.substr(withoutDot ? dot + 1 : dot);
}

std::vector<std::string> FileSystem::GetFiles(const std::string& folder, const std::string& pattern,
                                              bool recursive, bool fullPaths)
{
    boost::regex expression;
    try {
        expression.assign(pattern, boost::regex::ECMAScript);
    } catch (const boost::regex_error& e) {
        RTE_THROW_MSG(Exception, "Invalid file name pattern '" << pattern << "': " << e.what());
    }

    std::vector<std::string> files = GetBackend()->ListFiles(folder, recursive);
    const auto mismatch = [&](const std::string& relative) {
        const std::size_t separator = relative.rfind('/');
        const std::string name = separator == std::string::npos ? relative : relative.substr(separator + 1);
        try {
            return !boost::regex_match(name, expression);
        } catch (const std::runtime_error& e) {
            // boost::regex gives up on matches that would take too long rather than hang.
            RTE_THROW_MSG(Exception, "File name pattern '" << pattern << "' failed on '" << name << "': " << e.what());
        }
    };
    files.erase(std::remove_if(files.begin(), files.end(), mismatch), files.end());
    std::sort(files.begin(), files.end());

    if (fullPaths) {
        const std::string prefix = (!folder.empty() && IsSeparator(folder.back())) ? folder : folder + "/";
        for (std::string& file : files)
            file = prefix + file;
    }
    return files;
}

} // namespace RTE
