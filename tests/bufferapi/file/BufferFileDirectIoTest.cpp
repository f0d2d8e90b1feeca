// Direct I/O is only a way of writing: a buffer file written with the option "DirectIo" holds the
// same bytes as one written through the page cache, whatever the plane sizes (tails of partial
// blocks), packing (packed planes in aligned memory beside raw ones) and head sizes (attributes
// that push the first plane behind several blocks).

#include "BufferFileTestData.h"

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Parameter/Factory.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace BufferApi;
using namespace BufferFileTest;

namespace {

boost::shared_ptr<RTE::Parameter::C_Tree> Options(long long packType, long long directIo)
{
    auto tree = PackOptions(packType);
    tree->Add(RTE::Parameter::CreateInteger(QStringLiteral("DirectIo"), directIo));
    return tree;
}

BufferPtr OneFrame(std::unique_ptr<I_Frame> frame)
{
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(std::move(frame));
    return buffer;
}

struct Case {
    const char* name;
    long long packType;
    std::function<BufferPtr()> make;
};

std::vector<Case> Cases()
{
    return {
        {"odd byte image, 641x479 bytes, raw", 0,
         [] {
             std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_BYTE, 641, 479, 1));
             FillFrame(*frame, 3, false);
             frame->GetAttributeStore().SetString("Camera", "left");
             BufferPtr buffer = OneFrame(std::move(frame));
             buffer->GetAttributeStore().SetString("Comment", "odd size");
             return buffer;
         }},
        {"planes that end on a block boundary", 0,
         [] {
             std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 1024, 6, 3));
             FillFrame(*frame, 4, false);
             return OneFrame(std::move(frame));
         }},
        {"one pixel", 0,
         [] {
             std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_FLOAT, 1, 1, 1));
             FillFrame(*frame, 5, false);
             return OneFrame(std::move(frame));
         }},
        {"rich frames, fast pack beside raw masks", 1,
         [] {
             BufferPtr buffer(CreateBuffer());
             buffer->AddFrame(RichImage(DATATYPE_WORD, 641, 479, 2, 6));
             buffer->AddFrame(RichImage(DATATYPE_FLOAT, 333, 77, 1, 7));
             std::unique_ptr<I_Frame> vectors(CreateVectorFrame(DATATYPE_FLOAT, 61, 47, 1, 16));
             FillFrame(*vectors, 8, true);
             buffer->AddFrame(std::move(vectors));
             buffer->GetAttributeStore().SetString("Recording", "run 7");
             return buffer;
         }},
        {"rich frames, zlib", 2,
         [] {
             BufferPtr buffer(CreateBuffer());
             buffer->AddFrame(RichImage(DATATYPE_DOUBLE, 257, 129, 2, 9));
             buffer->AddFrame(RichImage(DATATYPE_BYTE, 641, 479, 1, 10));
             return buffer;
         }},
        {"attributes over several blocks", 1,
         [] {
             std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 700, 300, 1));
             FillFrame(*frame, 11, true);
             std::vector<double> values(3001);
             for (std::size_t i = 0; i < values.size(); ++i)
                 values[i] = 0.25 * double(i) - 7;
             frame->GetAttributeStore().SetArray("Trace", unsigned(values.size()), DATATYPE_DOUBLE, values.data());
             BufferPtr buffer = OneFrame(std::move(frame));
             buffer->GetAttributeStore().SetString("Long", std::string(9000, 'x'));
             return buffer;
         }},
    };
}

} // namespace

TEST(BufferFileDirectIoTest, WritesTheSameBytesAsBufferedWriting)
{
    TestSupport::TempDir dir;
    // One direct target for every case, so that each direct write after the first replaces a file.
    const std::string direct = dir / "B00001.im7";
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.name);
        const BufferPtr buffer = c.make();
        const std::string buffered = dir / (std::string("buffered-") + std::to_string(c.packType) + ".im7");
        ExportBuffer(buffer.get(), buffered, PackOptions(c.packType));
        const std::string expected = TestSupport::ReadFile(buffered);
        // 1: durable at close; 2: durable at the writer's later folder sync. The same bytes.
        for (int directIo : {1, 2}) {
            ExportBuffer(buffer.get(), direct, Options(c.packType, directIo));
            const std::string written = TestSupport::ReadFile(direct);
            ASSERT_EQ(written.size(), expected.size());
            EXPECT_TRUE(written == expected);
            const BufferPtr back = Import(direct);
            ASSERT_TRUE(back);
            ExpectSameBuffer(*buffer, *back);
        }
    }
    // Nothing but the files themselves: no temporary file is left behind.
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), "\\..*", false, false), std::vector<std::string>());
}

TEST(BufferFileDirectIoTest, TheOptionIsAnIntegerAndZeroMeansBuffered)
{
    TestSupport::TempDir dir;
    const BufferPtr buffer = SmallBuffer(641, 3);
    ExportBuffer(buffer.get(), dir / "plain.im7", PackOptions(0));
    ExportBuffer(buffer.get(), dir / "zero.im7", Options(0, 0));
    EXPECT_EQ(TestSupport::ReadFile(dir / "zero.im7"), TestSupport::ReadFile(dir / "plain.im7"));

    auto textOption = PackOptions(0);
    textOption->Add(RTE::Parameter::CreateText(QStringLiteral("DirectIo"), QStringLiteral("yes")));
    TestSupport::LogCapture log;
    EXPECT_THROW(ExportBuffer(buffer.get(), dir / "text.im7", textOption), RTE::VerificationFailed);
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "text.im7"));
}
