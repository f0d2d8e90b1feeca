// Image streams written with direct I/O: the same files as buffered writing for every shape and
// compression, from aligned and unaligned plane memory; room reserved ahead is trimmed at Close;
// a stream whose writer died, with or without a zero-filled reserved tail, counts its images; a
// full disk stops a direct stream after its last complete image.

#include "ImageStreamTestSupport.h"

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using namespace ImageStreamTest;
using SetApi::C_ImageReader;
using SetApi::C_ImageWriter;

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

// The planes of one image in memory of their own, each starting `misalignment` bytes behind a
// 4 KiB boundary (0: aligned, as buffer planes are).
class PlaneMemory {
public:
    PlaneMemory(const Shape& shape, std::uint32_t image, std::size_t misalignment)
    {
        for (unsigned p = 0; p < shape.Planes(); ++p) {
            const std::vector<std::uint8_t> bytes = PlaneBytes(shape, image, p);
            const std::size_t size = (bytes.size() + misalignment + 4095) / 4096 * 4096;
            m_blocks.emplace_back(static_cast<std::uint8_t*>(std::aligned_alloc(4096, size)));
            std::memcpy(m_blocks.back().get() + misalignment, bytes.data(), bytes.size());
            m_planes.push_back(m_blocks.back().get() + misalignment);
        }
    }
    const std::vector<const void*>& Planes() const { return m_planes; }

private:
    std::vector<std::unique_ptr<std::uint8_t, FreeDeleter>> m_blocks;
    std::vector<const void*> m_planes;
};

void AppendFromPlaneMemory(C_ImageWriter& writer, const Shape& shape, std::uint32_t from, std::uint32_t to,
                           std::size_t misalignment)
{
    for (std::uint32_t image = from; image < to; ++image)
        writer.AppendPlanesOfOneImage(PlaneMemory(shape, image, misalignment).Planes());
}

void WriteDirect(const std::string& destination, const Shape& shape, std::uint32_t images, std::size_t misalignment)
{
    C_ImageWriter writer(shape.width, shape.height, shape.depth, shape.framesPerImage, shape.bits, shape.compression);
    writer.SetDirectIo(true);
    writer.Open(QString::fromStdString(destination));
    AppendFromPlaneMemory(writer, shape, 0, images, misalignment);
    writer.Close();
}

// A raw stream's data file without its stream id, which differs from stream to stream: block 0
// and every record header block are left out.
std::string RawPixelBytes(const std::string& destination, const Shape& shape)
{
    const std::string data = Bytes(destination + ".ims");
    const std::size_t stride = 4096 + shape.Planes() * ((shape.PlaneBytes() + 4095) / 4096 * 4096);
    std::string pixels;
    for (std::size_t record = 4096; record + stride <= data.size(); record += stride)
        pixels += data.substr(record + 4096, stride - 4096);
    return pixels;
}

