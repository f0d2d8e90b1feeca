// Image streams that a crash, a full disk or later damage left behind, and files that are no
// image streams: the reader counts the complete images, loads them bit-exact, raises
// RTE::Exception for a damaged one, and never crashes or sets aside what a file merely claims.

#include "ImageStreamTestSupport.h"

#include "image/ImageStreamFormat.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace ImageStreamTest;
using SetApi::C_ImageReader;
using SetApi::C_ImageWriter;
using BufferApi::Private::LoadLE;
using BufferApi::Private::StoreLE;

namespace {

Shape SmallShape(const char* compression, unsigned depth = 1)
{
    Shape shape;
    shape.width = 40;
    shape.height = 30; // 2400 bytes per word plane: plane blocks with padding
    shape.depth = depth;
    shape.compression = QString::fromLatin1(compression);
    return shape;
}

// Where each record of a stream ends: computed for raw streams, taken from the index otherwise.
std::vector<std::uint64_t> RecordEnds(const std::string& destination, const Shape& shape, std::uint32_t images)
{
    std::vector<std::uint64_t> ends;
    if (shape.compression.isEmpty()) {
        const std::uint64_t stride = 4096 + shape.Planes() * ((shape.PlaneBytes() + 4095) / 4096 * 4096);
        for (std::uint32_t i = 0; i < images; ++i)
            ends.push_back(4096 + (i + 1) * stride);
    } else {
        const std::string index = Bytes(destination + ".index.ims");
        for (std::uint32_t i = 0; i < images; ++i) {
            const auto* entry = reinterpret_cast<const std::uint8_t*>(index.data()) + 64 + 32 * i;
            ends.push_back(LoadLE(entry + 8, 8) + LoadLE(entry + 16, 8));
        }
    }
    return ends;
}

struct Opened {
    std::uint32_t count = 0;
    bool consistent = false;
    std::string error; // the text of the exception Open raised
};

Opened OpenStream(C_ImageReader& reader, const std::string& destination)
{
    Opened result;
    try {
        reader.Open(QString::fromStdString(destination));
        result.count = reader.GetImageCount();
        result.consistent = reader.IsDataConsistent();
    } catch (const RTE::Exception& e) {
        result.error = e.message().toStdString();
    }
    return result;
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Overwrites `count` little-endian bytes of the file at `offset`; then, for crcBytes > 0, writes
// the CRC-32 of the crcBytes bytes from crcFrom right behind them, so that only the field is wrong.
void Patch(const std::string& path, std::size_t offset, std::uint64_t value, unsigned count, std::size_t crcFrom = 0,
           std::size_t crcBytes = 0)
{
    std::string bytes = Bytes(path);
    auto* data = reinterpret_cast<std::uint8_t*>(&bytes[0]);
    StoreLE(value, data + offset, count);
    if (crcBytes > 0)
        StoreLE(BufferApi::Private::Crc32(data + crcFrom, crcBytes), data + crcFrom + crcBytes, 4);
    Put(path, bytes);
}

constexpr std::size_t kHeaderCrcBytes = 76;
constexpr std::size_t kEntryCrcBytes = 28;

} // namespace

TEST(ImageStreamDamageTest, ATruncatedDataFileCountsItsCompleteRecords)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "IMX"})
        for (unsigned depth : {1u, 2u}) {
            const Shape shape = SmallShape(compression, depth);
            const std::string original = dir / "Frame0";
            WriteStream(QString::fromStdString(original), shape, 4);
            const std::string data = Bytes(original + ".ims");
            const std::vector<std::uint64_t> ends = RecordEnds(original, shape, 4);
            ASSERT_EQ(ends.back(), data.size());

            // Inside the header, the header block, record headers, pixel data, padding; at ends.
            std::vector<std::size_t> cuts{0, 5, 11, 40, 79, 80, 2000, 4096, 4100, 8191, 8192 + 7};
            for (std::uint64_t end : ends)
                for (std::int64_t delta : {-4097, -1000, -1, 0, 1, 4095})
                    if (std::int64_t(end) + delta > 0 && std::uint64_t(std::int64_t(end) + delta) <= data.size())
                        cuts.push_back(std::size_t(std::int64_t(end) + delta));
            for (std::size_t cut : cuts) {
                SCOPED_TRACE(Describe(shape) + " cut at " + std::to_string(cut));
                const std::string copy = dir / "Copy";
                Put(copy + ".ims", data.substr(0, cut));
                if (!shape.compression.isEmpty())
                    RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);
                C_ImageReader reader;
                const Opened opened = OpenStream(reader, copy);
                if (cut < 80) {
                    EXPECT_FALSE(opened.error.empty());
                    EXPECT_TRUE(Contains(opened.error, copy + ".ims")) << opened.error;
                    continue;
                }
                ASSERT_TRUE(opened.error.empty()) << opened.error;
                const auto complete = std::uint32_t(std::count_if(ends.begin(), ends.end(),
                                                                  [&](std::uint64_t end) { return end <= cut; }));
                EXPECT_EQ(opened.count, complete);
                EXPECT_EQ(opened.consistent, cut == data.size() || (shape.compression.isEmpty() &&
                                                                    (cut == 4096 || std::count(ends.begin(), ends.end(), cut))));
                for (std::uint32_t image = 0; image < opened.count; ++image)
                    EXPECT_TRUE(ImageMatches(reader, shape, image));
            }
        }
}

