#include "records/RecordStreamWriter.h"

#include "records/ByteCoding.h"

#include <common/Crc32.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>
#include <limits>

namespace SetApi {
namespace Private {
namespace Records {

using BufferApi::Private::Crc32;

RecordStreamWriter::RecordStreamWriter(const StreamFormat& format) : m_format(format) {}

RecordStreamWriter::~RecordStreamWriter()
{
    try {
        Close();
    } catch (const std::exception& e) {
        // Already logged where it was raised; a destructor must not throw.
        RTE::C_Logger("Set").error(std::string("Closing ") + m_dataPath + " failed: " + e.what());
    }
}

void RecordStreamWriter::Open(const QString& destination)
{
    RTE_VERIFY(!destination.isEmpty(), "The stream has no destination");
    if (IsOpen())
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << " '" << destination << "' is opened twice");
    m_broken = false;
    m_headWritten = false;
    m_records = 0;
    m_batchRecords = 0;
    m_dataBatch.clear();
    m_indexBatch.clear();

    m_dataPath = (destination + QStringLiteral(".") + m_format.suffix).toStdString();
    m_indexPath = (destination + QStringLiteral(".index.") + m_format.suffix).toStdString();
    const std::uint64_t id = NewStreamId();
    try {
        m_data = RTE::FileSystem::OpenForWriting(m_dataPath);
        const auto dataPreamble = EncodePreamble(m_format.dataMagic, id, 0);
        m_data->Append(dataPreamble.data(), dataPreamble.size());
        m_index = RTE::FileSystem::OpenForWriting(m_indexPath);
        const auto indexPreamble = EncodePreamble(m_format.indexMagic, id, kIndexEntryBytes);
        m_index->Append(indexPreamble.data(), indexPreamble.size());
    } catch (...) {
        m_broken = true;
        m_data.reset();
        m_index.reset();
        throw;
    }
    m_nextOffset = kPreambleBytes;
}

void RecordStreamWriter::CheckWritable(const char* operation) const
{
    if (m_broken)
        RTE_THROW_MSG(RTE::FileWriteError, m_format.kind << " '" << m_dataPath
                                                         << "' cannot be written after an earlier write failure");
    if (!IsOpen())
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << ": " << operation << " without an open stream");
}

void RecordStreamWriter::WriteHead(const std::vector<std::uint8_t>& payload)
{
    CheckWritable("WriteHead");
    RTE_VERIFY(!m_headWritten && m_records == 0, "The head of a record stream is written once, before any record");
    if (payload.size() > kMaxHeadBytes - kHeadFrameBytes)
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << " '" << m_dataPath << "': a head of "
                                                             << payload.size() << " bytes is too large");
    std::vector<std::uint8_t> block;
    ByteWriter out(block);
    out.U32(static_cast<std::uint32_t>(payload.size() + kHeadFrameBytes));
    out.Bytes(payload.data(), payload.size());
    out.U32(Crc32(block.data(), block.size()));
    try {
        m_data->Append(block.data(), block.size());
    } catch (...) {
        m_broken = true;
        throw;
    }
    m_nextOffset += block.size();
    m_headWritten = true;
}

void RecordStreamWriter::AppendRecord(const std::vector<std::uint8_t>& payload)
{
    CheckWritable("AppendRecord");
    RTE_VERIFY(m_headWritten, "The head of a record stream must be written before its first record");
    if (payload.size() > kMaxRecordBytes - kRecordFrameBytes)
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << " '" << m_dataPath << "': the record of image "
                                                             << m_records << " would take " << payload.size()
                                                             << " bytes, more than the limit of "
                                                             << kMaxRecordBytes << " bytes");
    if (m_records == std::numeric_limits<std::uint32_t>::max())
        RTE_THROW_MSG(RTE::VerificationFailed, m_format.kind << " '" << m_dataPath << "' is full");

    const auto recordBytes = static_cast<std::uint32_t>(payload.size() + kRecordFrameBytes);
    const std::size_t start = m_dataBatch.size();
    ByteWriter data(m_dataBatch);
    data.U32(recordBytes);
    data.U32(m_records);
    data.Bytes(payload.data(), payload.size());
    const std::uint32_t recordCrc = Crc32(m_dataBatch.data() + start, m_dataBatch.size() - start);
    data.U32(recordCrc);

    const std::size_t entryStart = m_indexBatch.size();
    ByteWriter index(m_indexBatch);
    index.U64(m_nextOffset);
    index.U32(recordBytes);
    index.U32(m_records);
    index.U32(recordCrc);
    index.U32(Crc32(m_indexBatch.data() + entryStart, m_indexBatch.size() - entryStart));

    m_nextOffset += recordBytes;
    ++m_records;
    ++m_batchRecords;
    if (m_batchRecords >= m_recordsPerBatch || m_dataBatch.size() >= kMaxBatchBytes)
        Flush();
}

void RecordStreamWriter::SetRecordsPerBatch(unsigned records)
{
    m_recordsPerBatch = records == 0 ? 1 : records;
}

void RecordStreamWriter::Flush()
{
    if (m_batchRecords == 0 && !m_broken)
        return;
    CheckWritable("Flush");
    try {
        // Data before index: an entry never points at a record that is not yet written.
        m_data->Append(m_dataBatch.data(), m_dataBatch.size());
        m_index->Append(m_indexBatch.data(), m_indexBatch.size());
    } catch (...) {
        m_broken = true;
        m_dataBatch.clear();
        m_indexBatch.clear();
        m_batchRecords = 0;
        throw;
    }
    m_dataBatch.clear();
    m_indexBatch.clear();
    m_batchRecords = 0;
}

void RecordStreamWriter::Close()
{
    if (!IsOpen())
        return;
    std::exception_ptr failure;
    if (!m_broken) {
        try {
            Flush();
        } catch (...) {
            failure = std::current_exception();
        }
    }
    for (auto* file : {&m_data, &m_index}) {
        try {
            (*file)->Close();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
        file->reset();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace Records
} // namespace Private
} // namespace SetApi
