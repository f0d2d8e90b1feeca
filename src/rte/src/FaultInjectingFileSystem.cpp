#include <RTE/FaultInjectingFileSystem.h>

#include <RTE/Exception.h>

#include <algorithm>

namespace RTE {

struct FaultInjectingFileSystem::WriteBudget {
    std::mutex mutex;
    std::uint64_t written = 0;
    bool limited = false;
    std::uint64_t left = 0; // while limited

    // How many of `size` bytes the disk still takes; counts them as written.
    std::size_t Take(std::size_t size)
    {
        std::lock_guard<std::mutex> lock(mutex);
        std::size_t granted = size;
        if (limited) {
            granted = std::size_t(std::min<std::uint64_t>(left, size));
            left -= granted;
        }
        written += granted;
        return granted;
    }
};

namespace {

// A file of the target backend whose appends draw on the shared budget.
class BudgetedFile final : public I_WritableFile {
public:
    BudgetedFile(std::unique_ptr<I_WritableFile> target, std::shared_ptr<FaultInjectingFileSystem::WriteBudget> budget,
                 std::string path)
        : m_target(std::move(target)), m_budget(std::move(budget)), m_path(std::move(path))
    {
    }

    void Append(const void* data, std::size_t size) override
    {
        const std::size_t granted = m_budget->Take(size);
        if (granted > 0)
            m_target->Append(data, granted);
        if (granted < size)
            RTE_THROW_MSG(FileWriteError, "Injected fault: Write " << m_path << ": No space left on device");
    }

    void Close() override { m_target->Close(); }
    bool IsDirect() const override { return m_target->IsDirect(); }
    void Reserve(std::uint64_t bytes) override { m_target->Reserve(bytes); }
    void DeferSync() override { m_target->DeferSync(); }

private:
    std::unique_ptr<I_WritableFile> m_target;
    std::shared_ptr<FaultInjectingFileSystem::WriteBudget> m_budget;
    std::string m_path;
};

} // namespace

FaultInjectingFileSystem::FaultInjectingFileSystem(std::shared_ptr<I_FileSystemBackend> target)
    : m_target(target ? std::move(target) : FileSystem::GetDefaultBackend()), m_budget(std::make_shared<WriteBudget>())
{
}

void FaultInjectingFileSystem::FailWritesAfter(std::uint64_t bytes)
{
    std::lock_guard<std::mutex> lock(m_budget->mutex);
    m_budget->limited = true;
    m_budget->left = bytes;
}

std::uint64_t FaultInjectingFileSystem::WrittenBytes() const
{
    std::lock_guard<std::mutex> lock(m_budget->mutex);
    return m_budget->written;
}

void FaultInjectingFileSystem::FailCall(Operation operation, unsigned call)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_counters[static_cast<std::size_t>(operation)].failingCalls.insert(call);
}

void FaultInjectingFileSystem::FailCallsFrom(Operation operation, unsigned call)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_counters[static_cast<std::size_t>(operation)].failFrom = call == 0 ? 1 : call;
}

void FaultInjectingFileSystem::ClearFaults()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Counter& counter : m_counters) {
        counter.failingCalls.clear();
        counter.failFrom = 0;
    }
    std::lock_guard<std::mutex> budgetLock(m_budget->mutex);
    m_budget->limited = false;
}

void FaultInjectingFileSystem::ResetCounts()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Counter& counter : m_counters) {
        counter.calls = 0;
        counter.failures = 0;
    }
    std::lock_guard<std::mutex> budgetLock(m_budget->mutex);
    m_budget->written = 0;
}

unsigned FaultInjectingFileSystem::CallCount(Operation operation) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_counters[static_cast<std::size_t>(operation)].calls;
}

unsigned FaultInjectingFileSystem::FailureCount(Operation operation) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_counters[static_cast<std::size_t>(operation)].failures;
}

const char* FaultInjectingFileSystem::OperationName(Operation operation)
{
    switch (operation) {
    case Operation::Rename: return "Rename";
    case Operation::ReplaceFile: return "ReplaceFile";
    case Operation::RemoveFile: return "RemoveFile";
    case Operation::RemoveDirectory: return "RemoveDirectory";
    case Operation::CopyFile: return "CopyFile";
    case Operation::CreateDirectory: return "CreateDirectory";
    case Operation::OpenForWriting: return "OpenForWriting";
    }
    return "?";
}

void FaultInjectingFileSystem::Enter(Operation operation, const std::string& path)
{
    bool fail = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        Counter& counter = m_counters[static_cast<std::size_t>(operation)];
        const unsigned call = ++counter.calls;
        fail = counter.failingCalls.count(call) != 0 || (counter.failFrom != 0 && call >= counter.failFrom);
        if (fail)
            ++counter.failures;
    }
    if (fail) {
        if (operation == Operation::OpenForWriting)
            RTE_THROW_MSG(FileWriteError, "Injected fault: " << OperationName(operation) << " " << path);
        RTE_THROW_MSG(FileError, "Injected fault: " << OperationName(operation) << " " << path);
    }
}

bool FaultInjectingFileSystem::Exists(const std::string& path) { return m_target->Exists(path); }

bool FaultInjectingFileSystem::IsDirectory(const std::string& path) { return m_target->IsDirectory(path); }

bool FaultInjectingFileSystem::WriteAccess(const std::string& path) { return m_target->WriteAccess(path); }

void FaultInjectingFileSystem::CreateDirectory(const std::string& path)
{
    Enter(Operation::CreateDirectory, path);
    m_target->CreateDirectory(path);
}

void FaultInjectingFileSystem::RemoveDirectory(const std::string& path)
{
    Enter(Operation::RemoveDirectory, path);
    m_target->RemoveDirectory(path);
}

void FaultInjectingFileSystem::RemoveFile(const std::string& path)
{
    Enter(Operation::RemoveFile, path);
    m_target->RemoveFile(path);
}

void FaultInjectingFileSystem::ReplaceFile(const std::string& from, const std::string& to)
{
    Enter(Operation::ReplaceFile, from);
    m_target->ReplaceFile(from, to);
}

void FaultInjectingFileSystem::Rename(const std::string& from, const std::string& to)
{
    Enter(Operation::Rename, from);
    m_target->Rename(from, to);
}

void FaultInjectingFileSystem::CopyFile(const std::string& from, const std::string& to, bool overwrite)
{
    Enter(Operation::CopyFile, from);
    m_target->CopyFile(from, to, overwrite);
}

std::vector<std::string> FaultInjectingFileSystem::ListFiles(const std::string& folder, bool recursive)
{
    return m_target->ListFiles(folder, recursive);
}

std::unique_ptr<I_WritableFile> FaultInjectingFileSystem::OpenForWriting(const std::string& path)
{
    Enter(Operation::OpenForWriting, path);
    return std::make_unique<BudgetedFile>(m_target->OpenForWriting(path), m_budget, path);
}

std::unique_ptr<I_WritableFile> FaultInjectingFileSystem::OpenForDirectWriting(const std::string& path)
{
    Enter(Operation::OpenForWriting, path);
    return std::make_unique<BudgetedFile>(m_target->OpenForDirectWriting(path), m_budget, path);
}

void FaultInjectingFileSystem::SyncFolder(const std::string& path) { m_target->SyncFolder(path); }

std::unique_ptr<I_ReadableFile> FaultInjectingFileSystem::OpenForReading(const std::string& path)
{
    return m_target->OpenForReading(path);
}

std::unique_ptr<I_ReadableFile> FaultInjectingFileSystem::OpenForDirectReading(const std::string& path)
{
    return m_target->OpenForDirectReading(path);
}

} // namespace RTE