::testing::AssertionResult ReadsBack(const std::string& destination, const Shape& shape, std::uint32_t images,
                                     bool consistent)
{
    C_ImageReader reader;
    reader.Open(QString::fromStdString(destination));
    if (reader.GetImageCount() != images)
        return ::testing::AssertionFailure() << reader.GetImageCount() << " images instead of " << images;
    if (reader.IsDataConsistent() != consistent)
        return ::testing::AssertionFailure() << "consistency " << reader.IsDataConsistent();
    for (std::uint32_t image = 0; image < images; ++image) {
        const ::testing::AssertionResult matches = ImageMatches(reader, shape, image);
        if (!matches)
            return matches;
    }
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(ImageStreamDirectWriteTest, DirectAndBufferedWritingGiveTheSameStreams)
{
    TestSupport::TempDir dir;
    int stream = 0;
    // Planes of whole blocks, of a partial last block, and several planes per record.
    const unsigned sizes[][2] = {{1024, 512}, {37, 11}, {1000, 301}};
    for (const auto& size : sizes)
        for (unsigned depth : {1u, 3u})
            for (const char* compression : {"", "Zlib", "IMX"})
                for (std::size_t misalignment : {std::size_t(0), std::size_t(24)}) {
                    if (*compression != '\0' && size[0] * size[1] > 100000 && depth > 1)
                        continue; // packing large planes takes long and adds nothing here
                    Shape shape;
                    shape.width = size[0];
                    shape.height = size[1];
                    shape.depth = depth;
                    shape.compression = QString::fromLatin1(compression);
                    SCOPED_TRACE(Describe(shape) + " misaligned by " + std::to_string(misalignment));
                    const std::string buffered = dir / ("Buffered" + std::to_string(stream));
                    const std::string direct = dir / ("Direct" + std::to_string(stream++));
                    WriteStream(QString::fromStdString(buffered), shape, 3);
                    WriteDirect(direct, shape, 3, misalignment);

                    EXPECT_EQ(Bytes(direct + ".ims").size(), Bytes(buffered + ".ims").size());
                    if (shape.compression.isEmpty()) {
                        EXPECT_TRUE(RawPixelBytes(direct, shape) == RawPixelBytes(buffered, shape));
                        EXPECT_FALSE(RTE::FileSystem::Exists(direct + ".index.ims"));
                    } else {
                        EXPECT_EQ(Bytes(direct + ".index.ims").size(), Bytes(buffered + ".index.ims").size());
                    }
                    EXPECT_TRUE(ReadsBack(direct, shape, 3, true));
                }
}

TEST(ImageStreamDirectWriteTest, MasksAndSeveralFramesPerImageGoDirectToo)
{
    TestSupport::TempDir dir;
    Shape shape;
    shape.width = 2048;
    shape.height = 3;
    shape.framesPerImage = 2;
    shape.bits = Bits::Mask;
    WriteDirect(dir / "Mask", shape, 2, 0);
    EXPECT_TRUE(ReadsBack(dir / "Mask", shape, 2, true));

    // AppendFramesOfOneImage: the frames one behind the other in the caller's memory.
    shape.bits = Bits::Double;
    C_ImageWriter writer(shape.width, shape.height, 1, 2, shape.bits, "");
    writer.SetDirectIo(true);
    writer.Open(QString::fromStdString(dir / "Frames"));
    AppendImages(writer, shape, 0, 3);
    writer.Close();
    EXPECT_TRUE(ReadsBack(dir / "Frames", shape, 3, true));

    // Direct I/O is chosen before Open.
    C_ImageWriter late(4, 4, 1, 1, Bits::Word, "");
    late.Open(QString::fromStdString(dir / "Late"));
    EXPECT_THROW(late.SetDirectIo(true), RTE::VerificationFailed);
}

TEST(ImageStreamDirectWriteTest, AStreamWhoseWriterDiedCountsItsImagesWithOrWithoutAReservedTail)
{
    TestSupport::TempDir dir;
    for (const char* compression : {"", "IMX"}) {
        Shape shape;
        shape.width = 600;
        shape.height = 100; // 120000 bytes: a partial last block per plane
        shape.compression = QString::fromLatin1(compression);
        SCOPED_TRACE(Describe(shape));
        const std::string destination = dir / (std::string("Frame") + compression);
        const std::string killed = dir / (std::string("Killed") + compression);
        const std::string reserved = dir / (std::string("Reserved") + compression);
        {
            C_ImageWriter writer(shape.width, shape.height, 1, 1, shape.bits, shape.compression);
            writer.SetDirectIo(true);
            writer.Open(QString::fromStdString(destination));
            AppendFromPlaneMemory(writer, shape, 0, 3, 0);
            // What a killed process leaves: every appended record is on the disk; room reserved
            // ahead does not show in the file's size.
            const std::string data = Bytes(destination + ".ims");
            Put(killed + ".ims", data);
            Put(reserved + ".ims", data + std::string(std::size_t(3) << 20, '\0'));
            if (!shape.compression.isEmpty()) {
                const std::string index = Bytes(destination + ".index.ims");
                Put(killed + ".index.ims", index);
                Put(reserved + ".index.ims", index + std::string(4096, '\0'));
            }
            AppendFromPlaneMemory(writer, shape, 3, 4, 0);
        } // the destructor closes
        EXPECT_TRUE(ReadsBack(destination, shape, 4, true));
        C_ImageReader reader;
        reader.Open(QString::fromStdString(killed));
        EXPECT_EQ(reader.GetImageCount(), 3u);
        EXPECT_TRUE(ImageMatches(reader, shape, 2));
        EXPECT_TRUE(ReadsBack(reserved, shape, 3, false));
    }
}

TEST(ImageStreamDirectWriteTest, AFullDiskStopsADirectStreamAfterItsLastCompleteImage)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    for (const char* compression : {"", "Zlib"}) {
        Shape shape;
        shape.width = 1024;
        shape.height = 16; // 32 KiB planes
        shape.compression = QString::fromLatin1(compression);
        const std::string destination = dir / (std::string("Frame") + compression);
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        {
            RTE::ScopedFileSystemBackend installed(faults);
            C_ImageWriter writer(shape.width, shape.height, 1, 1, shape.bits, shape.compression);
            writer.SetDirectIo(true);
            writer.Open(QString::fromStdString(destination));
            AppendFromPlaneMemory(writer, shape, 0, 2, 0);
            // Inside the third image: in its pixel data, or in the header of a small packed record.
            faults->FailWritesAfter(shape.compression.isEmpty() ? 4096 + 5000 : 100);
            EXPECT_THROW(AppendFromPlaneMemory(writer, shape, 2, 3, 0), RTE::FileWriteError);
            faults->ClearFaults();
            EXPECT_THROW(AppendFromPlaneMemory(writer, shape, 3, 4, 0), RTE::FileWriteError);
            writer.Close();
        }
        EXPECT_TRUE(ReadsBack(destination, shape, 2, false)) << compression;
    }
}
