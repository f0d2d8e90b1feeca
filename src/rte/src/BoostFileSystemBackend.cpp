#include "BoostFileSystemBackend.h"

#include <RTE/BoostPath.h>
#include <RTE/Exception.h>

#include <boost/filesystem.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <system_error>

#if !defined(_WIN32)
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#endif
#if defined(_WIN32)
#include <io.h>
#endif

namespace RTE {
namespace Private {
namespace {

namespace fs = boost::filesystem;
using boost::system::error_code;

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

// File streams on C stdio without a buffer of their own (_IONBF): a large write or read goes in
// one system call straight between the caller's memory and the file. 64-bit offsets throughout.
QString ErrnoReason(int error) { return QString::fromStdString(std::generic_category().message(error)); }

std::FILE* OpenStream(const std::string& path, bool forWriting)
{
#if defined(_WIN32)
    return ::_wfopen(QString::fromStdString(path).toStdWString().c_str(), forWriting ? L"wb" : L"rb");
#else
    return std::fopen(path.c_str(), forWriting ? "wb" : "rb");
#endif
}

int SeekStream(std::FILE* stream, std::uint64_t offset, int origin)
{
#if defined(_WIN32)
    return ::_fseeki64(stream, static_cast<long long>(offset), origin);
#else
    return ::fseeko(stream, static_cast<off_t>(offset), origin);
#endif
}

std::uint64_t TellStream(std::FILE* stream)
{
#if defined(_WIN32)
    const long long position = ::_ftelli64(stream);
#else
    const off_t position = ::ftello(stream);
#endif
    return position < 0 ? std::numeric_limits<std::uint64_t>::max() : std::uint64_t(position);
}

struct StreamCloser {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

class StdioWritableFile final : public I_WritableFile {
public:
    // durable: Close flushes the file to the disk before it returns.
    explicit StdioWritableFile(const std::string& path, bool durable = false) : m_path(path), m_durable(durable)
    {
        if (!IsUsable(path))
            RTE_THROW_MSG(FileWriteError, "OpenForWriting '" << Printable(path) << "' failed: " << Unusable(path));
        errno = 0;
        m_stream.reset(OpenStream(path, true));
        if (!m_stream)
            RTE_THROW_MSG(FileWriteError, "OpenForWriting '" << Printable(path) << "' failed: " << ErrnoReason(errno));
        std::setvbuf(m_stream.get(), nullptr, _IONBF, 0);
    }

    void Append(const void* data, std::size_t size) override
    {
        if (!m_stream)
            RTE_THROW_MSG(FileWriteError, "Write '" << Printable(m_path) << "' failed: the file is closed");
        if (size == 0)
            return;
        errno = 0;
        if (std::fwrite(data, 1, size, m_stream.get()) != size)
            RTE_THROW_MSG(FileWriteError, "Write '" << Printable(m_path) << "' failed: " << ErrnoReason(errno));
    }

    void Close() override
    {
        if (!m_stream)
            return;
        errno = 0;
        int error = 0;
        if (m_durable) {
#if defined(_WIN32)
            if (std::fflush(m_stream.get()) != 0 || ::_commit(::_fileno(m_stream.get())) != 0)
                error = errno;
#else
            if (std::fflush(m_stream.get()) != 0 || ::fsync(::fileno(m_stream.get())) != 0)
                error = errno;
#endif
        }
        if (std::fclose(m_stream.release()) != 0 && error == 0)
            error = errno;
        if (error != 0)
            RTE_THROW_MSG(FileWriteError, "Close '" << Printable(m_path) << "' failed: " << ErrnoReason(error));
    }

private:
    std::string m_path;
    bool m_durable;
    Stream m_stream;
};

class StdioReadableFile final : public I_ReadableFile {
public:
    explicit StdioReadableFile(const std::string& path) : m_path(path)
    {
        if (!IsUsable(path))
            Fail("OpenForReading", path, Unusable(path));
        error_code ec;
        // Some systems open a folder for reading and fail only on the first read.
        if (fs::is_directory(ToBoostPath(path), ec))
            Fail("OpenForReading", path, QStringLiteral("is a directory"));
        errno = 0;
        m_stream.reset(OpenStream(path, false));
        if (!m_stream)
            Fail("OpenForReading", path, ErrnoReason(errno));
        std::setvbuf(m_stream.get(), nullptr, _IONBF, 0);
    }

