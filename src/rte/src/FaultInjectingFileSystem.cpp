#include <RTE/FaultInjectingFileSystem.h>

#include <RTE/Exception.h>

namespace RTE {

FaultInjectingFileSystem::FaultInjectingFileSystem(std::shared_ptr<I_FileSystemBackend> target)
    : m_target(target ? std::move(target) : FileSystem::GetDefaultBackend())
{
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
}

void FaultInjectingFileSystem::ResetCounts()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Counter& counter : m_counters) {
        counter.calls = 0;
        counter.failures = 0;
    }
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
    case Operation::RemoveFile: return "RemoveFile";
    case Operation::RemoveDirectory: return "RemoveDirectory";
    case Operation::CopyFile: return "CopyFile";
    case Operation::CreateDirectory: return "CreateDirectory";
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
    if (fail)
        RTE_THROW_MSG(FileError, "Injected fault: " << OperationName(operation) << " " << path);
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

} // namespace RTE
