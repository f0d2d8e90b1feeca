#include "BoostFileSystemBackend.h"

#include <RTE/Exception.h>

#include <boost/filesystem.hpp>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace RTE {
namespace Private {
namespace {

namespace fs = boost::filesystem;
using boost::system::error_code;

// Paths are UTF-8 whatever the platform's narrow encoding is.
fs::path ToPath(const std::string& utf8)
{
#if defined(_WIN32)
    return fs::path(QString::fromStdString(utf8).toStdWString());
#else
    return fs::path(utf8);
#endif
}

std::string FromPath(const fs::path& path)
{
#if defined(_WIN32)
    return QString::fromStdWString(path.generic_wstring()).toStdString();
#else
    return path.generic_string();
#endif
}

// A path as it appears in a message: NUL characters made visible.
QString Printable(const std::string& path)
{
    QString text = QString::fromStdString(path);
    text.replace(QChar(u'\0'), QStringLiteral("\\0"));
    return text;
}

QString Reason(const error_code& ec) { return QString::fromLocal8Bit(ec.message().c_str()); }

[[noreturn]] void Fail(const char* operation, const std::string& path, const QString& reason)
{
    RTE_THROW_MSG(FileError, operation << " '" << Printable(path) << "' failed: " << reason);
}

[[noreturn]] void Fail(const char* operation, const std::string& from, const std::string& to, const QString& reason)
{
    RTE_THROW_MSG(FileError,
                  operation << " '" << Printable(from) << "' to '" << Printable(to) << "' failed: " << reason);
}

// An empty path or one with a NUL character names no file; the NUL would cut the path short.
bool IsUsable(const std::string& path) { return !path.empty() && path.find('\0') == std::string::npos; }

QString Unusable(const std::string& path)
{
    return path.empty() ? QStringLiteral("empty path") : QStringLiteral("path contains a NUL character");
}

void Check(const char* operation, const std::string& path)
{
    if (!IsUsable(path))
        Fail(operation, path, Unusable(path));
}

void Check(const char* operation, const std::string& from, const std::string& to)
{
    if (!IsUsable(from))
        Fail(operation, from, to, Unusable(from));
    if (!IsUsable(to))
        Fail(operation, from, to, Unusable(to));
}

bool AnyWriteBit(fs::perms permissions)
{
    return (permissions & (fs::owner_write | fs::group_write | fs::others_write)) != fs::no_perms;
}

} // namespace

bool BoostFileSystemBackend::Exists(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    return fs::exists(ToPath(path), ec) && !ec;
}

bool BoostFileSystemBackend::IsDirectory(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    return fs::is_directory(ToPath(path), ec) && !ec;
}

bool BoostFileSystemBackend::WriteAccess(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    fs::path target = ToPath(path);
    fs::file_status status = fs::status(target, ec);
    if (!fs::exists(status)) {
        target = target.parent_path();
        if (target.empty())
            target = fs::current_path(ec);
        status = fs::status(target, ec);
        if (!fs::is_directory(status))
            return false;
    }
    if (!AnyWriteBit(status.permissions()))
        return false;
#if defined(_WIN32)
    return true;
#else
    return ::access(target.c_str(), W_OK) == 0;
#endif
}

void BoostFileSystemBackend::CreateDirectory(const std::string& path)
{
    Check("CreateDirectory", path);
    fs::path target = ToPath(path);
    error_code ec;
    if (fs::is_directory(target, ec))
        return;
    // A trailing separator would leave an empty last element that some versions trip over.
    while (!target.empty() && !target.has_filename() && target.has_parent_path() && target != target.root_path())
        target = target.parent_path();
    fs::create_directories(target, ec);
    if (ec)
        Fail("CreateDirectory", path, Reason(ec));
    if (!fs::is_directory(target, ec))
        Fail("CreateDirectory", path, QStringLiteral("a file of that name exists"));
}

void BoostFileSystemBackend::RemoveDirectory(const std::string& path)
{
    Check("RemoveDirectory", path);
    const fs::path target = ToPath(path);
    error_code ec;
    const fs::file_status status = fs::symlink_status(target, ec);
    if (!fs::exists(status))
        return;
    if (!fs::is_directory(status))
        Fail("RemoveDirectory", path, QStringLiteral("not a directory"));
    fs::remove_all(target, ec);
    if (ec)
        Fail("RemoveDirectory", path, Reason(ec));
}

void BoostFileSystemBackend::RemoveFile(const std::string& path)
{
    Check("RemoveFile", path);
    const fs::path target = ToPath(path);
    error_code ec;
    const fs::file_status status = fs::symlink_status(target, ec);
    if (!fs::exists(status))
        Fail("RemoveFile", path, ec ? Reason(ec) : QStringLiteral("no such file"));
    if (fs::is_directory(status))
        Fail("RemoveFile", path, QStringLiteral("is a directory"));
    fs::remove(target, ec);
    if (ec)
        Fail("RemoveFile", path, Reason(ec));
}

void BoostFileSystemBackend::Rename(const std::string& from, const std::string& to)
{
    Check("Rename", from, to);
    const fs::path source = ToPath(from);
    const fs::path target = ToPath(to);
    error_code ec;
    if (!fs::exists(fs::symlink_status(source, ec)))
        Fail("Rename", from, to, QStringLiteral("source does not exist"));
    if (fs::exists(fs::symlink_status(target, ec))) {
        // The same entry under another spelling (a change of case on a case-insensitive file
        // system) is a legal rename; anything else would replace the target.
        const bool same = fs::equivalent(source, target, ec) && !ec;
        if (!same)
            Fail("Rename", from, to, QStringLiteral("target exists"));
        if (source.lexically_normal() == target.lexically_normal())
            return;
    }
    fs::rename(source, target, ec);
    if (ec)
        Fail("Rename", from, to, Reason(ec));
}

void BoostFileSystemBackend::CopyFile(const std::string& from, const std::string& to, bool overwrite)
{
    Check("CopyFile", from, to);
    const fs::path source = ToPath(from);
    const fs::path target = ToPath(to);
    error_code ec;
    const fs::file_status sourceStatus = fs::status(source, ec);
    if (!fs::exists(sourceStatus))
        Fail("CopyFile", from, to, QStringLiteral("source does not exist"));
    if (!fs::is_regular_file(sourceStatus))
        Fail("CopyFile", from, to, QStringLiteral("source is not a file"));
    const fs::file_status targetStatus = fs::status(target, ec);
    if (fs::exists(targetStatus)) {
        if (fs::equivalent(source, target, ec) && !ec)
            Fail("CopyFile", from, to, QStringLiteral("source and target are the same file"));
        if (!overwrite)
            Fail("CopyFile", from, to, QStringLiteral("target exists"));
        if (fs::is_directory(targetStatus))
            Fail("CopyFile", from, to, QStringLiteral("target is a directory"));
    }
    fs::copy_file(source, target, overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none, ec);
    if (ec)
        Fail("CopyFile", from, to, Reason(ec));
}

std::vector<std::string> BoostFileSystemBackend::ListFiles(const std::string& folder, bool recursive)
{
    std::vector<std::string> files;
    if (!IsUsable(folder))
        return files;
    const fs::path root = ToPath(folder);
    error_code ec;
    if (!fs::is_directory(root, ec))
        return files;

    const auto isFile = [](const fs::directory_entry& entry) {
        error_code statusError;
        return fs::is_regular_file(entry.status(statusError)) && !statusError;
    };
    if (!recursive) {
        fs::directory_iterator it(root, ec);
        for (; !ec && it != fs::directory_iterator(); it.increment(ec))
            if (isFile(*it))
                files.push_back(FromPath(it->path().filename()));
    } else {
        fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec);
        for (; !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            if (isFile(*it))
                files.push_back(FromPath(it->path().lexically_relative(root)));
    }
    if (ec)
        Fail("ListFiles", folder, Reason(ec));
    return files;
}

} // namespace Private
} // namespace RTE
