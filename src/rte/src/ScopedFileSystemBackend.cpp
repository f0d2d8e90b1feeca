#include <RTE/ScopedFileSystemBackend.h>

namespace RTE {

ScopedFileSystemBackend::ScopedFileSystemBackend(std::shared_ptr<I_FileSystemBackend> backend)
    : m_previous(FileSystem::SetBackend(std::move(backend)))
{
}

ScopedFileSystemBackend::~ScopedFileSystemBackend() { FileSystem::SetBackend(m_previous); }

} // namespace RTE
