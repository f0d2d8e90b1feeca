// Damaged packed planes: every fault must raise RTE::Exception, never crash or touch memory
// outside the given ranges (the destination is always exactly sized, for ASan).

#include "PlaneTestData.h"

#include "codec/PackedPlaneFormat.h"
#include "common/Crc32.h"
#include "codec/PlaneCodec.h"

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <string>

using namespace BufferApi::Private;
namespace Format = BufferApi::Private::PackedPlane;

namespace {

constexpr unsigned kElementSize = 2;

class PackedPlaneCorruption : public ::testing::TestWithParam<PlaneCodec> {
protected:
    void SetUp() override
    {
        // Small chunks so that the stream has many, packed and stored ones mixed.
        m_plane = PlaneTestData::Smooth(1500, kElementSize);
        const auto noise = PlaneTestData::Random(300);
        m_plane.insert(m_plane.begin() + 1000, noise.begin(), noise.end());
        PackPlane(GetParam(), m_plane.data(), m_plane.size(), kElementSize, m_packed, 256);
    }

    // The text raised by unpacking `packed` into a plane of `planeBytes`, or "(no exception)".
    std::string Unpack(const std::vector<std::uint8_t>& packed, std::size_t planeBytes) const
    {
        std::vector<std::uint8_t> back(planeBytes);
        return TestSupport::MessageOf([&] {
            UnpackPlane(GetParam(), packed.data(), packed.size(), back.data(), back.size(), kElementSize);
        });
    }
    std::string Unpack(const std::vector<std::uint8_t>& packed) const { return Unpack(packed, m_plane.size()); }

    // Rewrites the header checksum after a deliberate change, so that the later checks are reached.
    static void Reseal(std::vector<std::uint8_t>& packed)
    {
        Format::Header header = Format::ReadHeader(packed.data());
        header.checksum = Format::HeaderChecksum(packed.data(), header.chunkCount);
        Format::WriteHeader(header, packed.data());
    }

    std::size_t chunkCount() const { return Format::ReadHeader(m_packed.data()).chunkCount; }
    std::size_t chunkOffset(std::size_t chunk) const
    {
        std::size_t offset = Format::kHeaderBytes + chunkCount() * Format::kTableEntryBytes;
        for (std::size_t i = 0; i < chunk; ++i)
            offset += Format::ReadTableEntry(m_packed.data(), i).packedBytes;
        return offset;
    }
    // The first chunk that is packed, not stored.
    std::size_t packedChunk() const
    {
        for (std::size_t i = 0;; ++i)
            if (Format::ReadTableEntry(m_packed.data(), i).packedBytes < 256)
                return i;
    }

    TestSupport::LogCapture m_log;
    std::vector<std::uint8_t> m_plane;
    std::vector<std::uint8_t> m_packed;
};

} // namespace

TEST_P(PackedPlaneCorruption, IntactStreamUnpacks)
{
    EXPECT_EQ(Unpack(m_packed), "(no exception)");
    bool stored = false;
    for (std::size_t i = 0; i < chunkCount(); ++i)
        stored = stored || Format::ReadTableEntry(m_packed.data(), i).packedBytes == 256;
    EXPECT_TRUE(stored) << "the fixture should hold a stored chunk";
}

TEST_P(PackedPlaneCorruption, EveryTruncationIsRefused)
{
    for (std::size_t size = 0; size < m_packed.size(); ++size)
        EXPECT_NE(Unpack({m_packed.begin(), m_packed.begin() + std::ptrdiff_t(size)}), "(no exception)") << size;
    EXPECT_EQ(Unpack({}), "Packed plane truncated: 0 bytes, the header alone takes 24");
}

TEST_P(PackedPlaneCorruption, EverySingleBitFlipIsRefused)
{
    for (std::size_t bit = 0; bit < m_packed.size() * 8; ++bit) {
        auto damaged = m_packed;
        damaged[bit / 8] ^= std::uint8_t(1u << (bit % 8));
        EXPECT_NE(Unpack(damaged), "(no exception)") << "bit " << bit;
    }
}

