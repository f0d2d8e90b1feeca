// Image streams written without pixel checksums, as recordings write them: the header says so,
// every shape and codec reads back bit-exact, a stream cut at any byte counts exactly the records
// that lie wholly in the file, damage to a record header is still caught (and to packed planes,
// through their chunk checksums) while a changed raw pixel loads as it is, and headers with flag
// bits no reader knows are refused.

#include "ImageStreamTestSupport.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

using namespace ImageStreamTest;
using BufferApi::Private::LoadLE;
using BufferApi::Private::StoreLE;
using SetApi::C_ImageReader;
using SetApi::C_ImageWriter;

namespace {

void WriteUnchecked(const std::string& destination, const Shape& shape, std::uint32_t images, bool direct = false)
{
    C_ImageWriter writer(shape.width, shape.height, shape.depth, shape.framesPerImage, shape.bits, shape.compression);
    writer.SetDirectIo(direct);
    writer.SetPixelChecksums(false);
    writer.Open(QString::fromStdString(destination));
    AppendImages(writer, shape, 0, images);
    writer.Close();
}

Shape MakeShape(unsigned width, unsigned height, Bits bits, const char* compression, unsigned depth = 1,
                unsigned framesPerImage = 1)
{
    Shape shape;
    shape.width = width;
    shape.height = height;
    shape.bits = bits;
    shape.compression = QString::fromLatin1(compression);
    shape.depth = depth;
    shape.framesPerImage = framesPerImage;
    return shape;
}

const std::uint8_t* U8(const std::string& bytes) { return reinterpret_cast<const std::uint8_t*>(bytes.data()); }

// Where each record begins and ends: computed for raw streams, from the index otherwise.
std::vector<std::pair<std::uint64_t, std::uint64_t>> Records(const std::string& destination, const Shape& shape,
                                                             std::uint32_t images)
{
    std::vector<std::pair<std::uint64_t, std::uint64_t>> records;
    if (shape.compression.isEmpty()) {
        const std::uint64_t stride = 4096 + shape.Planes() * ((shape.PlaneBytes() + 4095) / 4096 * 4096);
        for (std::uint32_t i = 0; i < images; ++i)
            records.emplace_back(4096 + i * stride, 4096 + (i + 1) * stride);
    } else {
        const std::string index = Bytes(destination + ".index.ims");
        for (std::uint32_t i = 0; i < images; ++i) {
            const std::uint8_t* entry = U8(index) + 64 + 32 * i;
            records.emplace_back(LoadLE(entry + 8, 8), LoadLE(entry + 8, 8) + LoadLE(entry + 16, 8));
        }
    }
    return records;
}

struct Opened {
    std::uint32_t count = 0;
    bool consistent = false;
    std::string error;
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

void FlipBit(const std::string& path, std::uint64_t offset, char bit)
{
    std::string bytes = Bytes(path);
    bytes.at(std::size_t(offset)) = char(bytes[std::size_t(offset)] ^ bit);
    Put(path, bytes);
}

} // namespace

TEST(ImageStreamWithoutChecksumsTest, EveryShapeAndCodecReadsBackBitExactAndTheHeaderSaysSo)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::vector<Shape> shapes{
        MakeShape(100, 50, Bits::Word, ""), // planes end in a partial block
        MakeShape(64, 64, Bits::Word, ""),  // planes of whole blocks
        MakeShape(37, 11, Bits::Float, ""),
        MakeShape(37, 11, Bits::Double, ""),
        MakeShape(33, 9, Bits::Mask, ""),
        MakeShape(33, 9, Bits::Byte, ""),
        MakeShape(40, 30, Bits::Word, "IMX"),
        MakeShape(40, 30, Bits::Float, "Zlib"),
        MakeShape(70, 20, Bits::Word, "Zlib", 3, 2),
        MakeShape(24, 24, Bits::Float, "", 2, 3),
        MakeShape(17, 5, Bits::Mask, "", 2, 2),
    };
    for (const Shape& shape : shapes)
        for (bool direct : {false, true}) {
            SCOPED_TRACE(Describe(shape) + (direct ? " direct" : " buffered"));
            const std::string destination = dir / "Frame0";
            WriteUnchecked(destination, shape, 3, direct);

            const std::string data = Bytes(destination + ".ims");
            EXPECT_EQ(LoadLE(U8(data) + 8, 2), 1u);
            EXPECT_EQ(LoadLE(U8(data) + 10, 2), 1u); // flags exist from version 1.1 on
            EXPECT_EQ(data[39], '\x01');
            for (const auto& [begin, end] : Records(destination, shape, 3)) {
                ASSERT_LE(end, data.size());
                for (unsigned p = 0; p < shape.Planes(); ++p)
                    EXPECT_EQ(LoadLE(U8(data) + begin + 40 + 16 * p + 8, 8), 0u) << "plane " << p;
            }

            C_ImageReader reader;
            reader.SetDirectIo(direct);
            const Opened opened = OpenStream(reader, destination);
            ASSERT_TRUE(opened.error.empty()) << opened.error;
            EXPECT_EQ(opened.count, 3u);
            EXPECT_TRUE(opened.consistent);
            for (std::uint32_t image : {2u, 0u, 1u})
                EXPECT_TRUE(ImageMatches(reader, shape, image));
        }