TEST(ImageStreamDamageTest, AnIndexCutShortOrLostIsMadeUpFromTheRecords)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Shape shape = SmallShape("Zlib");
    const std::string original = dir / "Frame0";
    WriteStream(QString::fromStdString(original), shape, 4);
    const std::string index = Bytes(original + ".index.ims");
    ASSERT_EQ(index.size(), 64u + 4 * 32);
    const std::string copy = dir / "Copy";
    RTE::FileSystem::CopyFile(original + ".ims", copy + ".ims", true);

    // The writer died between a record and its entry, or inside an entry or the index header.
    for (std::size_t cut : {std::size_t(0), std::size_t(30), std::size_t(64), std::size_t(64 + 32 + 5),
                            std::size_t(64 + 3 * 32), index.size() - 1}) {
        SCOPED_TRACE("index cut at " + std::to_string(cut));
        Put(copy + ".index.ims", index.substr(0, cut));
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, copy);
        ASSERT_TRUE(opened.error.empty()) << opened.error;
        EXPECT_EQ(opened.count, 4u);
        EXPECT_FALSE(opened.consistent);
        for (std::uint32_t image : {3u, 0u})
            EXPECT_TRUE(ImageMatches(reader, shape, image));
    }
    RTE::FileSystem::RemoveFile(copy + ".index.ims");
    C_ImageReader reader;
    EXPECT_EQ(OpenStream(reader, copy).count, 4u);
    EXPECT_TRUE(ImageMatches(reader, shape, 2));
}

TEST(ImageStreamDamageTest, ADamagedByteFailsItsImageOnlyAndADamagedLastImageIsNotCounted)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "Zlib", "IMX"}) {
        const Shape shape = SmallShape(compression, 2);
        const std::string original = dir / "Frame0";
        WriteStream(QString::fromStdString(original), shape, 4);
        const std::string data = Bytes(original + ".ims");
        const std::vector<std::uint64_t> ends = RecordEnds(original, shape, 4);
        const std::string copy = dir / "Copy";
        if (!shape.compression.isEmpty())
            RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);

        // A byte of image 1's second plane, then a byte of its record header.
        for (std::size_t offset : {std::size_t(ends[0] + 4096 + 4096 + 30), std::size_t(ends[0] + 20)}) {
            SCOPED_TRACE(Describe(shape) + " damaged at " + std::to_string(offset));
            std::string damaged = data;
            damaged[offset] = char(damaged[offset] ^ 0x10);
            Put(copy + ".ims", damaged);
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            EXPECT_EQ(opened.count, 4u);
            EXPECT_TRUE(opened.consistent); // only the last records are checked at opening
            std::vector<std::uint16_t> target(shape.width * shape.height);
            const std::string error = TestSupport::MessageOf([&] { reader.LoadPlane(1, 1, 0, target.data()); });
            EXPECT_TRUE(Contains(error, copy + ".ims")) << error;
            EXPECT_TRUE(Contains(error, "image 1")) << error;
            for (std::uint32_t image : {0u, 2u, 3u})
                EXPECT_TRUE(ImageMatches(reader, shape, image));
        }

        // Damage in the last image: it is not counted.
        std::string damaged = data;
        damaged[ends[2] + 4096 + 7] = char(damaged[ends[2] + 4096 + 7] ^ 0x01);
        Put(copy + ".ims", damaged);
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, copy);
        EXPECT_EQ(opened.count, 3u) << Describe(shape);
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 2));
    }
}

