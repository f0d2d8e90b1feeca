// Truncated, corrupt, foreign and hostile files raise RTE::Exception naming the file, from both
// ImportBuffer and GetImportInformation, and never allocate what the file cannot back.

#include "BufferFileTestData.h"

#include "common/Crc32.h"

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cstdio>

using namespace BufferApi;
using namespace BufferFileTest;

namespace {

class BufferFileBadInputTest : public ::testing::Test {
protected:
    std::string Path() const { return m_dir / "B00001.im7"; }

    std::string Written(const I_Buffer& buffer, long long packType)
    {
        ExportBuffer(&buffer, Path(), PackOptions(packType));
        return TestSupport::ReadFile(Path());
    }

    // The text of the failure of ImportBuffer on these bytes (or "(no exception)"); checks that
    // GetImportInformation fails as well whenever the damage lies in head or attributes.
    std::string ImportFails(const std::string& bytes, bool headOnlyFailsToo = true)
    {
        // A fresh file each time: rewriting one in place makes some file systems flush it.
        std::remove(Path().c_str());
        TestSupport::WriteFile(Path(), bytes);
        const std::string text = TestSupport::MessageOf([&] { delete ImportBuffer(Path(), nullptr); });
        if (text != "(no exception)") {
            EXPECT_EQ(text.rfind("Buffer file '" + Path() + "' ", 0), 0u) << text;
        }
        if (headOnlyFailsToo) {
            unsigned frames, width, height, depth;
            const std::string headText = TestSupport::MessageOf(
                [&] { delete GetImportInformation(Path(), frames, width, height, depth, true); });
            EXPECT_EQ(headText.rfind("Buffer file '" + Path() + "' ", 0), 0u) << headText;
        }
        return text;
    }

    static void FixHeadChecksum(std::string& bytes)
    {
        const std::size_t checked = std::size_t(Load(bytes, kHeadBytesAt, 4)) - 4;
        Store(bytes, checked, Private::Crc32(reinterpret_cast<const std::uint8_t*>(bytes.data()), checked), 4);
    }

    static void FixAttributeChecksum(std::string& bytes)
    {
        const std::size_t at = std::size_t(Load(bytes, kAttributesOffsetAt, 8));
        const std::size_t checked = std::size_t(Load(bytes, kAttributesBytesAt, 8)) - 4;
        Store(bytes, at + checked,
              Private::Crc32(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at, checked), 4);
    }

    // The end of head and attributes: everything a checksum covers.
    static std::size_t CheckedEnd(const std::string& bytes)
    {
        return std::size_t(Load(bytes, kAttributesOffsetAt, 8) + Load(bytes, kAttributesBytesAt, 8));
    }

    TestSupport::TempDir m_dir;
    TestSupport::LogCapture m_log{RTE::LogLevel::Off};
};

// Offsets in the small file (one 4x3 word image "F", one plane): the frame record follows the
// preamble; its plane entry is the last 24 bytes before the head checksum.
constexpr std::size_t kWidthAt = kFirstFrameAt + 8;
constexpr std::size_t kHeightAt = kFirstFrameAt + 12;
constexpr std::size_t kDepthAt = kFirstFrameAt + 16;
constexpr std::size_t kNameLengthAt = kFirstFrameAt + 24;

std::size_t PlaneEntryAt(const std::string& bytes) { return std::size_t(Load(bytes, kHeadBytesAt, 4)) - 4 - 24; }

std::uint64_t AlignUp4096(std::uint64_t value) { return (value + 4095) / 4096 * 4096; }

} // namespace

TEST_F(BufferFileBadInputTest, TruncatedAtEveryOffsetOfASmallFile)
{
    const std::string whole = Written(*SmallBuffer(), 0);
    ASSERT_GT(whole.size(), 4096u);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string text = ImportFails(whole.substr(0, size));
        if (size == 0)
            EXPECT_NE(text.find("is empty"), std::string::npos) << text;
        else
            EXPECT_NE(text.find("is truncated"), std::string::npos) << "at " << size << ": " << text;
    }
    EXPECT_NE(ImportFails(whole + std::string(1, '\0')).find("is corrupt"), std::string::npos);
}

