#pragma once
// Reads a record stream (records/RecordStream.h). Opening reads the two preambles and the head
// block and checks the last indexed records; it does not scan the stream, so a stream of 100 000
// images opens as fast as one of 10. The image count is the number of leading index entries up to
// the last one that, together with its record, passes every check: a record cut short by a crash,
// an index entry without its record, or bytes the file system appended are not counted. Records
// before the last good one are checked when they are read; a damaged one raises RTE::Exception
// then, and the others stay readable.
//
// Every offset and length read from a file is checked against the file before it is used, and
// nothing is allocated beyond what the file holds. One thread at a time.

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

class RecordStreamReader {
public:
    explicit RecordStreamReader(const StreamFormat& format);
    ~RecordStreamReader();

    // Opens "<destination>.<suffix>" and "<destination>.index.<suffix>". Raises RTE::Exception (or
    // RTE::FileError, for a file that cannot be opened) when the stream cannot be read at all.
    void Open(const QString& destination);
    bool IsOpen() const { return m_data != nullptr; }
    // Closes the files; RecordCount() is 0 after.
    void Close();

    // The payload of the head block.
    const std::vector<std::uint8_t>& HeadPayload() const { return m_head; }
    std::uint32_t RecordCount() const { return m_count; }
    // Index entries behind the last good one: not counted, left by a crash or damage.
    std::uint64_t DroppedEntries() const { return m_droppedEntries; }

    // The checked payload of the record of the image, in `storage`. An image not below
    // RecordCount() raises RTE::Exception "... holds no image <n> ...", as does a record or entry
    // that fails its checks.
    struct Payload {
        const std::uint8_t* data;
        std::size_t bytes;
    };
    Payload ReadRecord(std::uint32_t image, std::vector<std::uint8_t>& storage) const;

    const StreamLabel& DataLabel() const { return m_dataLabel; }
    const StreamFormat& Format() const { return m_format; }

private:
    // An empty text when the entry at `position` is sound; otherwise what is wrong with it.
    QString CheckEntry(const std::uint8_t* entry, std::uint64_t position, IndexEntry& decoded) const;
    // Reads the record of the entry into storage; an empty text when it is sound.
    QString LoadRecord(const IndexEntry& entry, std::vector<std::uint8_t>& storage) const;
    void FindImageCount(std::uint64_t entries);

    StreamFormat m_format;
    StreamLabel m_dataLabel;
    StreamLabel m_indexLabel;
    std::unique_ptr<RTE::I_ReadableFile> m_data;
    std::unique_ptr<RTE::I_ReadableFile> m_index;
    std::uint64_t m_dataSize = 0;
    std::uint64_t m_indexSize = 0;
    std::uint64_t m_recordsStart = 0;
    std::uint64_t m_entriesStart = 0;
    std::uint32_t m_entryBytes = kIndexEntryBytes;
    std::vector<std::uint8_t> m_head;
    std::uint32_t m_count = 0;
    std::uint64_t m_droppedEntries = 0;
};

} // namespace Records
} // namespace Private
} // namespace SetApi
