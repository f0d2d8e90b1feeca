#include <StreamIO/ImageWriter.h>

#include "image/ImageStreamFormat.h"
#include "image/ImageStreamNames.h"
#include "image/PixelChecksum.h"

#include <model/AlignedMemory.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace SetApi {

namespace Format = Private::ImageStream;
using BufferApi::Private::AlignedBlock;
using BufferApi::Private::AllocateAligned;
using BufferApi::Private::PlaneCodec;

namespace {

PlaneCodec CodecForCompression(const QString& compression)
{
    if (compression.isEmpty())
        return PlaneCodec::Raw;
    if (compression == QLatin1String("Zlib"))
        return PlaneCodec::Zlib;
    if (compression == QLatin1String("IMX"))
        return PlaneCodec::Fast;
    RTE_THROW_MSG(RTE::VerificationFailed, "Unknown image stream compression '" << compression
                                                                                << "'; expected \"\", \"Zlib\" or \"IMX\"");
}

// A number that tells this stream's records from those of any other stream, such as an earlier
// stream at the same path whose bytes a file system handed out again.
std::uint64_t NewStreamId()
{
    std::random_device device;
    const std::uint64_t random = (std::uint64_t(device()) << 32) ^ device();
    const auto now = std::uint64_t(std::chrono::steady_clock::now().time_since_epoch().count());
    return random ^ (now * 0x9E3779B97F4A7C15ull);
}

} // namespace

struct C_ImageWriter::State {
    unsigned width = 0;
    unsigned height = 0;
    unsigned depth = 0;
    unsigned framesPerImage = 0;
    E_BitsPerPixel bits = Word;
    Format::StreamHeader header;
    Format::Layout layout;

    std::string dataPath;
    std::string indexPath;
    std::unique_ptr<RTE::I_WritableFile> data;
    std::unique_ptr<RTE::I_WritableFile> index;
    bool directIo = false;
    bool pixelChecksums = true;
    bool open = false;
    bool closed = false;
    bool failed = false; // a write failed; the files end in a partial record

    std::uint64_t images = 0;     // records appended
    std::uint64_t nextOffset = 0; // of the next record in the data file
    std::uint64_t reservedTo = 0; // direct I/O: room set aside in the data file up to here

    // Reused for every image: the record header block (zero behind its used bytes), a block of
    // zeros for padding, one pack buffer per plane of a compressed record, and one index entry.
    AlignedBlock recordHeader;
    AlignedBlock zeros;
    std::vector<std::vector<std::uint8_t>> packs;
    std::vector<const void*> framePlanes; // AppendFramesOfOneImage: where each frame begins
    std::uint8_t indexEntry[Format::kIndexEntryBytes] = {};

    // Direct I/O reserves room in steps of this size (or one record, if larger).
    static constexpr std::uint64_t kReserveStep = std::uint64_t(256) << 20;

    void Append(const void* const* planes);
    void Write(RTE::I_WritableFile& file, const void* bytes, std::size_t size);
};

C_ImageWriter::C_ImageWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                             E_BitsPerPixel bits, const QString& compression)
    : m_state(std::make_unique<State>())
{
    if (const char* fault = Format::CheckShape(width, height, depth, framesPerImage, unsigned(bits)))
        RTE_THROW_MSG(RTE::VerificationFailed, "Invalid image stream: " << fault << " (" << width << " x " << height
                                                                        << " x " << depth << ", " << framesPerImage
                                                                        << " frames, element type " << int(bits) << ")");
    PlaneCodec codec = CodecForCompression(compression);
    if (bits == Mask)
        codec = PlaneCodec::Raw; // masks are never compressed
    State& s = *m_state;
    s.width = width;
    s.height = height;
    s.depth = depth;
    s.framesPerImage = framesPerImage;
    s.bits = bits;
    const auto type = Format::ElementType(bits);
    s.layout = Format::MakeLayout(width, height, depth, framesPerImage, type, codec);
    s.header.width = width;
    s.header.height = height;
    s.header.depth = depth;
    s.header.framesPerImage = framesPerImage;
    s.header.elementType = type;
    s.header.codec = codec;
    s.header.recordHeaderBytes = s.layout.recordHeaderBytes;
    s.header.planeBytes = s.layout.planeBytes;
    s.header.recordBytes = codec == PlaneCodec::Raw ? s.layout.rawRecordBytes : 0;
    if (depth == 1)
        s.framePlanes.resize(framesPerImage);
}