TEST_F(BufferFileBadInputTest, TruncatedAtSomeOffsetsOfALargeFile)
{
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(RichImage(DATATYPE_WORD, 700, 500, 2, 1));
    buffer->AddFrame(RichImage(DATATYPE_DOUBLE, 100, 90, 1, 2, false));
    for (const long long packType : {0, 1, 2}) {
        const std::string whole = Written(*buffer, packType);
        for (const double fraction : {0.001, 0.01, 0.1, 0.3, 0.5, 0.77, 0.9, 0.999}) {
            const std::size_t size = std::size_t(double(whole.size()) * fraction);
            const std::string text = ImportFails(whole.substr(0, size));
            EXPECT_NE(text.find("is truncated"), std::string::npos) << size << ": " << text;
        }
        EXPECT_NE(ImportFails(whole.substr(0, whole.size() - 1)).find("is truncated"), std::string::npos);
    }
}

TEST_F(BufferFileBadInputTest, EveryBitFlipInHeadAndAttributesIsDetected)
{
    for (const long long packType : {0, 2}) {
        BufferPtr buffer = SmallBuffer();
        buffer->GetFrame(0)->AddMask();
        const std::string whole = Written(*buffer, packType);
        const std::size_t end = CheckedEnd(whole);
        for (std::size_t at = 0; at < end; ++at) {
            for (unsigned bit = 0; bit < 8; ++bit) {
                std::string flipped = whole;
                flipped[at] = char(flipped[at] ^ (1 << bit));
                const std::string text = ImportFails(flipped);
                ASSERT_NE(text, "(no exception)") << "byte " << at << ", bit " << bit;
            }
        }
    }
}

TEST_F(BufferFileBadInputTest, BitFlipsInPlaneData)
{
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(RichImage(DATATYPE_WORD, 300, 200, 1, 1));
    buffer->GetFrame(0)->RemoveComponent("TS:Temperature");
    buffer->GetFrame(0)->RemoveComponent(I_Frame::COMPONENT_MASK);

    // Packed planes carry checksums: a flip anywhere in them is found.
    const std::string packed = Written(*buffer, 2);
    const std::size_t planeAt = std::size_t(Load(packed, PlaneEntryAt(packed), 8));
    ASSERT_EQ(planeAt % 4096, 0u);
    for (std::size_t at = planeAt; at < packed.size(); at += 97) {
        std::string flipped = packed;
        flipped[at] = char(flipped[at] ^ 0x10);
        ASSERT_NE(ImportFails(flipped, false), "(no exception)") << "byte " << at;
    }

    // Raw planes carry none (docs/formats/buffer-file.md): the flip loads as a changed pixel;
    // padding before the plane is not read at all.
    const std::string raw = Written(*buffer, 0);
    const std::size_t rawAt = std::size_t(Load(raw, PlaneEntryAt(raw), 8));
    std::string flipped = raw;
    flipped[rawAt + 10] = char(flipped[rawAt + 10] ^ 0x01);
    flipped[rawAt - 1] = char(0xFF);
    EXPECT_EQ(ImportFails(flipped, false), "(no exception)");
    BufferPtr back = Import(Path());
    ASSERT_TRUE(back);
    const auto* pixels = static_cast<const std::uint8_t*>(back->GetFrame(0)->GetComponentAt(0)->GetPlane(0)->GetData());
    const auto* original = static_cast<const std::uint8_t*>(buffer->GetFrame(0)->GetComponentAt(0)->GetPlane(0)->GetData());
    EXPECT_EQ(pixels[10], original[10] ^ 0x01);
    EXPECT_EQ(pixels[11], original[11]);
}

TEST_F(BufferFileBadInputTest, ForeignFilesAreNoBufferFiles)
{
    const std::string notBuffer = "is not a buffer file";
    EXPECT_NE(ImportFails("x").find(notBuffer), std::string::npos);
    EXPECT_NE(ImportFails(std::string(5000, '\0')).find(notBuffer), std::string::npos);
    EXPECT_NE(ImportFails("#GROUP Sets\nSetType = 0;\n").find(notBuffer), std::string::npos);
    EXPECT_NE(ImportFails("\x89PNG\r\n\x1a\n" + std::string(100, 'x')).find(notBuffer), std::string::npos);
    std::uint32_t state = 12345;
    for (const std::size_t size : {1u, 7u, 47u, 48u, 49u, 4096u, 100000u}) {
        std::string junk(size, '\0');
        for (char& c : junk) {
            state = state * 1103515245u + 12345u;
            c = char(state >> 23);
        }
        EXPECT_NE(ImportFails(junk).find(notBuffer), std::string::npos) << size;
        // The signature followed by junk is a damaged buffer file.
        junk.replace(0, std::min<std::size_t>(8, size), std::string("\x89SBF\r\n\x1a\n", std::min<std::size_t>(8, size)));
        EXPECT_NE(ImportFails(junk), "(no exception)") << size;
    }
}