TEST(ImageStreamDamageTest, ATailOfZerosOrOfAHeaderWithoutItsPixelsIsNotCounted)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "IMX"}) {
        const Shape shape = SmallShape(compression);
        const std::string original = dir / "Frame0";
        WriteStream(QString::fromStdString(original), shape, 5);
        const std::string data = Bytes(original + ".ims");
        const std::vector<std::uint64_t> ends = RecordEnds(original, shape, 5);
        const std::string copy = dir / "Copy";

        // A file system preallocated the tail: zeros behind the data, and behind the index.
        Put(copy + ".ims", data + std::string(40 * 4096 + 123, '\0'));
        if (!shape.compression.isEmpty())
            Put(copy + ".index.ims", Bytes(original + ".index.ims") + std::string(32 * 40, '\0'));
        C_ImageReader reader;
        Opened opened = OpenStream(reader, copy);
        EXPECT_EQ(opened.count, 5u) << Describe(shape);
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 4));

        // The last record's header reached the disk, its pixels did not.
        std::string torn = data;
        const std::size_t lastStart = std::size_t(ends[3]);
        std::fill(torn.begin() + lastStart + 4096, torn.end(), '\0');
        Put(copy + ".ims", torn);
        if (!shape.compression.isEmpty())
            RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);
        opened = OpenStream(reader, copy);
        EXPECT_EQ(opened.count, 4u) << Describe(shape);
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 3));
    }
}

TEST(ImageStreamDamageTest, FilesThatAreNoImageStreamRaiseAClearException)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::string path = dir / "Frame0";
    C_ImageReader reader;
    EXPECT_TRUE(Contains(OpenStream(reader, path).error, "cannot be opened"));
    EXPECT_EQ(reader.GetImageCount(), 0u);

    std::mt19937 random(7);
    std::string junk(20000, '\0');
    for (char& c : junk)
        c = char(random());
    const std::vector<std::pair<std::string, std::string>> files{
        {"", "is empty"},
        {std::string(9000, '\0'), "is not an image stream"},
        {junk, "is not an image stream"},
        {"\x89PNG\r\n\x1a\n\0\0\0\rIHDR", "is not an image stream"},
        {"\x89SIS\r\n", "is truncated in its header"},
        {"\x89SIS\r\n\x1a\n\x01\0\0\0P\0\0\0", "is truncated in its header"},
    };
    for (const auto& [content, words] : files) {
        Put(path + ".ims", content);
        const Opened opened = OpenStream(reader, path);
        EXPECT_TRUE(Contains(opened.error, words)) << opened.error;
        EXPECT_TRUE(Contains(opened.error, path + ".ims")) << opened.error;
    }
    // A folder where the file should be.
    RTE::FileSystem::RemoveFile(path + ".ims");
    RTE::FileSystem::CreateDirectory(path + ".ims");
    EXPECT_FALSE(OpenStream(reader, path).error.empty());
}