    std::uint64_t Size() override
    {
        errno = 0;
        if (SeekStream(m_stream.get(), 0, SEEK_END) != 0)
            Fail("Size", m_path, ErrnoReason(errno));
        const std::uint64_t size = TellStream(m_stream.get());
        if (size == std::numeric_limits<std::uint64_t>::max())
            Fail("Size", m_path, ErrnoReason(errno));
        return size;
    }

    std::size_t ReadAt(std::uint64_t offset, void* data, std::size_t size) override
    {
        if (size == 0)
            return 0;
        errno = 0;
        if (offset > std::uint64_t(std::numeric_limits<std::int64_t>::max()) ||
            SeekStream(m_stream.get(), offset, SEEK_SET) != 0)
            Fail("Read", m_path, errno != 0 ? ErrnoReason(errno) : QStringLiteral("offset out of range"));
        const std::size_t got = std::fread(data, 1, size, m_stream.get());
        if (got < size && std::ferror(m_stream.get())) {
            const int error = errno;
            std::clearerr(m_stream.get());
            Fail("Read", m_path, ErrnoReason(error));
        }
        std::clearerr(m_stream.get());
        return got;
    }

private:
    std::string m_path;
    Stream m_stream;
};

#if defined(__linux__)
// Reads of 4 KiB-aligned target, offset and size through a descriptor opened with O_DIRECT, all
// others through the buffered file. Mixing both on one file is coherent: the kernel writes back
// and drops cached pages of a range before it reads that range directly.
class DirectReadableFile final : public I_ReadableFile {
public:
    static constexpr std::uint64_t kAlignment = 4096;

    DirectReadableFile(int descriptor, std::unique_ptr<I_ReadableFile> buffered, std::string path)
        : m_descriptor(descriptor), m_buffered(std::move(buffered)), m_path(std::move(path))
    {
    }
    ~DirectReadableFile() override { ::close(m_descriptor); }

    std::uint64_t Size() override { return m_buffered->Size(); }

    std::size_t ReadAt(std::uint64_t offset, void* data, std::size_t size) override
    {
        const bool aligned = (offset % kAlignment) == 0 && (size % kAlignment) == 0 &&
                             (reinterpret_cast<std::uintptr_t>(data) % kAlignment) == 0;
        if (!m_direct || !aligned || size == 0)
            return m_buffered->ReadAt(offset, data, size);
        if (offset > std::uint64_t(std::numeric_limits<std::int64_t>::max()))
            Fail("Read", m_path, QStringLiteral("offset out of range"));
        auto* target = static_cast<char*>(data);
        std::size_t done = 0;
        while (done < size) {
            const ::ssize_t got = ::pread(m_descriptor, target + done, size - done, off_t(offset + done));
            if (got < 0) {
                const int error = errno;
                if (error == EINTR)
                    continue;
                if (error != EINVAL)
                    Fail("Read", m_path, ErrnoReason(error));
                // The file system takes O_DIRECT at open but not for reads: read buffered from now.
                m_direct = false;
                return done + m_buffered->ReadAt(offset + done, target + done, size - done);
            }
            if (got == 0)
                break;
            done += std::size_t(got);
            if (done % kAlignment != 0) // a short read ends at the end of the file
                break;
        }
        return done;
    }

