#pragma once
// Installs a file-system backend for the lifetime of the object and then puts the previous one
// back. Meant for tests; the backend is process-wide, so such tests must not run in parallel.

#include <RTE/Export.h>
#include <RTE/FileSystem.h>

#include <memory>

namespace RTE {

class RTE_API ScopedFileSystemBackend {
public:
    explicit ScopedFileSystemBackend(std::shared_ptr<I_FileSystemBackend> backend);
    ~ScopedFileSystemBackend();
    ScopedFileSystemBackend(const ScopedFileSystemBackend&) = delete;
    ScopedFileSystemBackend& operator=(const ScopedFileSystemBackend&) = delete;

private:
    std::shared_ptr<I_FileSystemBackend> m_previous;
};

} // namespace RTE