TEST_P(PackedPlaneCorruption, TrailingBytesAreRefused)
{
    auto longer = m_packed;
    longer.push_back(0);
    EXPECT_EQ(Unpack(longer), "Packed plane followed by 1 unexpected bytes");
}

TEST_P(PackedPlaneCorruption, AnotherPlaneSizeElementSizeOrCodecIsRefused)
{
    EXPECT_NE(Unpack(m_packed, m_plane.size() - 2), "(no exception)");
    EXPECT_NE(Unpack(m_packed, m_plane.size() + 2), "(no exception)");
    EXPECT_NE(Unpack(m_packed, 0), "(no exception)");
    std::vector<std::uint8_t> back(m_plane.size());
    EXPECT_THROW(UnpackPlane(GetParam(), m_packed.data(), m_packed.size(), back.data(), back.size(), 1),
                 RTE::Exception);
    const PlaneCodec other = GetParam() == PlaneCodec::Zlib ? PlaneCodec::Fast : PlaneCodec::Zlib;
    EXPECT_THROW(UnpackPlane(other, m_packed.data(), m_packed.size(), back.data(), back.size(), kElementSize),
                 RTE::Exception);
}

TEST_P(PackedPlaneCorruption, ChunkTableClaimingTooMuchIsRefused)
{
    // Sealed with a valid header checksum, so that only the size checks stand in the way.
    auto beyondInput = m_packed;
    const std::size_t last = chunkCount() - 1;
    Format::WriteTableEntry({std::uint32_t(m_packed.size()), 0}, beyondInput.data(), last);
    Reseal(beyondInput);
    EXPECT_NE(Unpack(beyondInput).find("claims"), std::string::npos) << Unpack(beyondInput);

    auto beyondChunk = m_packed;
    Format::WriteTableEntry({257, 0}, beyondChunk.data(), 0);
    Reseal(beyondChunk);
    EXPECT_NE(Unpack(beyondChunk).find("claims 257 packed bytes for 256"), std::string::npos);

    auto beyondRest = m_packed;
    const Format::TableEntry first = Format::ReadTableEntry(m_packed.data(), packedChunk());
    Format::WriteTableEntry({first.packedBytes + 1, first.checksum}, beyondRest.data(), packedChunk());
    Reseal(beyondRest);
    EXPECT_NE(Unpack(beyondRest), "(no exception)");

    auto empty = m_packed;
    Format::WriteTableEntry({0, 0}, empty.data(), 0);
    Reseal(empty);
    EXPECT_NE(Unpack(empty).find("claims 0 packed bytes"), std::string::npos);
}

TEST_P(PackedPlaneCorruption, HeaderFieldsOutOfRangeAreRefused)
{
    const auto withHeader = [&](auto change) {
        auto damaged = m_packed;
        Format::Header header = Format::ReadHeader(damaged.data());
        change(header);
        Format::WriteHeader(header, damaged.data());
        Reseal(damaged);
        return Unpack(damaged);
    };
    EXPECT_EQ(withHeader([](Format::Header& h) { h.version = 2; }), "Packed plane of unknown version 2");
    EXPECT_NE(withHeader([](Format::Header& h) { h.reserved = 1; }), "(no exception)");
    EXPECT_NE(withHeader([](Format::Header& h) { h.chunkBytes = 0; }), "(no exception)");
    EXPECT_NE(withHeader([](Format::Header& h) { h.chunkBytes = 255; }), "(no exception)");
    EXPECT_NE(withHeader([](Format::Header& h) { h.chunkBytes = 8 * 1024 * 1024; }), "(no exception)");
    EXPECT_NE(withHeader([](Format::Header& h) { h.chunkCount += 1; }), "(no exception)");
    // A small chunk size announces a table far longer than the input: refused before any allocation.
    EXPECT_NE(withHeader([](Format::Header& h) {
                  h.chunkBytes = 2;
                  h.chunkCount = std::uint32_t(h.planeBytes / 2);
              }).find("chunk table ends at"),
              std::string::npos);
}