    bool IsDirect() const override { return m_direct; }

private:
    int m_descriptor;
    bool m_direct = true;
    std::unique_ptr<I_ReadableFile> m_buffered;
    std::string m_path;
};

// A file written with WriteMode::Direct: one descriptor, opened with O_DIRECT where the file
// system takes it. Invariants in direct mode: the bytes on disk are whole blocks up to `m_written`
// (a multiple of kBlock), and the bytes behind them, fewer than the stage holds, wait in the
// stage, so that the file's logical size is m_written + m_staged. Whole blocks from 4 KiB-aligned
// caller memory go to the disk in one pwrite without a copy; unaligned memory and partial blocks
// are copied into the stage, whose whole blocks are written at the end of every Append (and when
// it is full); only a partial last block waits there for the next Append or for Close, which
// writes it padded with zeros and then cuts the file to its logical size. When the file system refuses O_DIRECT, at open or with EINVAL on the first write, the
// file writes buffered from there on: the stage is written out once and the descriptor loses
// O_DIRECT.
class DirectWritableFile final : public I_WritableFile {
public:
    static constexpr std::size_t kBlock = 4096;
    // The stage: large enough that unaligned data goes out in pieces the disk takes at speed.
    static constexpr std::size_t kStageBytes = std::size_t(1) << 20;
    // Buffered writes: writeback is started for every this many bytes, and the piece before it
    // is waited for and dropped from the page cache, so dirty pages stay few and the cache clean.
    static constexpr std::uint64_t kWritebackBytes = std::uint64_t(8) << 20;
    // A run of whole aligned blocks up to this size (the header block of a record) waits in the
    // stage for the large aligned append behind it: both go to the disk in one gathered write,
    // which for images of a few MB saves a system call and a size update per image.
    static constexpr std::size_t kGatherBytes = std::size_t(64) << 10;

    DirectWritableFile(int descriptor, bool direct, std::string path)
        : m_descriptor(descriptor), m_direct(direct), m_path(std::move(path))
    {
    }

    ~DirectWritableFile() override
    {
        try {
            Close();
        } catch (...) {
            // Close logged it; a destructor must not raise.
        }
    }

    void Append(const void* data, std::size_t size) override
    {
        if (m_descriptor < 0)
            RTE_THROW_MSG(FileWriteError, "Write '" << Printable(m_path) << "' failed: the file is closed");
        if (m_broken)
            RTE_THROW_MSG(FileWriteError,
                          "Write '" << Printable(m_path) << "' failed: an earlier write to the file failed");
        const auto* bytes = static_cast<const char*>(data);
        const bool aligned = reinterpret_cast<std::uintptr_t>(bytes) % kBlock == 0;
        if (m_direct && aligned && size > 0 && size % kBlock == 0 && size <= kGatherBytes && m_staged % kBlock == 0 &&
            m_staged + size <= kStageBytes) {
            std::memcpy(Stage() + m_staged, bytes, size);
            m_staged += size;
            return;
        }
        while (size > 0) {
            if (!m_direct) {
                FlushStage();
                WriteBuffered(bytes, size);
                return;
            }
            const bool blockBoundary = m_staged % kBlock == 0;
            if (blockBoundary && size >= kBlock && reinterpret_cast<std::uintptr_t>(bytes) % kBlock == 0) {
                const std::size_t whole = size - size % kBlock;
                if (m_staged > 0) {
                    WriteGathered(bytes, whole);
                } else {
                    WriteDirect(bytes, whole); // or buffered, where the file system refused
                }
                bytes += whole;
                size -= whole;
                continue;
            }
            // A partial block is completed first, so that aligned data behind it may go straight.
            std::size_t take = std::min(size, kStageBytes - m_staged);
            if (!blockBoundary)
                take = std::min(take, kBlock - m_staged % kBlock);
            std::memcpy(Stage() + m_staged, bytes, take);
            m_staged += take;
            bytes += take;
            size -= take;
            if (m_staged == kStageBytes)
                FlushStage();
        }
        // Whole blocks do not wait in the stage: what a caller appended up to a block boundary is
        // in the file when Append returns, as it would be with buffered writing, so that a
        // process that dies leaves every complete record of a block-structured file behind. (A
        // small aligned run, above, waits for what follows it: a record's header block is no
        // use without its planes.)
        if (m_direct)
            FlushStage();
    }