TEST_F(BufferFileBadInputTest, HugeClaimsAreRefusedBeforeAllocation)
{
    const std::string good = Written(*SmallBuffer(), 0);

    std::string frames = good;
    Store(frames, kFrameCountAt, 0xFFFFFFFFu, 4);
    FixHeadChecksum(frames);
    EXPECT_NE(ImportFails(frames).find("4294967295 frames"), std::string::npos);

    std::string size = good;
    Store(size, kWidthAt, 100000, 4);
    Store(size, kHeightAt, 100000, 4);
    FixHeadChecksum(size);
    EXPECT_NE(ImportFails(size).find("is corrupt"), std::string::npos);
    // ... also when the plane entry claims the matching size.
    Store(size, PlaneEntryAt(size) + 8, std::uint64_t(100000) * 100000 * 2, 8);
    FixHeadChecksum(size);
    EXPECT_NE(ImportFails(size).find("reach past the end of the file"), std::string::npos);
    // ... and a plane too large for any file.
    Store(size, kWidthAt, 0xFFFFFFFFu, 4);
    Store(size, kHeightAt, 0xFFFFFFFFu, 4);
    FixHeadChecksum(size);
    EXPECT_NE(ImportFails(size).find("exceed the limit"), std::string::npos);

    std::string depth = good;
    Store(depth, kDepthAt, 0xFFFFFFFFu, 4);
    FixHeadChecksum(depth);
    EXPECT_NE(ImportFails(depth).find("plane entries cannot fit"), std::string::npos);

    std::string name = good;
    Store(name, kNameLengthAt, 0xFFFFFFF0u, 4);
    FixHeadChecksum(name);
    EXPECT_NE(ImportFails(name).find("ends early"), std::string::npos);

    std::string head = good;
    Store(head, kHeadBytesAt, 0x7FFFFFFFu, 4);
    EXPECT_NE(ImportFails(head).find("is corrupt"), std::string::npos);

    std::string attributes = good;
    Store(attributes, kAttributesBytesAt, 0xFFFFFFFFFFFFull, 8);
    FixHeadChecksum(attributes);
    EXPECT_NE(ImportFails(attributes).find("attribute section"), std::string::npos);

    // The buffer's array attribute "Values": count, record size, kind, name "Values", element count.
    std::string elements = good;
    const std::size_t countAt = std::size_t(Load(elements, kAttributesOffsetAt, 8)) + 4 + 4 + 1 + 4 + 6;
    ASSERT_EQ(Load(elements, countAt, 4), 2u);
    Store(elements, countAt, 0x7FFFFFFFu, 4);
    FixAttributeChecksum(elements);
    EXPECT_NE(ImportFails(elements).find("elements cannot fit"), std::string::npos);
    std::string attributeCount = good;
    Store(attributeCount, std::size_t(Load(good, kAttributesOffsetAt, 8)), 0xFFFFFFFFu, 4);
    FixAttributeChecksum(attributeCount);
    EXPECT_NE(ImportFails(attributeCount).find("4294967295 attributes"), std::string::npos);
}

