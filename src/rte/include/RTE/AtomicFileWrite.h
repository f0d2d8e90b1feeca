#pragma once
// Writing a small file whole or not at all: set files, configuration and parameter files, which a
// reader must never find half written or empty, also after a full disk or a crash.

#include <RTE/Export.h>

#include <cstddef>
#include <string>

namespace RTE {

// Writes `size` bytes to a hidden temporary file beside `path`, makes them durable on disk and then
// puts that file in place of `path` in one step (FileSystem::ReplaceFile). Whoever opens `path`
// sees the earlier file or the new one, never a part of either. On failure (a full disk, a refused
// rename) the earlier file stays as it was, the temporary file is removed, and RTE::FileWriteError
// is raised naming `path` and the system's reason. All through the file-system seam.
RTE_API void WriteFileAtomically(const std::string& path, const void* data, std::size_t size);

inline void WriteFileAtomically(const std::string& path, const std::string& bytes)
{
    WriteFileAtomically(path, bytes.data(), bytes.size());
}

} // namespace RTE