C_ImageWriter::~C_ImageWriter()
{
    try {
        Close();
    } catch (...) {
        // Close has logged the failure; a destructor must not raise.
    }
}

void C_ImageWriter::Open(const QString& destination)
{
    State& s = *m_state;
    RTE_VERIFY(!s.open && !s.closed, "The image stream writer has been opened already");
    RTE_VERIFY(!destination.isEmpty(), "Empty destination of an image stream");
    s.dataPath = Private::ImageStream::DataPath(destination);
    s.indexPath = Private::ImageStream::IndexPath(destination);
    s.header.streamId = NewStreamId();
    s.header.flags = s.pixelChecksums ? 0 : Format::kFlagNoPixelChecksums;
    s.header.minor = s.pixelChecksums ? Format::kMinorVersion : Format::kMinorVersionWithFlags;

    s.recordHeader = AllocateAligned(s.layout.recordHeaderBytes, true);
    s.zeros = AllocateAligned(Format::kBlockBytes, true);
    const bool compressed = s.header.codec != PlaneCodec::Raw;
    if (compressed) {
        // Room for the largest packed plane, so that packing never grows a buffer.
        s.packs.resize(s.layout.planes);
        for (std::vector<std::uint8_t>& pack : s.packs)
            pack.reserve(std::size_t(s.layout.maxStoredBytes));
    }

    const RTE::WriteMode mode = s.directIo ? RTE::WriteMode::Direct : RTE::WriteMode::Buffered;
    s.data = RTE::FileSystem::OpenForWriting(s.dataPath, mode);
    s.open = true;
    try {
        AlignedBlock block = AllocateAligned(Format::kBlockBytes, true);
        Format::EncodeStreamHeader(s.header, static_cast<std::uint8_t*>(block.get()));
        s.Write(*s.data, block.get(), Format::kBlockBytes);
        s.nextOffset = Format::kBlockBytes;

        if (compressed) {
            s.index = RTE::FileSystem::OpenForWriting(s.indexPath, mode);
            std::uint8_t indexHeader[Format::kIndexHeaderBytes];
            Format::EncodeIndexHeader(s.header.streamId, indexHeader);
            s.Write(*s.index, indexHeader, sizeof indexHeader);
        } else if (RTE::FileSystem::Exists(s.indexPath)) {
            // An index of an earlier compressed stream at this destination belongs to nobody now.
            RTE::FileSystem::RemoveFile(s.indexPath);
        }
    } catch (...) {
        s.failed = true; // appends refuse; Close closes what is open
        throw;
    }
    RTE::C_Logger("Set").debug("Image stream " + s.dataPath + " opened");
}

void C_ImageWriter::SetDirectIo(bool on)
{
    State& s = *m_state;
    RTE_VERIFY(!s.open && !s.closed, "Direct I/O of an image stream is chosen before Open");
    s.directIo = on;
}

void C_ImageWriter::SetPixelChecksums(bool on)
{
    State& s = *m_state;
    RTE_VERIFY(!s.open && !s.closed, "Pixel checksums of an image stream are chosen before Open");
    s.pixelChecksums = on;
}

void C_ImageWriter::Close()
{
    State& s = *m_state;
    if (!s.open || s.closed)
        return;
    s.closed = true;
    // Both files are closed even when the first fails; the first failure is reported.
    std::unique_ptr<RTE::I_WritableFile> data = std::move(s.data);
    std::unique_ptr<RTE::I_WritableFile> index = std::move(s.index);
    try {
        data->Close();
    } catch (...) {
        if (index) {
            try {
                index->Close();
            } catch (...) {
            }
        }
        throw;
    }
    if (index)
        index->Close();
    RTE::C_Logger("Set").debug("Image stream " + s.dataPath + " closed with " + std::to_string(s.images) + " images");
}

void C_ImageWriter::AppendFramesOfOneImage(const void* data)
{
    State& s = *m_state;
    RTE_VERIFY(s.depth == 1, "AppendFramesOfOneImage needs an image stream of depth 1");
    RTE_VERIFY(data != nullptr, "No image data to append");
    // Frames follow each other in the caller's memory.
    for (unsigned f = 0; f < s.framesPerImage; ++f)
        s.framePlanes[f] = static_cast<const std::uint8_t*>(data) + std::size_t(s.layout.planeBytes) * f;
    s.Append(s.framePlanes.data());
}

