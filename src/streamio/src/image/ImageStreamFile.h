#pragma once
// The files of one image stream opened for reading: finds how many complete records the stream
// holds without scanning it, and reads a record's planes with their checksums checked. Knows
// nothing of element types beyond the header; C_ImageReader unpacks and converts. Used by one
// thread at a time. A stream whose header says its planes carry no checksums is read alike, but
// its planes are not hashed and opening checks only the last records' headers, not their pixels.
//
// Opening: the stream header is read and checked. For a raw stream the file size bounds the
// number of records; when the last record's header is not sound (a tail of zeros that a file
// system preallocated, a record cut short), a binary search over the record headers finds the
// last sound one. A compressed stream's index is treated alike, and records that were appended
// behind its last entry (the writer died between record and entry) are taken up by stepping from
// record header to record header. Then the pixel data of the last record is checked, and a record
// that fails is not counted (up to kTailChecks of them): a stream cut short by a crash counts its
// complete images only.

#include "image/ImageStreamFormat.h"

#include <model/AlignedMemory.h>

#include <RTE/FileSystem.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct XXH3_state_s;

namespace SetApi {
namespace Private {

class ImageStreamFile {
public:
    // Records at the end checked for their pixel data at opening (streams with pixel checksums).
    static constexpr unsigned kTailChecks = 4;

    // Raises RTE::Exception naming the file when the stream cannot be read at all: no data file,
    // no stream header, a damaged or foreign header, a newer major version.
    ImageStreamFile(const std::string& dataPath, const std::string& indexPath, bool direct);
    ~ImageStreamFile();
    ImageStreamFile(const ImageStreamFile&) = delete;
    ImageStreamFile& operator=(const ImageStreamFile&) = delete;

    const ImageStream::StreamHeader& Header() const { return m_header; }
    const ImageStream::Layout& GetLayout() const { return m_layout; }
    std::uint32_t ImageCount() const { return m_count; }
    // False when the files end in anything but complete records, or index and data disagree.
    bool IsConsistent() const { return m_consistent; }
    const std::string& DataPath() const { return m_dataPath; }

    // Reopens the data file with or without direct reads.
    void SetDirect(bool direct);
    bool IsDirect() const;

    // Reads and checks the record header of the image (image below ImageCount()); kept for the
    // following calls. Raises RTE::Exception naming the file and the image.
    void SelectRecord(std::uint32_t image);
    // The stored bytes of a plane of the selected record: the plane's bytes for a raw stream, a
    // packed plane (at most Layout::maxStoredBytes) for a compressed one.
    std::uint64_t StoredBytes(std::uint32_t plane) const;
    // Reads a plane of the selected record into dst (StoredBytes(plane) bytes) and checks its
    // checksum, if the stream has pixel checksums. Raises RTE::Exception naming the file, the image and the plane.
    void ReadPlane(std::uint32_t plane, void* dst);
    // Raises RTE::Exception about a plane of the selected record, in the words of ReadPlane.
    [[noreturn]] void FailPlane(std::uint32_t plane, const QString& what) const;

private:
    enum class ReadResult { Ok, Short, Mismatch };

    void CountRaw();
    void CountCompressed();
    bool OpenIndex();
    // The position of a record: nullptr and `span` filled, or the fault.
    const char* Locate(std::uint64_t image, ImageStream::IndexEntry& span);
    const char* ReadIndexEntry(std::uint64_t image, ImageStream::IndexEntry& span);
    // Reads the record header at span into m_record; nullptr or the fault.
    const char* ReadRecordHeader(std::uint64_t image, const ImageStream::IndexEntry& span);
    bool RecordHeaderSound(std::uint64_t image);
    bool RecordIntact(std::uint64_t image);
    // The largest k <= known for which the test holds for image k - 1, given that it fails for
    // image `known` - 1 and holds for all images below the answer (a sound prefix).
    template <class Test>
    std::uint64_t LastSound(std::uint64_t known, Test sound);
    bool ReadFully(RTE::I_ReadableFile& file, std::uint64_t offset, void* dst, std::uint64_t bytes);
    // Reads bytes into dst; with a checksum, hashing them as they arrive and comparing.
    ReadResult ReadStored(std::uint64_t offset, std::uint8_t* dst, std::uint64_t bytes, const std::uint64_t* checksum);
    // Checks the checksum of bytes at offset through a small scratch block.
    ReadResult VerifyHashed(std::uint64_t offset, std::uint64_t bytes, std::uint64_t checksum);
    [[noreturn]] void FailRecord(std::uint64_t image, const char* fault) const;

    std::string m_dataPath;
    std::string m_indexPath;
    std::unique_ptr<RTE::I_ReadableFile> m_data;
    std::unique_ptr<RTE::I_ReadableFile> m_index;
    std::uint64_t m_dataBytes = 0;
    std::uint64_t m_indexBytes = 0;
    ImageStream::StreamHeader m_header;
    ImageStream::Layout m_layout;
    std::uint32_t m_count = 0;
    bool m_consistent = false;

    // Compressed streams: records with an index entry, and those found behind the last entry.
    std::uint64_t m_indexed = 0;
    std::vector<ImageStream::IndexEntry> m_recovered;

    // The record header last read, the image it belongs to (if sound) and its planes' offsets.
    std::vector<std::uint8_t> m_record;
    std::uint64_t m_selected = ~std::uint64_t(0);
    std::vector<std::uint64_t> m_planeOffsets;

    BufferApi::Private::AlignedBlock m_chunk; // VerifyHashed's scratch
    struct HashStateDeleter {
        void operator()(XXH3_state_s* state) const noexcept;
    };
    std::unique_ptr<XXH3_state_s, HashStateDeleter> m_hash;
};

} // namespace Private
} // namespace SetApi
