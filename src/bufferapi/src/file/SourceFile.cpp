#include "file/SourceFile.h"

#include "file/FileError.h"
#include "file/FileFormat.h"

#include <algorithm>

namespace BufferApi {
namespace Private {
namespace BufferFile {

SourceFile::SourceFile(const std::string& path)
    : m_path(path), m_file(RTE::FileSystem::OpenForReading(path)), m_size(m_file->Size())
{
    m_first.resize(std::size_t(std::min<std::uint64_t>(m_size, kFirstReadBytes)));
    if (!m_first.empty())
        ReadExactly(0, m_first.data(), m_first.size());
}

const std::uint8_t* SourceFile::Bytes(std::uint64_t offset, std::size_t size, std::vector<std::uint8_t>& storage)
{
    if (offset <= m_first.size() && size <= m_first.size() - offset)
        return m_first.data() + offset;
    storage.resize(size);
    ReadExactly(offset, storage.data(), size);
    return storage.data();
}

void SourceFile::ReadExactly(std::uint64_t offset, void* destination, std::size_t size)
{
    const std::size_t got = m_file->ReadAt(offset, destination, size);
    if (got != size)
        FailTruncated(m_path, QStringLiteral("read ") + QString::number(got) + QStringLiteral(" of ") +
                                  QString::number(size) + QStringLiteral(" bytes at ") + QString::number(offset));
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