void C_ImageWriter::AppendPlanesOfOneImage(const std::vector<const void*>& planes)
{
    State& s = *m_state;
    RTE_VERIFY(planes.size() == s.layout.planes,
               "AppendPlanesOfOneImage needs one plane pointer per plane of every frame of the image");
    for (const void* plane : planes)
        RTE_VERIFY(plane != nullptr, "No image data to append");
    s.Append(planes.data());
}

void C_ImageWriter::State::Write(RTE::I_WritableFile& file, const void* bytes, std::size_t size)
{
    try {
        file.Append(bytes, size);
    } catch (...) {
        failed = true;
        throw;
    }
}

void C_ImageWriter::State::Append(const void* const* planes)
{
    RTE_VERIFY(open && !closed, "The image stream writer is not open");
    if (failed)
        RTE_THROW_MSG(RTE::FileWriteError, "Image stream '" << dataPath
                                                            << "': an earlier write failed, no further image is appended");
    RTE_VERIFY(images < Format::kMaxImages, "An image stream holds at most 2^32 - 1 images");

    const bool compressed = header.codec != PlaneCodec::Raw;
    auto* block = static_cast<std::uint8_t*>(recordHeader.get());
    for (std::uint32_t p = 0; p < layout.planes; ++p) {
        const void* bytes = planes[p];
        std::size_t stored = std::size_t(layout.planeBytes);
        if (compressed) {
            BufferApi::Private::PackPlane(header.codec, planes[p], stored, layout.elementSize, packs[p]);
            bytes = packs[p].data();
            stored = packs[p].size();
        }
        Format::PutPlaneEntry(block, p, stored, pixelChecksums ? XXH3_64bits(bytes, stored) : 0);
    }
    Format::RecordHeader record;
    record.streamId = header.streamId;
    record.image = images;
    record.recordBytes = Format::RecordBytesFor(layout, block);
    record.planes = layout.planes;
    Format::EncodeRecordHeader(record, block);

    if (directIo && nextOffset + record.recordBytes > reservedTo) {
        // Room for the next records in one large extent: the file system need not find blocks
        // write by write, and the file lies in few pieces. Close gives back what was not used.
        reservedTo = nextOffset + std::max<std::uint64_t>(record.recordBytes, kReserveStep);
        data->Reserve(reservedTo);
    }

    // Header block first, then each plane padded to the next block: every plane starts 4 KiB
    // aligned. With direct I/O the header block and the whole blocks of raw planes in aligned
    // memory (buffer planes are) go to the disk without a copy; a plane's last partial block and
    // its padding meet in the file's own aligned block, so every record ends on a block boundary
    // and is in the file when Append returns.
    Write(*data, block, layout.recordHeaderBytes);
    for (std::uint32_t p = 0; p < layout.planes; ++p) {
        const std::size_t stored = compressed ? packs[p].size() : std::size_t(layout.planeBytes);
        Write(*data, compressed ? static_cast<const void*>(packs[p].data()) : planes[p], stored);
        const std::size_t padding = std::size_t(Format::RoundUpToBlock(stored) - stored);
        if (padding > 0)
            Write(*data, zeros.get(), padding);
    }
    if (compressed) {
        // The entry follows its record, so an entry never points at a record not yet written.
        Format::EncodeIndexEntry({images, nextOffset, record.recordBytes}, indexEntry);
        Write(*index, indexEntry, sizeof indexEntry);
    }
    ++images;
    nextOffset += record.recordBytes;
}

QString C_ImageWriter::GetCorrespondingReaderType() const
{
    return QString::fromLatin1(Private::ImageStream::kReaderKey);
}

QString C_ImageWriter::GetCorrespondingReaderName() const
{
    return QString::fromLatin1(Private::ImageStream::kReaderName);
}

QString C_ImageWriter::GetFormatDescription() const
{
    return QString::fromLatin1(Private::ImageStream::kFormatDescription);
}

unsigned C_ImageWriter::GetWidth() const { return m_state->width; }
unsigned C_ImageWriter::GetHeight() const { return m_state->height; }
unsigned C_ImageWriter::GetDepth() const { return m_state->depth; }
unsigned C_ImageWriter::GetFramesPerImage() const { return m_state->framesPerImage; }
C_ImageWriter::E_BitsPerPixel C_ImageWriter::GetBitsPerPixel() const { return m_state->bits; }

} // namespace SetApi