    void Close() override
    {
        if (m_descriptor < 0)
            return;
        int error = 0;
        try {
            if (!m_broken)
                FlushTail();
        } catch (...) {
            ::close(m_descriptor);
            m_descriptor = -1;
            throw;
        }
        // The logical size (after a failed write, what reached the disk); cutting the file there
        // also gives back room reserved beyond it.
        const std::uint64_t size = m_broken ? m_written : m_written + m_staged;
        if (m_reserved > 0 || m_padded) {
            if (::ftruncate(m_descriptor, off_t(size)) != 0)
                error = errno;
            else if (m_reserved > size) {
                // Some file systems keep blocks preallocated past the end through a truncation to
                // the same size; a hole punched there returns them for certain.
                const std::uint64_t from = (size + kBlock - 1) / kBlock * kBlock;
                if (m_reserved > from)
                    ::fallocate(m_descriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, off_t(from),
                                off_t(m_reserved - from));
            }
        }
        if (error == 0 && m_syncAtClose && ::fdatasync(m_descriptor) != 0)
            error = errno;
        if (::close(m_descriptor) != 0 && error == 0)
            error = errno;
        m_descriptor = -1;
        m_staged = 0;
        if (error != 0)
            RTE_THROW_MSG(FileWriteError, "Close '" << Printable(m_path) << "' failed: " << ErrnoReason(error));
    }

    bool IsDirect() const override { return m_direct; }

    void DeferSync() override { m_syncAtClose = false; }

    void Reserve(std::uint64_t bytes) override
    {
        if (m_descriptor < 0 || bytes <= m_reserved)
            return;
        // A hint: a file system without preallocation, or a disk without the room, is no failure;
        // the writes themselves report a full disk.
        const std::uint64_t from = std::max(m_reserved, m_written);
        if (bytes > from && ::fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, off_t(from), off_t(bytes - from)) != 0)
            return;
        m_reserved = bytes;
    }

private:
    char* Stage()
    {
        if (!m_stage) {
            void* block = nullptr;
            if (::posix_memalign(&block, kBlock, kStageBytes) != 0)
                RTE_THROW_MSG(FileWriteError, "Write '" << Printable(m_path) << "' failed: out of memory");
            m_stage.reset(static_cast<char*>(block));
        }
        return m_stage.get();
    }

    // Writes the stage's whole blocks and keeps a partial last block in it.
    void FlushStage()
    {
        const std::size_t whole = m_staged - m_staged % kBlock;
        if (whole == 0)
            return;
        if (!m_direct) {
            const std::size_t staged = m_staged;
            m_staged = 0;
            WriteBuffered(m_stage.get(), staged);
            return;
        }
        WriteDirect(m_stage.get(), whole);
        if (!m_direct) // the stage went out buffered
            return;
        const std::size_t rest = m_staged - whole;
        std::memmove(m_stage.get(), m_stage.get() + whole, rest);
        m_staged = rest;
    }

    // Writes all that is staged; in direct mode the last block padded with zeros, to be cut off at
    // Close.
    void FlushTail()
    {
        if (m_staged == 0)
            return;
        if (!m_direct) {
            const std::size_t staged = m_staged;
            m_staged = 0;
            WriteBuffered(m_stage.get(), staged);
            return;
        }
        const std::size_t whole = (m_staged + kBlock - 1) / kBlock * kBlock;
        std::memset(m_stage.get() + m_staged, 0, whole - m_staged);
        const std::size_t staged = m_staged;
        WriteDirect(m_stage.get(), whole);
        if (m_direct) {
            // The padding is not part of the file: the logical size stays written + staged.
            m_written -= whole - staged;
            m_staged = 0;
            m_padded = true;
        }
    }

    // Writes whole aligned blocks from `bytes` at m_written. When the file system refuses (EINVAL
    // on the first direct write), the descriptor loses O_DIRECT and the bytes go out buffered, the
    // stage first if they are not the stage.
    void WriteDirect(const char* bytes, std::size_t size)
    {
        std::size_t done = 0;
        while (done < size) {
            const ::ssize_t put = ::pwrite(m_descriptor, bytes + done, size - done, off_t(m_written));
            if (put < 0) {
                const int error = errno;
                if (error == EINTR)
                    continue;
                if (error == EINVAL && m_written == 0 && done == 0 && LeaveDirect()) {
                    if (bytes != m_stage.get()) {
                        FlushStage();
                        WriteBuffered(bytes, size);
                    } else {
                        const std::size_t staged = m_staged;
                        m_staged = 0;
                        WriteBuffered(bytes, staged);
                    }
                    return;
                }
                Broken(error);
            }
            if (put == 0)
                Broken(EIO);
            done += std::size_t(put);
            m_written += std::uint64_t(put);
            if (m_written % kBlock != 0) {
                // A short write inside a block: no further direct write could follow it.
                m_staged = 0;
                Broken(ENOSPC);
            }
        }
    }