TEST_F(BufferFileBadInputTest, PlaneEntriesMustPointIntoThePlaneData)
{
    const std::string good = Written(*SmallBuffer(), 0);
    const std::size_t entry = PlaneEntryAt(good);
    const std::uint64_t offset = Load(good, entry, 8);
    const auto withEntry = [&](std::uint64_t newOffset, std::uint64_t stored, unsigned codec, bool fails = true) {
        std::string bytes = good;
        Store(bytes, entry, newOffset, 8);
        Store(bytes, entry + 8, stored, 8);
        Store(bytes, entry + 16, codec, 1);
        FixHeadChecksum(bytes);
        return ImportFails(bytes, fails);
    };
    EXPECT_NE(withEntry(offset + 2, 24, 0).find("not aligned"), std::string::npos);
    EXPECT_NE(withEntry(0, 24, 0).find("inside head or attributes"), std::string::npos);
    EXPECT_NE(withEntry(offset, 23, 0).find("raw plane"), std::string::npos);
    EXPECT_NE(withEntry(offset, 24, 7).find("unknown codec"), std::string::npos);
    EXPECT_NE(withEntry(offset, 24, 1).find("cannot hold a packed plane"), std::string::npos);
    EXPECT_NE(withEntry(offset + 4096, 24, 0).find("past the end"), std::string::npos);
    EXPECT_EQ(withEntry(offset, 24, 0, false), "(no exception)");
}

TEST_F(BufferFileBadInputTest, APackedStreamMustMatchItsPlane)
{
    // Two equally shaped frames: the stream of one put in place of the other's is valid in
    // itself, but for a plane of another size or element type it is refused.
    BufferPtr buffer(CreateBuffer());
    std::unique_ptr<I_Frame> words(CreateImageFrame(DATATYPE_WORD, 64, 64, 1));
    std::unique_ptr<I_Frame> bytes(CreateImageFrame(DATATYPE_BYTE, 64, 128, 1));
    FillFrame(*words, 1, true);
    FillFrame(*bytes, 2, true);
    buffer->AddFrame(std::move(words));
    buffer->AddFrame(std::move(bytes));
    const std::string good = Written(*buffer, 1);
    // The plane entries of the two frames: the second is the last in the head; find the first by
    // its offset, the first plane block.
    const std::size_t second = PlaneEntryAt(good);
    const std::uint64_t firstOffset = AlignUp4096(CheckedEnd(good));
    std::string swapped = good;
    Store(swapped, second, firstOffset, 8);
    std::size_t first = 0;
    for (std::size_t at = kFirstFrameAt; at + 8 <= second; ++at)
        if (Load(good, at, 8) == firstOffset) {
            first = at;
            break;
        }
    ASSERT_NE(first, 0u);
    Store(swapped, second + 8, Load(good, first + 8, 8), 8);
    Store(swapped, second + 16, Load(good, first + 16, 1), 1);
    FixHeadChecksum(swapped);
    EXPECT_NE(ImportFails(swapped, false).find("Packed plane of element size 2 where 1 is expected"), std::string::npos);
}

TEST_F(BufferFileBadInputTest, VersionsAreChecked)
{
    const std::string good = Written(*SmallBuffer(), 0);

    std::string newerMajor = good;
    Store(newerMajor, 8, 2, 2);
    Store(newerMajor, 10, 3, 2);
    EXPECT_EQ(ImportFails(newerMajor), "Buffer file '" + Path() +
                                           "' was written by a newer version (2.3) of the buffer file format; this "
                                           "library reads version 1.x");
    std::string zero = good;
    Store(zero, 8, 0, 2);
    EXPECT_NE(ImportFails(zero).find("unknown format version (0.0)"), std::string::npos);

    // A newer minor version may append fields to records; they are skipped. Here eight bytes end
    // the frame record, and the padding before the plane gives them room.
    std::string newerMinor = good;
    Store(newerMinor, 10, 7, 2);
    const std::size_t headBytes = std::size_t(Load(good, kHeadBytesAt, 4));
    newerMinor.insert(headBytes - 4, "NEWFIELD");
    newerMinor.erase(std::size_t(Load(good, kAttributesOffsetAt, 8) + Load(good, kAttributesBytesAt, 8)) + 8, 8);
    Store(newerMinor, kHeadBytesAt, headBytes + 8, 4);
    Store(newerMinor, kFirstFrameAt, Load(good, kFirstFrameAt, 4) + 8, 4);
    Store(newerMinor, kAttributesOffsetAt, Load(good, kAttributesOffsetAt, 8) + 8, 8);
    FixHeadChecksum(newerMinor);
    ASSERT_EQ(newerMinor.size(), good.size());
    EXPECT_EQ(ImportFails(newerMinor, false), "(no exception)");
    BufferPtr back = Import(Path());
    ASSERT_TRUE(back);
    ExpectSameBuffer(*SmallBuffer(), *back);
}
