#pragma once
// A file-system backend for tests of recovery code: it forwards every call to another backend,
// counts the calls of the changing operations, and makes chosen calls fail with RTE::FileError
// "Injected fault: <operation> <path>" (for Rename and CopyFile the path is the source), without
// forwarding them; a failing OpenForWriting raises RTE::FileWriteError. It can also simulate a
// full disk: files opened for writing through it then take only so many bytes in all. Thread-safe.
//
//   auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
//   faults->FailCall(RTE::FaultInjectingFileSystem::Operation::Rename, 2); // the second rename
//   faults->FailWritesAfter(1000);                                        // the disk is nearly full
//   RTE::ScopedFileSystemBackend installed(faults);

#include <RTE/Export.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace RTE {

class RTE_API FaultInjectingFileSystem : public I_FileSystemBackend {
public:
    // ReplaceFile stays last: the counters are sized by it.
    enum class Operation { Rename, RemoveFile, RemoveDirectory, CopyFile, CreateDirectory, OpenForWriting, ReplaceFile };

    // Forwards to the given backend; null means the default one.
    explicit FaultInjectingFileSystem(std::shared_ptr<I_FileSystemBackend> target = nullptr);

    // Makes call number `call` (counted from 1) of the operation fail. May be given several times.
    void FailCall(Operation operation, unsigned call);
    // Makes every call of the operation from number `call` on fail.
    void FailCallsFrom(Operation operation, unsigned call);
    // A full disk: from now on the files written through this backend (those open already
    // included) take `bytes` more bytes in all. The Append that would go beyond writes what still
    // fits and raises RTE::FileWriteError "Injected fault: Write <path>: No space left on device".
    void FailWritesAfter(std::uint64_t bytes);
    // No call fails any more and the disk has room again; the counts stay.
    void ClearFaults();
    // Sets all counts, the written bytes included, back to 0; the faults stay and refer to the
    // new count.
    void ResetCounts();
    // Bytes appended to files opened through this backend so far.
    std::uint64_t WrittenBytes() const;
    // Calls of the operation so far, the failed ones included.
    unsigned CallCount(Operation operation) const;
    // Calls of the operation that were made to fail.
    unsigned FailureCount(Operation operation) const;

    static const char* OperationName(Operation operation);

    bool Exists(const std::string& path) override;
    bool IsDirectory(const std::string& path) override;
    bool WriteAccess(const std::string& path) override;
    void CreateDirectory(const std::string& path) override;
    void RemoveDirectory(const std::string& path) override;
    void RemoveFile(const std::string& path) override;
    void Rename(const std::string& from, const std::string& to) override;
    void ReplaceFile(const std::string& from, const std::string& to) override;
    void CopyFile(const std::string& from, const std::string& to, bool overwrite) override;
    std::vector<std::string> ListFiles(const std::string& folder, bool recursive) override;
    std::unique_ptr<I_WritableFile> OpenForWriting(const std::string& path) override;
    std::unique_ptr<I_ReadableFile> OpenForReading(const std::string& path) override;
    std::unique_ptr<I_ReadableFile> OpenForDirectReading(const std::string& path) override;
    // Counted and failed as OpenForWriting; the file draws on the same simulated disk.
    std::unique_ptr<I_WritableFile> OpenForDirectWriting(const std::string& path) override;
    void SyncFolder(const std::string& path) override;

    // The byte budget of the simulated disk, shared with the files opened for writing.
    struct WriteBudget;

private:
    static constexpr std::size_t OperationCount = static_cast<std::size_t>(Operation::ReplaceFile) + 1;
    struct Counter {
        unsigned calls = 0;
        unsigned failures = 0;
        std::set<unsigned> failingCalls;
        unsigned failFrom = 0; // 0: none
    };

    // Counts the call and raises the injected fault when it is one of the chosen.
    void Enter(Operation operation, const std::string& path);

    std::shared_ptr<I_FileSystemBackend> m_target;
    mutable std::mutex m_mutex;
    std::array<Counter, OperationCount> m_counters;
    std::shared_ptr<WriteBudget> m_budget;
};

} // namespace RTE
