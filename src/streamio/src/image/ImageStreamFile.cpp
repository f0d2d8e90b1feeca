#include "image/ImageStreamFile.h"
#include "image/PixelChecksum.h"

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <algorithm>
#include <utility>

namespace SetApi {
namespace Private {

namespace Format = ImageStream;
using Format::kBlockBytes;

namespace {

// Reads of pixel data from the page cache go in pieces of this size, each hashed while it is
// still in the processor's cache (a quarter of a typical L2).
constexpr std::uint64_t kHashChunkBytes = 256u << 10;

RTE::ReadMode ModeOf(bool direct) { return direct ? RTE::ReadMode::Direct : RTE::ReadMode::Buffered; }

} // namespace

void ImageStreamFile::HashStateDeleter::operator()(XXH3_state_s* state) const noexcept { XXH3_freeState(state); }

ImageStreamFile::ImageStreamFile(const std::string& dataPath, const std::string& indexPath, bool direct)
    : m_dataPath(dataPath), m_indexPath(indexPath), m_hash(XXH3_createState())
{
    RTE_VERIFY(m_hash != nullptr, "Out of memory for a hash state");
    try {
        m_data = RTE::FileSystem::OpenForReading(m_dataPath, ModeOf(direct));
    } catch (const RTE::FileError& e) {
        RTE_THROW_MSG(RTE::Exception, "Image stream '" << m_dataPath << "' cannot be opened: " << e.message());
    }
    m_dataBytes = m_data->Size();

    std::vector<std::uint8_t> head(std::size_t(std::min<std::uint64_t>(m_dataBytes, kBlockBytes)));
    if (!ReadFully(*m_data, 0, head.data(), head.size()))
        RTE_THROW_MSG(RTE::Exception, "Image stream '" << m_dataPath << "' could not be read");
    const std::string fault = Format::DecodeStreamHeader(head.data(), head.size(), m_header, m_layout);
    if (!fault.empty())
        RTE_THROW_MSG(RTE::Exception, "Image stream '" << m_dataPath << "' " << QString::fromStdString(fault));

    m_record.resize(m_layout.recordHeaderUsed);
    m_planeOffsets.resize(m_layout.planes);
    m_chunk = BufferApi::Private::AllocateAligned(std::size_t(kHashChunkBytes), false);

    if (m_header.codec == Format::PlaneCodec::Raw)
        CountRaw();
    else
        CountCompressed();

    // The last records must hold their pixel data too: a header may have reached the disk before
    // the planes behind it. A stream without pixel checksums relies on its appends being
    // sequential instead (a record that lies wholly in the file was written wholly), and only the
    // last records' headers are checked.
    for (unsigned check = 0; check < kTailChecks && m_count > 0; ++check) {
        if (RecordIntact(m_count - 1))
            break;
        --m_count;
        m_consistent = false;
    }
    m_selected = ~std::uint64_t(0);

    RTE::C_Logger logger("Set");
    if (!m_consistent)
        logger.info("Image stream " + m_dataPath + " ends in an incomplete or damaged record; " +
                    std::to_string(m_count) + " complete images");
    else
        logger.debug("Image stream " + m_dataPath + " opened with " + std::to_string(m_count) + " images");
}

ImageStreamFile::~ImageStreamFile() = default;

void ImageStreamFile::SetDirect(bool direct)
{
    if (direct != IsDirect())
        m_data = RTE::FileSystem::OpenForReading(m_dataPath, ModeOf(direct));
}

bool ImageStreamFile::IsDirect() const { return m_data->IsDirect(); }

void ImageStreamFile::CountRaw()
{
    const std::uint64_t stride = m_layout.rawRecordBytes;
    std::uint64_t count = m_dataBytes > kBlockBytes ? (m_dataBytes - kBlockBytes) / stride : 0;
    count = std::min(count, Format::kMaxImages);
    m_consistent = m_dataBytes == kBlockBytes + count * stride;
    if (count > 0 && !RecordHeaderSound(count - 1)) {
        count = LastSound(count - 1, [this](std::uint64_t image) { return RecordHeaderSound(image); });
        m_consistent = false;
    }
    m_count = std::uint32_t(count);
}

bool ImageStreamFile::OpenIndex()
{
    try {
        m_index = RTE::FileSystem::OpenForReading(m_indexPath);
    } catch (const RTE::FileError&) {
        return false; // records are then found from the data file alone
    }
    m_indexBytes = m_index->Size();
    std::uint8_t head[Format::kIndexHeaderBytes];
    const std::size_t bytes = std::size_t(std::min<std::uint64_t>(m_indexBytes, sizeof head));
    return ReadFully(*m_index, 0, head, bytes) && Format::CheckIndexHeader(head, bytes, m_header.streamId) == nullptr;
}

void ImageStreamFile::CountCompressed()
{
    const bool usable = OpenIndex();
    if (!usable)
        m_index.reset();
    std::uint64_t entries = usable ? (m_indexBytes - Format::kIndexHeaderBytes) / Format::kIndexEntryBytes : 0;
    entries = std::min(entries, Format::kMaxImages);
    m_consistent = usable && m_indexBytes == Format::kIndexHeaderBytes + entries * Format::kIndexEntryBytes;

    Format::IndexEntry entry;
    std::uint64_t indexed = entries;
    if (indexed > 0 && ReadIndexEntry(indexed - 1, entry) != nullptr) {
        indexed = LastSound(indexed - 1, [&](std::uint64_t image) { return ReadIndexEntry(image, entry) == nullptr; });
        m_consistent = false;
    }
    m_indexed = indexed;

    // Records behind the last entry: appended, but the writer did not get to their entries.
    std::uint64_t position = kBlockBytes;
    if (indexed > 0) {
        ReadIndexEntry(indexed - 1, entry);
        position = entry.offset + entry.recordBytes;
    }
    for (std::uint64_t image = indexed; image < Format::kMaxImages && position < m_dataBytes; ++image) {
        Format::IndexEntry span{image, position, 0};
        if (m_dataBytes - position < m_layout.recordHeaderUsed || ReadRecordHeader(image, span) != nullptr)
            break;
        span.recordBytes = Format::RecordBytesFor(m_layout, m_record.data());
        if (span.recordBytes > m_dataBytes - position)
            break;
        m_recovered.push_back(span);
        position += span.recordBytes;
    }
    if (!m_recovered.empty() || position != m_dataBytes)
        m_consistent = false;
    m_count = std::uint32_t(indexed + m_recovered.size());
}

template <class Test>
std::uint64_t ImageStreamFile::LastSound(std::uint64_t known, Test sound)
{
    std::uint64_t low = 0;
    std::uint64_t high = known;
    while (low < high) {
        const std::uint64_t middle = low + (high - low + 1) / 2;
        if (sound(middle - 1))
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

bool ImageStreamFile::ReadFully(RTE::I_ReadableFile& file, std::uint64_t offset, void* dst, std::uint64_t bytes)
{
    return file.ReadAt(offset, dst, std::size_t(bytes)) == bytes;
}

const char* ImageStreamFile::ReadIndexEntry(std::uint64_t image, Format::IndexEntry& span)
{
    std::uint8_t bytes[Format::kIndexEntryBytes];
    if (!m_index || !ReadFully(*m_index, Format::kIndexHeaderBytes + image * Format::kIndexEntryBytes, bytes, sizeof bytes))
        return "index entry missing";
    return Format::CheckIndexEntry(bytes, image, m_layout, m_dataBytes, span);
}

const char* ImageStreamFile::Locate(std::uint64_t image, Format::IndexEntry& span)
{
    if (m_header.codec == Format::PlaneCodec::Raw) {
        span = {image, kBlockBytes + image * m_layout.rawRecordBytes, m_layout.rawRecordBytes};
        return nullptr;
    }
    if (image < m_indexed)
        return ReadIndexEntry(image, span);
    span = m_recovered.at(std::size_t(image - m_indexed));
    return nullptr;
}

const char* ImageStreamFile::ReadRecordHeader(std::uint64_t image, const Format::IndexEntry& span)
{
    m_selected = ~std::uint64_t(0);
    if (!ReadFully(*m_data, span.offset, m_record.data(), m_record.size()))
        return "record header cut short by the end of the file";
    Format::RecordHeader header;
    if (const char* fault = Format::CheckRecordHeader(m_record.data(), m_header, m_layout, image, header))
        return fault;
    if (span.recordBytes != 0 && header.recordBytes != span.recordBytes)
        return "record size differs from the index";
    return nullptr;
}

bool ImageStreamFile::RecordHeaderSound(std::uint64_t image)
{
    Format::IndexEntry span;
    return Locate(image, span) == nullptr && ReadRecordHeader(image, span) == nullptr;
}

bool ImageStreamFile::RecordIntact(std::uint64_t image)
{
    Format::IndexEntry span;
    if (Locate(image, span) != nullptr || ReadRecordHeader(image, span) != nullptr)
        return false;
    if (!m_header.HasPixelChecksums())
        return true;
    std::uint64_t offset = span.offset + m_layout.recordHeaderBytes;
    for (std::uint32_t p = 0; p < m_layout.planes; ++p) {
        const std::uint64_t stored = Format::StoredBytesOf(m_record.data(), p);
        if (VerifyHashed(offset, stored, Format::ChecksumOf(m_record.data(), p)) != ReadResult::Ok)
            return false;
        offset += Format::RoundUpToBlock(stored);
    }
    return true;
}

void ImageStreamFile::SelectRecord(std::uint32_t image)
{
    if (m_selected == image)
        return;
    Format::IndexEntry span;
    const char* fault = Locate(image, span);
    if (!fault)
        fault = ReadRecordHeader(image, span);
    if (fault)
        FailRecord(image, fault);
    std::uint64_t offset = span.offset + m_layout.recordHeaderBytes;
    for (std::uint32_t p = 0; p < m_layout.planes; ++p) {
        m_planeOffsets[p] = offset;
        offset += Format::RoundUpToBlock(Format::StoredBytesOf(m_record.data(), p));
    }
    m_selected = image;
}

std::uint64_t ImageStreamFile::StoredBytes(std::uint32_t plane) const
{
    return Format::StoredBytesOf(m_record.data(), plane);
}

void ImageStreamFile::ReadPlane(std::uint32_t plane, void* dst)
{
    const std::uint64_t checksum = Format::ChecksumOf(m_record.data(), plane);
    switch (ReadStored(m_planeOffsets[plane], static_cast<std::uint8_t*>(dst), StoredBytes(plane),
                       m_header.HasPixelChecksums() ? &checksum : nullptr)) {
    case ReadResult::Ok: return;
    case ReadResult::Short: FailPlane(plane, QStringLiteral("the file ends inside its pixel data"));
    case ReadResult::Mismatch: FailPlane(plane, QStringLiteral("its pixel data is damaged (checksum mismatch)"));
    }
}

ImageStreamFile::ReadResult ImageStreamFile::ReadStored(std::uint64_t offset, std::uint8_t* dst, std::uint64_t bytes,
                                                        const std::uint64_t* checksum)
{
    XXH3_state_t* const hash = checksum ? m_hash.get() : nullptr;
    if (hash)
        XXH3_64bits_reset(hash);
    if (m_data->IsDirect() || !hash) {
        // One read of the whole blocks (direct I/O takes them past the page cache) and one of the
        // rest: the disk is the limit, and without a checksum there is nothing to keep in cache.
        const std::uint64_t body = bytes / kBlockBytes * kBlockBytes;
        for (const auto& [from, size] : {std::pair<std::uint64_t, std::uint64_t>{0, body}, {body, bytes - body}}) {
            if (size == 0)
                continue;
            if (!ReadFully(*m_data, offset + from, dst + from, size))
                return ReadResult::Short;
            if (hash)
                XXH3_64bits_update(hash, dst + from, std::size_t(size));
        }
        return !hash || XXH3_64bits_digest(hash) == *checksum ? ReadResult::Ok : ReadResult::Mismatch;
    }

    // From the page cache: pieces small enough to stay in the processor's cache between the copy
    // into the target and the hash, which then costs next to nothing.
    for (std::uint64_t done = 0; done < bytes;) {
        const std::uint64_t piece = std::min(kHashChunkBytes, bytes - done);
        if (!ReadFully(*m_data, offset + done, dst + done, piece))
            return ReadResult::Short;
        XXH3_64bits_update(hash, dst + done, std::size_t(piece));
        done += piece;
    }
    return XXH3_64bits_digest(hash) == *checksum ? ReadResult::Ok : ReadResult::Mismatch;
}

ImageStreamFile::ReadResult ImageStreamFile::VerifyHashed(std::uint64_t offset, std::uint64_t bytes,
                                                          std::uint64_t checksum)
{
    auto* chunk = static_cast<std::uint8_t*>(m_chunk.get());
    XXH3_64bits_reset(m_hash.get());
    for (std::uint64_t done = 0; done < bytes;) {
        const std::uint64_t piece = std::min(kHashChunkBytes, bytes - done);
        if (!ReadFully(*m_data, offset + done, chunk, piece))
            return ReadResult::Short;
        XXH3_64bits_update(m_hash.get(), chunk, std::size_t(piece));
        done += piece;
    }
    return XXH3_64bits_digest(m_hash.get()) == checksum ? ReadResult::Ok : ReadResult::Mismatch;
}

void ImageStreamFile::FailRecord(std::uint64_t image, const char* fault) const
{
    RTE_THROW_MSG(RTE::Exception, "Image stream '" << m_dataPath << "', image " << image << ": " << fault);
}

void ImageStreamFile::FailPlane(std::uint32_t plane, const QString& what) const
{
    const std::uint32_t depth = m_header.depth;
    RTE_THROW_MSG(RTE::Exception, "Image stream '" << m_dataPath << "', image " << m_selected << " (plane "
                                                   << plane % depth << " of frame " << plane / depth << "): " << what);
}

} // namespace Private
} // namespace SetApi