    // A load that converts goes through scratch memory, unchecked as well.
    const Shape words = MakeShape(100, 50, Bits::Word, "");
    WriteUnchecked(dir / "Words", words, 2);
    C_ImageReader reader;
    ASSERT_EQ(OpenStream(reader, dir / "Words").count, 2u);
    std::vector<float> converted(words.width * words.height);
    reader.LoadPlane(1, 0, 0, converted.data());
    const std::vector<std::uint8_t> expected = PlaneBytes(words, 1, 0);
    for (std::size_t i = 0; i < converted.size(); ++i)
        ASSERT_EQ(converted[i], float(LoadLE(expected.data() + 2 * i, 2))) << i;
}

TEST(ImageStreamWithoutChecksumsTest, AStreamWithChecksumsIsAVersionOneZeroStreamAndTheChoiceIsMadeBeforeOpen)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Shape shape = MakeShape(40, 30, Bits::Word, "");
    WriteStream(QString::fromStdString(dir / "Frame0"), shape, 1);
    const std::string data = Bytes(dir / "Frame0.ims");
    EXPECT_EQ(LoadLE(U8(data) + 10, 2), 0u);
    EXPECT_EQ(data[39], '\0');
    EXPECT_NE(LoadLE(U8(data) + 4096 + 48, 8), 0u); // the plane's checksum

    C_ImageWriter writer(4, 4, 1, 1, Bits::Word, "");
    writer.Open(QString::fromStdString(dir / "Frame1"));
    EXPECT_THROW(writer.SetPixelChecksums(false), RTE::VerificationFailed);
}

TEST(ImageStreamWithoutChecksumsTest, AStreamCutAtAnyByteCountsTheRecordsWhollyInTheFile)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "IMX"}) {
        const Shape shape = MakeShape(16, 8, Bits::Word, compression, 1, 2);
        const std::string original = dir / "Frame0";
        WriteUnchecked(original, shape, 3);
        const std::string data = Bytes(original + ".ims");
        const auto records = Records(original, shape, 3);
        ASSERT_EQ(records.back().second, data.size());

        const std::string copy = dir / "Copy";
        Put(copy + ".ims", data);
        if (!shape.compression.isEmpty())
            RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);
        // From the whole file down to nothing, one byte at a time; the index stays whole.
        for (std::size_t cut = data.size() + 1; cut-- > 0;) {
            std::filesystem::resize_file(copy + ".ims", cut);
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            if (cut < 80) {
                ASSERT_FALSE(opened.error.empty()) << Describe(shape) << " cut at " << cut;
                continue;
            }
            ASSERT_TRUE(opened.error.empty()) << Describe(shape) << " cut at " << cut << ": " << opened.error;
            const auto whole = std::uint32_t(std::count_if(
                records.begin(), records.end(), [&](const auto& record) { return record.second <= cut; }));
            ASSERT_EQ(opened.count, whole) << Describe(shape) << " cut at " << cut;
            const bool atARecordEnd =
                cut == 4096 || std::any_of(records.begin(), records.end(),
                                           [&](const auto& record) { return record.second == cut; });
            ASSERT_EQ(opened.consistent, cut == data.size() || (shape.compression.isEmpty() && atARecordEnd))
                << Describe(shape) << " cut at " << cut;
            for (std::uint32_t image = 0; image < opened.count; ++image)
                ASSERT_TRUE(ImageMatches(reader, shape, image)) << "cut at " << cut;
        }

        // A tail of zeros that a file system preallocated is no record.
        Put(copy + ".ims", data + std::string(20 * 4096 + 7, '\0'));
        C_ImageReader reader;
        const Opened opened = OpenStream(reader, copy);
        EXPECT_EQ(opened.count, 3u) << Describe(shape);
        EXPECT_FALSE(opened.consistent);
        EXPECT_TRUE(ImageMatches(reader, shape, 2));
    }
}