    // Writes the stage (whole blocks) and then `size` bytes of whole aligned blocks from `bytes`
    // with one system call. A refusal or a failure takes the way of one write at a time, which
    // knows how to handle it; a short write goes on from where it stopped.
    void WriteGathered(const char* bytes, std::size_t size)
    {
        ::iovec parts[2] = {{m_stage.get(), m_staged}, {const_cast<char*>(bytes), size}};
        ::ssize_t put;
        do {
            put = ::pwritev(m_descriptor, parts, 2, off_t(m_written));
        } while (put < 0 && errno == EINTR);
        if (put < 0) {
            FlushStage();
            WriteDirect(bytes, size);
            return;
        }
        m_written += std::uint64_t(put);
        if (m_written % kBlock != 0) {
            m_staged = 0;
            Broken(ENOSPC);
        }
        if (std::size_t(put) >= m_staged) {
            const std::size_t done = std::size_t(put) - m_staged;
            m_staged = 0;
            if (done < size)
                WriteDirect(bytes + done, size - done);
            return;
        }
        std::memmove(m_stage.get(), m_stage.get() + put, m_staged - std::size_t(put));
        m_staged -= std::size_t(put);
        FlushStage();
        WriteDirect(bytes, size);
    }

    void WriteBuffered(const char* bytes, std::size_t size)
    {
        std::size_t done = 0;
        while (done < size) {
            const ::ssize_t put = ::pwrite(m_descriptor, bytes + done, size - done, off_t(m_written));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0)
                Broken(put < 0 ? errno : EIO);
            done += std::size_t(put);
            m_written += std::uint64_t(put);
        }
        // Writeback of each finished piece starts at once; the piece before it is waited for and
        // leaves the cache. A recording thus neither fills the memory with dirty pages nor pushes
        // other data out of the cache, and Close has little left to wait for.
        while (m_written - m_writebackStarted >= kWritebackBytes) {
            const std::uint64_t start = m_writebackStarted;
            ::sync_file_range(m_descriptor, off_t(start), off_t(kWritebackBytes), SYNC_FILE_RANGE_WRITE);
            if (start >= kWritebackBytes) {
                const std::uint64_t before = start - kWritebackBytes;
                ::sync_file_range(m_descriptor, off_t(before), off_t(kWritebackBytes),
                                  SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
                ::posix_fadvise(m_descriptor, off_t(before), off_t(kWritebackBytes), POSIX_FADV_DONTNEED);
            }
            m_writebackStarted = start + kWritebackBytes;
        }
    }

    bool LeaveDirect()
    {
        const int flags = ::fcntl(m_descriptor, F_GETFL);
        if (flags < 0 || ::fcntl(m_descriptor, F_SETFL, flags & ~O_DIRECT) != 0)
            return false;
        m_direct = false;
        return true;
    }

    [[noreturn]] void Broken(int error)
    {
        m_broken = true;
        RTE_THROW_MSG(FileWriteError, "Write '" << Printable(m_path) << "' failed: " << ErrnoReason(error));
    }

    struct FreeDeleter {
        void operator()(char* block) const noexcept { std::free(block); }
    };

