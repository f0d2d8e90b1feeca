#include "records/RecordStreamReader.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <algorithm>
#include <limits>

namespace SetApi {
namespace Private {
namespace Records {

using BufferApi::Private::Crc32;
using BufferApi::Private::LoadLE;

namespace {
// How many indexed records at the end may fail their checks before the stream counts as damaged
// rather than cut short: a crash loses at most the batch in flight, and checking a record reads it.
constexpr unsigned kMaxTailRecordChecks = 64;
// Index bytes read at once while looking for the last good entry.
constexpr std::size_t kIndexChunkBytes = 64 * 1024;
} // namespace

RecordStreamReader::RecordStreamReader(const StreamFormat& format) : m_format(format) {}

RecordStreamReader::~RecordStreamReader() = default;

void RecordStreamReader::Close()
{
    m_data.reset();
    m_index.reset();
    m_head.clear();
    m_count = 0;
    m_droppedEntries = 0;
}

void RecordStreamReader::Open(const QString& destination)
{
    Close();
    RTE_VERIFY(!destination.isEmpty(), "The stream has no destination");

    m_dataLabel = StreamLabel{m_format.kind, (destination + QStringLiteral(".") + m_format.suffix).toStdString()};
    m_indexLabel =
        StreamLabel{m_format.kind, (destination + QStringLiteral(".index.") + m_format.suffix).toStdString()};
    try {
        m_data = RTE::FileSystem::OpenForReading(m_dataLabel.path);
        m_dataSize = m_data->Size();
        const Preamble data = ReadPreamble(*m_data, m_dataSize, m_format.dataMagic, m_format.formatName, m_dataLabel);

        // Head block.
        const std::uint64_t headAt = data.preambleBytes;
        if (m_dataSize - headAt < kHeadFrameBytes)
            FailTruncated(m_dataLabel, QStringLiteral("the head block is missing"));
        std::uint8_t field[4];
        ReadExactly(*m_data, headAt, field, 4, m_dataLabel);
        const std::uint64_t headBytes = LoadLE(field, 4);
        if (headBytes < kHeadFrameBytes || headBytes > kMaxHeadBytes)
            FailCorrupt(m_dataLabel, QStringLiteral("head block of %1 bytes").arg(headBytes));
        if (headBytes > m_dataSize - headAt)
            FailTruncated(m_dataLabel, QStringLiteral("head block of %1 bytes, %2 bytes left")
                                           .arg(headBytes)
                                           .arg(m_dataSize - headAt));
        std::vector<std::uint8_t> block(static_cast<std::size_t>(headBytes));
        ReadExactly(*m_data, headAt, block.data(), block.size(), m_dataLabel);
        if (Crc32(block.data(), block.size() - 4) != LoadLE(block.data() + block.size() - 4, 4))
            FailCorrupt(m_dataLabel, QStringLiteral("head block checksum mismatch"));
        m_head.assign(block.begin() + 4, block.end() - 4);
        m_recordsStart = headAt + headBytes;

        // Index.
        m_index = RTE::FileSystem::OpenForReading(m_indexLabel.path);
        m_indexSize = m_index->Size();
        const Preamble index =
            ReadPreamble(*m_index, m_indexSize, m_format.indexMagic, m_format.formatName, m_indexLabel);
        if (index.streamId != data.streamId)
            Fail(m_indexLabel, QStringLiteral("belongs to another stream than '") +
                                   QString::fromStdString(m_dataLabel.path) + QStringLiteral("'"));
        if (index.entryBytes < kIndexEntryBytes || index.entryBytes > kMaxPreambleBytes)
            FailCorrupt(m_indexLabel, QStringLiteral("index entries of %1 bytes").arg(index.entryBytes));
        m_entryBytes = index.entryBytes;
        m_entriesStart = index.preambleBytes;
        FindImageCount((m_indexSize - m_entriesStart) / m_entryBytes);
    } catch (...) {
        Close();
        throw;
    }
}

QString RecordStreamReader::CheckEntry(const std::uint8_t* entry, std::uint64_t position, IndexEntry& decoded) const
{
    if (Crc32(entry, m_entryBytes - 4) != LoadLE(entry + m_entryBytes - 4, 4))
        return QStringLiteral("index entry %1 fails its checksum").arg(position);
    decoded.recordOffset = LoadLE(entry, 8);
    decoded.recordBytes = static_cast<std::uint32_t>(LoadLE(entry + 8, 4));
    decoded.image = static_cast<std::uint32_t>(LoadLE(entry + 12, 4));
    decoded.recordCrc = static_cast<std::uint32_t>(LoadLE(entry + 16, 4));
    if (decoded.image != position)
        return QStringLiteral("index entry %1 names image %2").arg(position).arg(decoded.image);
    if (decoded.recordBytes < kRecordFrameBytes || decoded.recordBytes > kMaxRecordBytes)
        return QStringLiteral("record of image %1 has an impossible size of %2 bytes")
            .arg(position)
            .arg(decoded.recordBytes);
    if (decoded.recordOffset < m_recordsStart || decoded.recordOffset > m_dataSize ||
        decoded.recordBytes > m_dataSize - decoded.recordOffset)
        return QStringLiteral("record of image %1 (%2 bytes at %3) lies outside the data of %4 bytes")
            .arg(position)
            .arg(decoded.recordBytes)
            .arg(decoded.recordOffset)
            .arg(m_dataSize);
    return QString();
}

QString RecordStreamReader::LoadRecord(const IndexEntry& entry, std::vector<std::uint8_t>& storage) const
{
    storage.resize(entry.recordBytes);
    const std::size_t got = m_data->ReadAt(entry.recordOffset, storage.data(), storage.size());
    if (got != storage.size())
        return QStringLiteral("record of image %1: read %2 of %3 bytes").arg(entry.image).arg(got).arg(storage.size());
    const std::uint8_t* record = storage.data();
    const std::size_t crcAt = storage.size() - 4;
    const auto storedCrc = static_cast<std::uint32_t>(LoadLE(record + crcAt, 4));
    if (LoadLE(record, 4) != entry.recordBytes || LoadLE(record + 4, 4) != entry.image)
        return QStringLiteral("record of image %1 does not match its index entry").arg(entry.image);
    if (Crc32(record, crcAt) != storedCrc || storedCrc != entry.recordCrc)
        return QStringLiteral("record of image %1 fails its checksum").arg(entry.image);
    return QString();
}

void RecordStreamReader::FindImageCount(std::uint64_t entries)
{
    // Image indices are 32 bits wide; entries beyond cannot be good.
    const std::uint64_t considered = std::min<std::uint64_t>(entries, std::numeric_limits<std::uint32_t>::max());
    const std::uint64_t chunkEntries = std::max<std::uint64_t>(1, kIndexChunkBytes / m_entryBytes);
    std::vector<std::uint8_t> chunk;
    std::vector<std::uint8_t> record;
    unsigned recordChecks = 0;
    std::uint64_t end = considered;
    while (end > 0) {
        const std::uint64_t first = end > chunkEntries ? end - chunkEntries : 0;
        chunk.resize(static_cast<std::size_t>((end - first) * m_entryBytes));
        ReadExactly(*m_index, m_entriesStart + first * m_entryBytes, chunk.data(), chunk.size(), m_indexLabel);
        for (std::uint64_t position = end; position-- > first;) {
            IndexEntry entry;
            if (!CheckEntry(chunk.data() + (position - first) * m_entryBytes, position, entry).isEmpty())
                continue;
            if (LoadRecord(entry, record).isEmpty()) {
                m_count = static_cast<std::uint32_t>(position + 1);
                m_droppedEntries = entries - m_count;
                if (m_droppedEntries > 0)
                    RTE::C_Logger("Set").info(m_format.kind.toStdString() + " '" + m_dataLabel.path + "' ends in " +
                                              std::to_string(m_droppedEntries) +
                                              " incomplete records, which are not counted");
                return;
            }
            if (++recordChecks >= kMaxTailRecordChecks)
                FailCorrupt(m_dataLabel,
                            QStringLiteral("the last %1 indexed records fail their checks").arg(recordChecks));
        }
        end = first;
    }
    m_count = 0;
    m_droppedEntries = entries;
}

RecordStreamReader::Payload RecordStreamReader::ReadRecord(std::uint32_t image,
                                                          std::vector<std::uint8_t>& storage) const
{
    if (!IsOpen())
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << ": read of image " << image << " before Open");
    if (image >= m_count)
        Fail(m_dataLabel, QStringLiteral("holds no image %1: it holds %2 images").arg(image).arg(m_count));
    std::vector<std::uint8_t> entryBytes(m_entryBytes);
    ReadExactly(*m_index, m_entriesStart + std::uint64_t(image) * m_entryBytes, entryBytes.data(), entryBytes.size(),
                m_indexLabel);
    IndexEntry entry;
    const QString entryProblem = CheckEntry(entryBytes.data(), image, entry);
    if (!entryProblem.isEmpty())
        FailCorrupt(m_indexLabel, entryProblem);
    const QString recordProblem = LoadRecord(entry, storage);
    if (!recordProblem.isEmpty())
        FailCorrupt(m_dataLabel, recordProblem);
    return Payload{storage.data() + 8, storage.size() - kRecordFrameBytes};
}

} // namespace Records
} // namespace Private
} // namespace SetApi