TEST(ImageStreamWithoutChecksumsTest, AChangedRawPixelLoadsAsItIsWhileDamagedHeadersAndPackedPlanesAreCaught)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "IMX", "Zlib"}) {
        const Shape shape = MakeShape(40, 30, Bits::Word, compression, 2);
        const bool raw = shape.compression.isEmpty();
        const std::string original = dir / "Frame0";
        WriteUnchecked(original, shape, 3);
        const std::string data = Bytes(original + ".ims");
        const auto records = Records(original, shape, 3);
        const std::string copy = dir / "Copy";
        const auto reset = [&] {
            Put(copy + ".ims", data);
            if (!raw)
                RTE::FileSystem::CopyFile(original + ".index.ims", copy + ".index.ims", true);
        };
        std::vector<std::uint16_t> target(shape.width * shape.height);

        // A bit of the second plane of image 1, inside its stored bytes.
        const std::uint64_t plane1 = records[1].first + 4096 + (LoadLE(U8(data) + records[1].first + 40, 8) + 4095) /
                                                                    4096 * 4096;
        const std::uint64_t stored1 = LoadLE(U8(data) + records[1].first + 40 + 16, 8);
        reset();
        FlipBit(copy + ".ims", plane1 + stored1 / 2, 0x10);
        {
            SCOPED_TRACE(Describe(shape) + " pixel bit flipped");
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            EXPECT_EQ(opened.count, 3u);
            EXPECT_TRUE(opened.consistent);
            const std::string error = TestSupport::MessageOf([&] { reader.LoadPlane(1, 1, 0, target.data()); });
            if (raw) {
                // The documented trade-off: the load succeeds with exactly the changed byte.
                EXPECT_EQ(error, "(no exception)");
                std::vector<std::uint8_t> expected = PlaneBytes(shape, 1, 1);
                expected[std::size_t(stored1 / 2)] ^= 0x10;
                EXPECT_EQ(0, std::memcmp(target.data(), expected.data(), expected.size()));
            } else {
                EXPECT_TRUE(Contains(error, copy + ".ims")) << error;
                EXPECT_TRUE(Contains(error, "image 1")) << error;
            }
            for (std::uint32_t image : {0u, 2u})
                EXPECT_TRUE(ImageMatches(reader, shape, image));
        }

        // A bit of image 1's record header (its image index): its load fails, the others read.
        reset();
        FlipBit(copy + ".ims", records[1].first + 17, 0x01);
        {
            SCOPED_TRACE(Describe(shape) + " record header bit flipped");
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            EXPECT_EQ(opened.count, 3u);
            const std::string error = TestSupport::MessageOf([&] { reader.LoadPlane(1, 0, 0, target.data()); });
            EXPECT_TRUE(Contains(error, copy + ".ims")) << error;
            EXPECT_TRUE(Contains(error, "image 1")) << error;
            for (std::uint32_t image : {0u, 2u})
                EXPECT_TRUE(ImageMatches(reader, shape, image));
        }

        // The last record's header damaged (a plane size; the header checksum no longer matches):
        // that record is not counted, although the file, and the index, hold all of it.
        reset();
        FlipBit(copy + ".ims", records[2].first + 40, 0x04);
        {
            SCOPED_TRACE(Describe(shape) + " last record header damaged");
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, copy);
            ASSERT_TRUE(opened.error.empty()) << opened.error;
            EXPECT_EQ(opened.count, 2u);
            EXPECT_FALSE(opened.consistent);
            EXPECT_TRUE(ImageMatches(reader, shape, 1));
        }
    }
}

TEST(ImageStreamWithoutChecksumsTest, UnknownFlagBitsAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (bool checksums : {true, false}) {
        const Shape shape = MakeShape(16, 8, Bits::Word, "");
        const std::string destination = dir / "Frame0";
        if (checksums)
            WriteStream(QString::fromStdString(destination), shape, 1);
        else
            WriteUnchecked(destination, shape, 1);
        const std::string data = Bytes(destination + ".ims");
        for (std::uint8_t unknown : {0x02, 0x80, 0xFE}) {
            std::string patched = data;
            auto* bytes = reinterpret_cast<std::uint8_t*>(&patched[0]);
            bytes[39] = std::uint8_t(bytes[39] | unknown);
            StoreLE(BufferApi::Private::Crc32(bytes, 76), bytes + 76, 4);
            Put(destination + ".ims", patched);
            C_ImageReader reader;
            const Opened opened = OpenStream(reader, destination);
            EXPECT_TRUE(Contains(opened.error, "has an invalid header: unknown flags")) << opened.error;
            EXPECT_TRUE(Contains(opened.error, destination + ".ims")) << opened.error;
            EXPECT_EQ(reader.GetImageCount(), 0u);
        }
    }
}