    int m_descriptor;
    bool m_direct;
    bool m_broken = false; // a write failed: nothing more is written, Close keeps what is on disk
    bool m_padded = false; // the last block on disk carries padding behind the logical end
    bool m_syncAtClose = true; // false: the owner syncs the folder (DeferSync)
    std::string m_path;
    std::unique_ptr<char, FreeDeleter> m_stage;
    std::size_t m_staged = 0;
    std::uint64_t m_written = 0;          // bytes on disk (in direct mode whole blocks)
    std::uint64_t m_reserved = 0;         // room preallocated up to here
    std::uint64_t m_writebackStarted = 0; // buffered: writeback started up to here
};
#endif

} // namespace

bool BoostFileSystemBackend::Exists(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    return fs::exists(ToBoostPath(path), ec) && !ec;
}

bool BoostFileSystemBackend::IsDirectory(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    return fs::is_directory(ToBoostPath(path), ec) && !ec;
}

bool BoostFileSystemBackend::WriteAccess(const std::string& path)
{
    if (!IsUsable(path))
        return false;
    error_code ec;
    fs::path target = ToBoostPath(path);
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
    fs::path target = ToBoostPath(path);
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
    const fs::path target = ToBoostPath(path);
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
    const fs::path target = ToBoostPath(path);
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
    const fs::path source = ToBoostPath(from);
    const fs::path target = ToBoostPath(to);
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

void BoostFileSystemBackend::ReplaceFile(const std::string& from, const std::string& to)
{
    Check("ReplaceFile", from, to);
    const fs::path source = ToBoostPath(from);
    const fs::path target = ToBoostPath(to);
    error_code ec;
    if (!fs::is_regular_file(fs::symlink_status(source, ec)))
        Fail("ReplaceFile", from, to, QStringLiteral("source is no file"));
    if (fs::is_directory(fs::symlink_status(target, ec)))
        Fail("ReplaceFile", from, to, QStringLiteral("target is a directory"));
    // rename(2) on POSIX and MoveFileEx with MOVEFILE_REPLACE_EXISTING on Windows: one step.
    fs::rename(source, target, ec);
    if (ec)
        Fail("ReplaceFile", from, to, Reason(ec));
}

void BoostFileSystemBackend::CopyFile(const std::string& from, const std::string& to, bool overwrite)
{
    Check("CopyFile", from, to);
    const fs::path source = ToBoostPath(from);
    const fs::path target = ToBoostPath(to);
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
#if defined(__linux__)
    // boost::filesystem::copy_file of Boost 1.74 ends every copy with fdatasync, so that each file
    // waits for the disk: a set of a thousand buffer files then copies at a third of the speed of
    // cp. Here the kernel copies (copy_file_range, a plain read/write loop where the file systems
    // cannot) and the data goes out to the disk as with any other write. The new file has the
    // source's permissions (less the umask); a failed copy leaves no partial target behind.
    struct Descriptor {
        int fd = -1;
        ~Descriptor()
        {
            if (fd >= 0)
                ::close(fd);
        }
    };
    Descriptor in, out;
    in.fd = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat sourceInfo {};
    if (in.fd < 0 || ::fstat(in.fd, &sourceInfo) != 0)
        Fail("CopyFile", from, to, ErrnoReason(errno));
    out.fd = ::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (overwrite ? O_TRUNC : O_EXCL),
                    sourceInfo.st_mode & 07777);
    if (out.fd < 0)
        Fail("CopyFile", from, to, ErrnoReason(errno));
    int error = 0;
    bool kernelCopy = true;
    std::unique_ptr<char[]> block;
    constexpr std::size_t kBlock = std::size_t(1) << 20;
    for (;;) {
        ::ssize_t got = 0;
        if (kernelCopy) {
            got = ::copy_file_range(in.fd, nullptr, out.fd, nullptr, std::size_t(1) << 30, 0);
            if (got < 0 && (errno == EXDEV || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL)) {
                kernelCopy = false; // the offsets stand where the kernel left them
                continue;
            }
        } else {
            if (!block)
                block.reset(new char[kBlock]);
            got = ::read(in.fd, block.get(), kBlock);
            for (::ssize_t written = 0; got > 0 && written < got;) {
                const ::ssize_t put = ::write(out.fd, block.get() + written, std::size_t(got - written));
                if ((put < 0 && errno != EINTR) || put == 0) {
                    error = put == 0 ? EIO : errno;
                    break;
                }
                written += put > 0 ? put : 0;
            }
            if (error != 0)
                break;
        }
        if (got < 0) {
            if (errno == EINTR)
                continue;
            error = errno;
            break;
        }
        if (got == 0)
            break;
    }
    const int closed = ::close(out.fd);
    out.fd = -1;
    if (error == 0 && closed != 0)
        error = errno;
    if (error != 0) {
        ::unlink(to.c_str());
        Fail("CopyFile", from, to, ErrnoReason(error));
    }
#else
    fs::copy_file(source, target, overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none, ec);
    if (ec)
        Fail("CopyFile", from, to, Reason(ec));
#endif
}

#if !defined(_WIN32)
namespace {
// The plain files of a folder by readdir; an entry of unknown type or a symbolic link is asked
// with stat (a link counts as the file it points to). False if the folder cannot be opened, so
// that the portable path reports the failure.
bool ListPlainFilesFast(const std::string& folder, std::vector<std::string>& files)
{
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return false;
    while (const dirent* entry = ::readdir(directory)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        bool plain = entry->d_type == DT_REG;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat info;
            plain = ::stat((folder + '/' + name).c_str(), &info) == 0 && S_ISREG(info.st_mode);
        }
        if (plain)
            files.emplace_back(name);
    }
    ::closedir(directory);
    return true;
}
} // namespace
#endif

std::vector<std::string> BoostFileSystemBackend::ListFiles(const std::string& folder, bool recursive)
{
    std::vector<std::string> files;
    if (!IsUsable(folder))
        return files;
    const fs::path root = ToBoostPath(folder);
    error_code ec;
    if (!fs::is_directory(root, ec))
        return files;

    const auto isFile = [](const fs::directory_entry& entry) {
        error_code statusError;
        return fs::is_regular_file(entry.status(statusError)) && !statusError;
    };
    if (!recursive) {
#if !defined(_WIN32)
        // One readdir pass that takes the entry type from the directory itself: a folder of
        // 100 000 buffer files is listed without 100 000 stat calls.
        if (ListPlainFilesFast(folder, files))
            return files;
#endif
        fs::directory_iterator it(root, ec);
        for (; !ec && it != fs::directory_iterator(); it.increment(ec))
            if (isFile(*it))
                files.push_back(FromBoostPath(it->path().filename()));
    } else {
        fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec);
        for (; !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            if (isFile(*it))
                files.push_back(FromBoostPath(it->path().lexically_relative(root)));
    }
    if (ec)
        Fail("ListFiles", folder, Reason(ec));
    return files;
}

std::unique_ptr<I_WritableFile> BoostFileSystemBackend::OpenForWriting(const std::string& path)
{
    return std::make_unique<StdioWritableFile>(path);
}

std::unique_ptr<I_ReadableFile> BoostFileSystemBackend::OpenForReading(const std::string& path)
{
    return std::make_unique<StdioReadableFile>(path);
}

std::unique_ptr<I_ReadableFile> BoostFileSystemBackend::OpenForDirectReading(const std::string& path)
{
    // The buffered file does the checks and failures of an ordinary open.
    auto buffered = std::make_unique<StdioReadableFile>(path);
#if defined(__linux__)
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECT | O_CLOEXEC);
    if (descriptor >= 0)
        return std::make_unique<DirectReadableFile>(descriptor, std::move(buffered), path);
#endif
    return buffered;
}

