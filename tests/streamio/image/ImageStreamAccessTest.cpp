// How the reader touches the files: opening reads the ends of a stream, not all of it; direct
// reads give the same pixels as buffered ones.

#include "ImageStreamTestSupport.h"

#include <model/AlignedMemory.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

using namespace ImageStreamTest;
using SetApi::C_ImageReader;
using SetApi::C_ImageWriter;

namespace {

// Counts the reads of every file opened through it, and the bytes they asked for.
class CountingFileSystem : public RTE::FaultInjectingFileSystem {
public:
    std::atomic<unsigned> reads{0};
    std::atomic<std::uint64_t> bytes{0};
    std::atomic<unsigned> directOpens{0};

    std::unique_ptr<RTE::I_ReadableFile> OpenForReading(const std::string& path) override
    {
        return std::make_unique<File>(*this, FaultInjectingFileSystem::OpenForReading(path));
    }
    std::unique_ptr<RTE::I_ReadableFile> OpenForDirectReading(const std::string& path) override
    {
        ++directOpens;
        return std::make_unique<File>(*this, FaultInjectingFileSystem::OpenForDirectReading(path));
    }

private:
    class File : public RTE::I_ReadableFile {
    public:
        File(CountingFileSystem& owner, std::unique_ptr<RTE::I_ReadableFile> target)
            : m_owner(owner), m_target(std::move(target))
        {
        }
        std::uint64_t Size() override { return m_target->Size(); }
        std::size_t ReadAt(std::uint64_t offset, void* data, std::size_t size) override
        {
            ++m_owner.reads;
            m_owner.bytes += size;
            return m_target->ReadAt(offset, data, size);
        }
        bool IsDirect() const override { return m_target->IsDirect(); }

    private:
        CountingFileSystem& m_owner;
        std::unique_ptr<RTE::I_ReadableFile> m_target;
    };
};

} // namespace

TEST(ImageStreamAccessTest, OpeningALongStreamReadsOnlyItsEnds)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    Shape shape;
    shape.width = 8;
    shape.height = 8;
    for (const char* compression : {"", "Zlib"}) {
        shape.compression = QString::fromLatin1(compression);
        const std::string destination = dir / (std::string("Frame") + compression);
        WriteStream(QString::fromStdString(destination), shape, 1000);
        // And a preallocated tail of zeros, which takes a search for the last record.
        const std::string data = Bytes(destination + ".ims");
        Put(destination + ".ims", data + std::string(1000 * 8192, '\0'));
        if (!shape.compression.isEmpty())
            Put(destination + ".index.ims", Bytes(destination + ".index.ims") + std::string(1000 * 32, '\0'));

        auto counting = std::make_shared<CountingFileSystem>();
        RTE::ScopedFileSystemBackend installed(counting);
        C_ImageReader reader;
        reader.Open(QString::fromStdString(destination));
        EXPECT_EQ(reader.GetImageCount(), 1000u);
        EXPECT_FALSE(reader.IsDataConsistent());
        // The header, a binary search over 2000 candidates, the last record: some 20 small reads.
        EXPECT_LE(counting->reads.load(), 30u) << compression;
        EXPECT_LE(counting->bytes.load(), 200000u) << compression;
        EXPECT_TRUE(ImageMatches(reader, shape, 999));
        EXPECT_TRUE(ImageMatches(reader, shape, 123));
    }
}

TEST(ImageStreamAccessTest, DirectReadsGiveTheSamePixelsIntoAlignedAndUnalignedTargets)
{
    TestSupport::TempDir dir;
    Shape shape;
    shape.width = 2560;
    shape.height = 20; // 100 KiB per plane: whole blocks
    for (const char* compression : {"", "IMX"}) {
        for (unsigned width : {2560u, 1001u}) { // planes of whole blocks and planes ending inside one
            shape.width = width;
            shape.compression = QString::fromLatin1(compression);
            const std::string destination = dir / ("Frame" + std::to_string(width) + compression);
            WriteStream(QString::fromStdString(destination), shape, 3);

            auto counting = std::make_shared<CountingFileSystem>();
            RTE::ScopedFileSystemBackend installed(counting);
            C_ImageReader reader;
            reader.SetDirectIo(true);
            reader.Open(QString::fromStdString(destination));
            EXPECT_EQ(counting->directOpens.load(), 1u);
            EXPECT_EQ(reader.GetImageCount(), 3u);

            // The buffer library's planes are 4 KiB aligned; a caller's vector usually is not.
            auto aligned = BufferApi::Private::AllocateAligned(shape.PlaneBytes(), false);
            std::vector<std::uint16_t> unaligned(std::size_t(width) * shape.height + 1);
            for (std::uint32_t image : {2u, 0u, 1u}) {
                const std::vector<std::uint8_t> expected = PlaneBytes(shape, image, 0);
                reader.LoadPlane(image, 0, 0, static_cast<std::uint16_t*>(aligned.get()));
                EXPECT_EQ(std::memcmp(aligned.get(), expected.data(), expected.size()), 0) << image;
                reader.LoadPlane(image, 0, 0, unaligned.data() + 1);
                EXPECT_EQ(std::memcmp(unaligned.data() + 1, expected.data(), expected.size()), 0) << image;
            }
            // Switching back to buffered reads on the open stream.
            reader.SetDirectIo(false);
            EXPECT_TRUE(ImageMatches(reader, shape, 1));
        }
    }
}