TEST(ImageStreamDamageTest, HeadersOfANewerVersionOrAbsurdShapesAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Shape shape = SmallShape("");
    const std::string original = dir / "Frame0";
    WriteStream(QString::fromStdString(original), shape, 1);
    const std::string data = Bytes(original + ".ims");
    const std::string copy = dir / "Copy";

    struct Case {
        std::size_t offset;
        std::uint64_t value;
        unsigned bytes;
        bool fixChecksum;
        const char* words;
    };
    const std::vector<Case> cases{
        {8, 2, 2, false, "newer version (2.0)"},
        {8, 0, 2, true, "unknown version"},
        {12, 0xFFFFFFFF, 4, false, "header of invalid size"},
        {30, 1, 1, false, "checksum mismatch"},
        {20, 0xFFFFFFFF, 4, true, "width or height"},
        {24, 0, 4, true, "zero width"},
        {28, 1u << 30, 4, true, "planes per image"},
        {36, 9, 1, true, "element type"},
        {37, 4, 1, true, "element size"},
        {38, 7, 1, true, "codec"},
        {48, 1ull << 40, 8, true, "sizes do not match"},
        {56, 1, 8, true, "sizes do not match"},
    };
    for (const Case& c : cases) {
        Put(copy + ".ims", data);
        Patch(copy + ".ims", c.offset, c.value, c.bytes, 0, c.fixChecksum ? kHeaderCrcBytes : 0);
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, copy);
        EXPECT_TRUE(Contains(opened.error, c.words)) << "offset " << c.offset << ": " << opened.error;
    }
    Put(copy + ".ims", data);
    Patch(copy + ".ims", 20, 1u << 20, 4);
    Patch(copy + ".ims", 24, 1u << 20, 4, 0, kHeaderCrcBytes);
    C_ImageReader reader;
    EXPECT_TRUE(Contains(OpenStream(reader, copy).error, "larger than 1 GiB"));
}

TEST(ImageStreamDamageTest, HugeLengthsInRecordHeadersOrTheIndexAreRefusedWithoutAllocating)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Shape shape = SmallShape("IMX");
    const std::string original = dir / "Frame0";
    WriteStream(QString::fromStdString(original), shape, 3);
    const std::vector<std::uint64_t> ends = RecordEnds(original, shape, 3);
    const std::string copy = dir / "Copy";
    const auto reset = [&] {
        RTE::FileSystem::CopyFile(original + ".ims", copy + ".ims", true);
        RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);
    };
    std::vector<std::uint16_t> target(shape.width * shape.height);

    // Record header of image 1: a plane of 2^62 bytes, then a record of 2^60 bytes, checksums right.
    for (const auto& [field, value] : {std::pair<std::size_t, std::uint64_t>{40, 1ull << 62}, {24, 1ull << 60}}) {
        reset();
        Patch(copy + ".ims", std::size_t(ends[0]) + field, value, 8, std::size_t(ends[0]), 40 + 16);
        C_ImageReader reader;
        ASSERT_EQ(OpenStream(reader, copy).count, 3u);
        const std::string error = TestSupport::MessageOf([&] { reader.LoadPlane(1, 0, 0, target.data()); });
        EXPECT_TRUE(Contains(error, "image 1")) << error;
        EXPECT_TRUE(ImageMatches(reader, shape, 2));
    }

    // Index entries claiming huge records or offsets: the middle one fails its load, the last one
    // is replaced by the record found behind the one before.
    for (const auto& [field, value] : {std::pair<std::size_t, std::uint64_t>{16, 1ull << 60}, {8, ~0ull - 4095}}) {
        for (std::size_t entry : {std::size_t(1), std::size_t(2)}) {
            reset();
            Patch(copy + ".index.ims", 64 + 32 * entry + field, value, 8, 64 + 32 * entry, kEntryCrcBytes);
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            EXPECT_EQ(opened.count, 3u);
            EXPECT_EQ(opened.consistent, entry != 2);
            if (entry == 1) {
                const std::string error = TestSupport::MessageOf([&] { reader.LoadPlane(1, 0, 0, target.data()); });
                EXPECT_TRUE(Contains(error, "index entry")) << error;
            } else {
                EXPECT_TRUE(ImageMatches(reader, shape, 2));
            }
            EXPECT_TRUE(ImageMatches(reader, shape, 0));
        }
    }
}