std::unique_ptr<I_WritableFile> BoostFileSystemBackend::OpenForDirectWriting(const std::string& path)
{
#if defined(__linux__)
    if (!IsUsable(path))
        RTE_THROW_MSG(FileWriteError, "OpenForWriting '" << Printable(path) << "' failed: " << Unusable(path));
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    int descriptor = ::open(path.c_str(), flags | O_DIRECT, 0666);
    bool direct = descriptor >= 0;
    if (descriptor < 0 && errno == EINVAL) // the file system refuses O_DIRECT
        descriptor = ::open(path.c_str(), flags, 0666);
    if (descriptor < 0)
        RTE_THROW_MSG(FileWriteError, "OpenForWriting '" << Printable(path) << "' failed: " << ErrnoReason(errno));
    return std::make_unique<DirectWritableFile>(descriptor, direct, path);
#else
    return std::make_unique<StdioWritableFile>(path, true);
#endif
}

void BoostFileSystemBackend::SyncFolder(const std::string& path)
{
    Check("SyncFolder", path);
#if !defined(_WIN32)
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC
#if defined(O_DIRECTORY)
                                                    | O_DIRECTORY
#endif
    );
    if (descriptor < 0)
        Fail("SyncFolder", path, ErrnoReason(errno));
#if defined(__linux__)
    const int result = ::syncfs(descriptor);
#else
    const int result = ::fsync(descriptor);
#endif
    const int error = errno;
    ::close(descriptor);
    if (result != 0)
        Fail("SyncFolder", path, ErrnoReason(error));
#endif
}

} // namespace Private
} // namespace RTE