TEST_P(PackedPlaneCorruption, CorruptChunkBehindValidChecksumsIsRefused)
{
    // Checksums guard the stream; the chunk decoders must still refuse what they cannot decode.
    const std::size_t chunk = packedChunk();
    const Format::TableEntry entry = Format::ReadTableEntry(m_packed.data(), chunk);
    const auto resealChunk = [&](std::vector<std::uint8_t>& damaged, std::uint32_t packedBytes) {
        const std::uint32_t crc = BufferApi::Private::Crc32(damaged.data() + chunkOffset(chunk), packedBytes);
        Format::WriteTableEntry({packedBytes, crc}, damaged.data(), chunk);
        Reseal(damaged);
    };

    auto badStart = m_packed; // zlib header / zstd magic number
    badStart[chunkOffset(chunk)] ^= 0x5A;
    resealChunk(badStart, entry.packedBytes);
    EXPECT_NE(Unpack(badStart).find("Packed plane corrupt in chunk"), std::string::npos) << Unpack(badStart);

    auto cutShort = m_packed; // the chunk loses its last byte, the next one moves up
    cutShort.erase(cutShort.begin() + std::ptrdiff_t(chunkOffset(chunk) + entry.packedBytes - 1));
    resealChunk(cutShort, entry.packedBytes - 1);
    EXPECT_NE(Unpack(cutShort).find("Packed plane corrupt in chunk"), std::string::npos) << Unpack(cutShort);
}

INSTANTIATE_TEST_SUITE_P(Chunked, PackedPlaneCorruption, ::testing::Values(PlaneCodec::Zlib, PlaneCodec::Fast),
                         [](const auto& info) { return info.param == PlaneCodec::Zlib ? "Zlib" : "Fast"; });

TEST(PackedPlaneCorruptionRaw, SizeOtherThanThePlaneIsRefused)
{
    TestSupport::LogCapture log;
    std::vector<std::uint8_t> src(10), dst(10);
    EXPECT_NO_THROW(UnpackPlane(PlaneCodec::Raw, src.data(), 10, dst.data(), 10, 2));
    EXPECT_NO_THROW(UnpackPlane(PlaneCodec::Raw, nullptr, 0, nullptr, 0, 2));
    EXPECT_EQ(TestSupport::MessageOf([&] { UnpackPlane(PlaneCodec::Raw, src.data(), 8, dst.data(), 10, 2); }),
              "Raw plane of 8 bytes where 10 are expected");
    EXPECT_THROW(UnpackPlane(PlaneCodec::Raw, src.data(), 10, dst.data(), 8, 2), RTE::Exception);
    EXPECT_THROW(UnpackPlane(PlaneCodec::Raw, nullptr, 0, dst.data(), 10, 2), RTE::Exception);
}

TEST(PackedPlaneCorruptionLargeChunks, SampledDamageInDefaultSizedChunksIsRefused)
{
    // Default chunk size over several chunks: flips and cuts spread over the whole stream.
    TestSupport::LogCapture log;
    const auto plane = PlaneTestData::Smooth(3 * kDefaultChunkBytes / 4 + 5, 4);
    for (PlaneCodec codec : {PlaneCodec::Zlib, PlaneCodec::Fast}) {
        std::vector<std::uint8_t> packed, back(plane.size());
        PackPlane(codec, plane.data(), plane.size(), 4, packed);
        ASSERT_EQ(Format::ReadHeader(packed.data()).chunkCount, 4u);
        const auto unpack = [&](const std::vector<std::uint8_t>& input) {
            return TestSupport::MessageOf(
                [&] { UnpackPlane(codec, input.data(), input.size(), back.data(), back.size(), 4); });
        };
        for (std::size_t position = 0; position < packed.size(); position += 1 + position / 7) {
            auto flipped = packed;
            flipped[position] ^= std::uint8_t(1u << (position % 8));
            EXPECT_NE(unpack(flipped), "(no exception)") << "byte " << position;
            EXPECT_NE(unpack({packed.begin(), packed.begin() + std::ptrdiff_t(position)}), "(no exception)")
                << "cut at " << position;
        }
    }
}