TEST(ImageStreamDamageTest, AFullDiskStopsTheStreamAfterItsLastCompleteImage)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "Zlib"}) {
        const Shape shape = SmallShape(compression);
        const std::string destination = dir / (std::string("Frame") + compression);
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        {
            RTE::ScopedFileSystemBackend installed(faults);
            C_ImageWriter writer(shape.width, shape.height, 1, 1, shape.bits, shape.compression);
            writer.Open(QString::fromStdString(destination));
            AppendImages(writer, shape, 0, 2);
            faults->FailWritesAfter(5000); // inside the third image's pixel data
            EXPECT_THROW(AppendImages(writer, shape, 2, 3), RTE::FileWriteError);
            faults->ClearFaults();
            // The stream ends in a partial record; nothing more is put behind it.
            EXPECT_THROW(AppendImages(writer, shape, 3, 4), RTE::FileWriteError);
            writer.Close();
        }
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, destination);
        EXPECT_EQ(opened.count, 2u) << compression;
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 0));
        EXPECT_TRUE(ImageMatches(reader, shape, 1));
    }

    // The disk fills up just behind a compressed record, before its index entry: the append
    // fails, but the record is complete and is found behind the last entry.
    {
        const Shape shape = SmallShape("IMX");
        const std::string destination = dir / "FrameEntry";
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        RTE::ScopedFileSystemBackend installed(faults);
        C_ImageWriter writer(shape.width, shape.height, 1, 1, shape.bits, shape.compression);
        writer.Open(QString::fromStdString(destination));
        AppendImages(writer, shape, 0, 2);
        faults->FailWritesAfter(2 * 4096 + 10); // record header block, plane block, 10 bytes of entry
        EXPECT_THROW(AppendImages(writer, shape, 2, 3), RTE::FileWriteError);
        writer.Close();
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, destination);
        EXPECT_EQ(opened.count, 3u);
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 2));
    }

    // A stream that cannot be created.
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(RTE::FaultInjectingFileSystem::Operation::OpenForWriting, 1);
    C_ImageWriter writer(4, 4, 1, 1, Bits::Word, "");
    EXPECT_THROW(writer.Open(QString::fromStdString(dir / "Frame9")), RTE::FileWriteError);
}

TEST(ImageStreamDamageTest, AStreamWhoseWriterNeverClosedReadsEveryAppendedImage)
{
    TestSupport::TempDir dir;
    for (const char* compression : {"", "IMX"}) {
        const Shape shape = SmallShape(compression);
        const std::string destination = dir / (std::string("Frame") + compression);
        const std::string copy = dir / (std::string("Killed") + compression);
        {
            C_ImageWriter writer(shape.width, shape.height, 1, 1, shape.bits, shape.compression);
            writer.Open(QString::fromStdString(destination));
            AppendImages(writer, shape, 0, 3);
            // What a killed process leaves: the files as they are before Close.
            RTE::FileSystem::CopyFile(destination + ".ims", copy + ".ims", true);
            if (!shape.compression.isEmpty())
                RTE::FileSystem::CopyFile(destination + ".index.ims", copy + ".index.ims", true);
            AppendImages(writer, shape, 3, 4);
        } // the destructor closes
        C_ImageReader killed;
        const Opened opened = OpenStream(killed, copy);
        EXPECT_EQ(opened.count, 3u);
        EXPECT_TRUE(opened.consistent);
        for (std::uint32_t image : {2u, 0u, 1u})
            EXPECT_TRUE(ImageMatches(killed, shape, image));
        C_ImageReader closed;
        EXPECT_EQ(OpenStream(closed, destination).count, 4u);
        EXPECT_TRUE(ImageMatches(closed, shape, 3));
    }
}
