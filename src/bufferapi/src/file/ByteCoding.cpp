#include "file/ByteCoding.h"

#include "file/FileError.h"

#include <RTE/Exception.h>

#include <limits>

namespace BufferApi {
namespace Private {
namespace BufferFile {

void ByteWriter::Str(const std::string& text)
{
    RTE_VERIFY(text.size() <= std::numeric_limits<std::uint32_t>::max(), "Text too long for a buffer file");
    U32(static_cast<std::uint32_t>(text.size()));
    Raw(text.data(), text.size());
}

void ByteWriter::Elements(const void* data, std::size_t count, std::size_t elementSize)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const std::size_t start = m_bytes.size();
    m_bytes.resize(start + count * elementSize);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* element = bytes + i * elementSize;
        const std::size_t at = start + i * elementSize;
        if (elementSize == 8) {
            std::uint64_t value;
            std::memcpy(&value, element, 8);
            Set(at, value, 8);
        } else if (elementSize == 4) {
            std::uint32_t value;
            std::memcpy(&value, element, 4);
            Set(at, value, 4);
        } else {
            std::uint16_t value;
            std::memcpy(&value, element, 2);
            Set(at, value, 2);
        }
    }
}

void ByteWriter::EndRecord(std::size_t at)
{
    const std::size_t size = m_bytes.size() - at - 4;
    RTE_VERIFY(size <= std::numeric_limits<std::uint32_t>::max(), "Record too large for a buffer file");
    Set(at, size, 4);
}

const std::uint8_t* ByteReader::Take(std::size_t size)
{
    if (size > Remaining())
        FailCorrupt(m_path, m_what + QStringLiteral(" ends early"));
    const std::uint8_t* bytes = m_data + m_position;
    m_position += size;
    return bytes;
}

ByteReader ByteReader::Record(const QString& what)
{
    const std::uint32_t size = U32();
    if (size > Remaining())
        FailCorrupt(m_path, what + QStringLiteral(" claims ") + QString::number(size) +
                                QStringLiteral(" bytes, ") + QString::number(Remaining()) +
                                QStringLiteral(" are left in ") + m_what);
    const std::uint8_t* bytes = Take(size);
    return ByteReader(bytes, size, m_path, what);
}

std::uint32_t ByteReader::Count(std::size_t minItemBytes, std::uint64_t limit, const QString& items)
{
    const std::uint32_t count = U32();
    if (count > limit || std::uint64_t(count) * minItemBytes > Remaining())
        FailCorrupt(m_path, m_what + QStringLiteral(" claims ") + QString::number(count) + QLatin1Char(' ') + items +
                                QStringLiteral(", which cannot fit in its ") + QString::number(Remaining()) +
                                QStringLiteral(" bytes"));
    return count;
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
