#pragma once
// Writes a record stream (records/RecordStream.h): the data and index files of one stream, one
// record per image, in batches. A batch is appended to the data file first and to the index file
// after, each in one write; a record counts for readers only when both have reached the disk, so
// a process killed at any point leaves a stream whose complete records read back and whose
// unflushed batch is simply missing.
//
// After a failed write the stream is broken: every further write raises RTE::FileWriteError, so
// that no record can land behind a gap.

#include "records/RecordStream.h"

#include <RTE/FileSystem.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SetApi {
namespace Private {
namespace Records {

class RecordStreamWriter {
public:
    explicit RecordStreamWriter(const StreamFormat& format);
    ~RecordStreamWriter();

    RecordStreamWriter(const RecordStreamWriter&) = delete;
    RecordStreamWriter& operator=(const RecordStreamWriter&) = delete;

    // Creates (or empties) both files at the destination and writes their preambles. Raises
    // RTE::FileWriteError when a file cannot be created or written.
    void Open(const QString& destination);
    bool IsOpen() const { return m_data != nullptr; }
    bool HasHead() const { return m_headWritten; }
    // A write failed: the stream takes nothing more.
    bool IsBroken() const { return m_broken; }
    // Writes the head block; once, before the first record.
    void WriteHead(const std::vector<std::uint8_t>& payload);
    // Adds the record of the next image to the batch, and writes the batch when it is full.
    void AppendRecord(const std::vector<std::uint8_t>& payload);
    // Records written or waiting in the batch.
    std::uint32_t RecordCount() const { return m_records; }
    // How many records a batch collects before it is written (at least 1; 1 writes every record at
    // once). A batch is also written when it reaches kMaxBatchBytes.
    void SetRecordsPerBatch(unsigned records);
    // Writes the batch.
    void Flush();
    // Flushes and closes both files; further calls do nothing. Raises RTE::FileWriteError when the
    // batch or the closing fails; the files are closed all the same.
    void Close();

    const std::string& DataPath() const { return m_dataPath; }

    static constexpr std::size_t kMaxBatchBytes = std::size_t(1) << 20;

private:
    void CheckWritable(const char* operation) const;

    StreamFormat m_format;
    std::string m_dataPath;
    std::string m_indexPath;
    std::unique_ptr<RTE::I_WritableFile> m_data;
    std::unique_ptr<RTE::I_WritableFile> m_index;
    bool m_headWritten = false;
    bool m_broken = false;
    std::uint64_t m_nextOffset = 0; // of the next record in the data file
    std::uint32_t m_records = 0;
    unsigned m_recordsPerBatch = 1;
    unsigned m_batchRecords = 0;
    std::vector<std::uint8_t> m_dataBatch;
    std::vector<std::uint8_t> m_indexBatch;
};

} // namespace Records
} // namespace Private
} // namespace SetApi
