#pragma once
// A buffer file open for reading through the file-system seam. The first read takes the first
// kFirstReadBytes of the file, which usually hold head and attributes, so that these cost one
// read; plane data is read by the caller straight into plane memory.

#include <RTE/FileSystem.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {
namespace BufferFile {

class SourceFile {
public:
    // Opens the file (RTE::FileError when it cannot be) and reads its first bytes.
    explicit SourceFile(const std::string& path);

    const std::string& Path() const { return m_path; }
    std::uint64_t Size() const { return m_size; }
    // The first bytes of the file: min(Size(), kFirstReadBytes).
    const std::vector<std::uint8_t>& First() const { return m_first; }

    // `size` bytes at `offset`, which the caller has checked to lie inside the file: a pointer into
    // the first bytes, or into `storage` after a read. A short read (the file shrank) raises.
    const std::uint8_t* Bytes(std::uint64_t offset, std::size_t size, std::vector<std::uint8_t>& storage);
    // Reads `size` bytes at `offset` into `destination` in one read; a short read raises.
    void ReadExactly(std::uint64_t offset, void* destination, std::size_t size);

private:
    std::string m_path;
    std::unique_ptr<RTE::I_ReadableFile> m_file;
    std::uint64_t m_size = 0;
    std::vector<std::uint8_t> m_first;
};

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
