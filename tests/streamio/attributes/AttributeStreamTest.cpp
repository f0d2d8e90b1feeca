// Attribute streams written by AttributeWriter and read by C_AttributeReader: round trips, the
// probe of the image past the end, batches, misuse, a full disk, and the plug-in identity.

#include "RecordingSink.h"

#include <StreamIO/AttributeReader.h>
#include <StreamIO/AttributeWriter.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/PluginFactory.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <random>

using SetApi::AttributeWriter;
using SetApi::Private::C_AttributeReader;
using StreamTest::Attribute;
using StreamTest::Record;
using StreamTest::RecordingSink;
using TestSupport::MessageOf;

namespace {

QString Destination(const TestSupport::TempDir& dir, const char* prefix = "Attributes0_")
{
    return QString::fromStdString(dir / prefix);
}

void Write(const QString& destination, const std::vector<Record>& records)
{
    AttributeWriter writer;
    writer.Open(destination);
    for (const Record& record : records) {
        StreamTest::Replay(record, writer);
        writer.NextImage();
    }
    writer.Close();
}

Record Read(C_AttributeReader& reader, std::uint32_t image)
{
    RecordingSink sink;
    reader.ReadAttributes(image, sink);
    return sink.attributes;
}

Record EveryKind()
{
    const double nan = TestSupport::DoubleFromBits(0x7ff8000000000123ull);
    return {
        Attribute::MakeText("Comment", QString::fromUtf8("µm, °CA, \xe6\xb8\xa9\xe5\xba\xa6")),
        Attribute::MakeText("Empty", ""),
        Attribute::MakeText(QString::fromUtf8("Näme with\nnewline"), QString::fromUtf8("a\0b", 3)),
        Attribute::MakeDoubles("Doubles", {1.5, -0.0, nan, std::numeric_limits<double>::infinity(), 4.9e-324}),
        Attribute::MakeFloats("Floats", {1.25f, -3.0e38f, 0.0f}),
        Attribute::MakeInts("Ints", {INT_MIN, -1, 0, INT_MAX}),
        Attribute::MakeWords("Words", {0, 1, 65535}),
        Attribute::MakeDoubles("NoDoubles", {}),
        Attribute::MakeWords("NoWords", {}),
        Attribute::MakeText("Comment", "the same name twice is kept twice"),
    };
}

} // namespace

TEST(AttributeStreamTest, EveryKindOfAttributeAndEmptyRecordsReadBackInOrder)
{
    TestSupport::TempDir dir;
    const std::vector<Record> records{EveryKind(), {}, {Attribute::MakeInts("Only", {7})}, {}};
    Write(Destination(dir), records);

    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Attributes0_.attr"));
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Attributes0_.index.attr"));
    C_AttributeReader reader;
    reader.Open(Destination(dir));
    ASSERT_EQ(reader.GetImageCount(), 4u);
    for (std::uint32_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(Read(reader, i), records[i]) << "image " << i;
}

TEST(AttributeStreamTest, ImagePastTheEndRaisesAsTheLastImageProbeExpects)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    Write(Destination(dir), {{}, {Attribute::MakeText("A", "1")}});

    C_AttributeReader reader;
    reader.Open(Destination(dir));
    EXPECT_NO_THROW(Read(reader, 1));
    EXPECT_EQ(MessageOf([&] { Read(reader, 2); }),
              "Attribute stream '" + (dir / "Attributes0_.attr") + "' holds no image 2: it holds 2 images");
    EXPECT_THROW(Read(reader, std::numeric_limits<std::uint32_t>::max()), RTE::Exception);

    // A stream without images opens, and its first image is already past the end.
    Write(Destination(dir, "Empty0_"), {});
    C_AttributeReader empty;
    empty.Open(Destination(dir, "Empty0_"));
    EXPECT_EQ(empty.GetImageCount(), 0u);
    EXPECT_THROW(Read(empty, 0), RTE::Exception);
}

TEST(AttributeStreamTest, ManyImagesReadInAnyOrder)
{
    TestSupport::TempDir dir;
    const std::uint32_t count = 3000;
    std::vector<Record> records(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        records[i].push_back(Attribute::MakeText("Index", QString::number(i)));
        records[i].push_back(Attribute::MakeInts("Tail", std::vector<int>(i % 7, int(i))));
    }
    Write(Destination(dir), records);

    C_AttributeReader reader;
    reader.Open(Destination(dir));
    ASSERT_EQ(reader.GetImageCount(), count);
    std::vector<std::uint32_t> order(count);
    for (std::uint32_t i = 0; i < count; ++i)
        order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (std::uint32_t i : order)
        ASSERT_EQ(Read(reader, i), records[i]) << "image " << i;
}

TEST(AttributeStreamTest, BatchesReachTheDiskWhenFullOnFlushAndOnClose)
{
    TestSupport::TempDir dir;
    AttributeWriter writer;
    writer.SetRecordsPerBatch(4);
    writer.Open(Destination(dir));
    for (int i = 0; i < 10; ++i) {
        writer.Add("I", QString::number(i));
        writer.NextImage();
    }
    EXPECT_EQ(writer.GetImageCount(), 10u);

    // What a process killed now would leave: the two full batches.
    C_AttributeReader reader;
    reader.Open(Destination(dir));
    EXPECT_EQ(reader.GetImageCount(), 8u);
    EXPECT_EQ(Read(reader, 7), Record{Attribute::MakeText("I", "7")});

    writer.Flush();
    reader.Open(Destination(dir));
    EXPECT_EQ(reader.GetImageCount(), 10u);

    writer.Add("I", "10");
    writer.NextImage();
    writer.Add("Dropped", "attributes without NextImage are not a record");
    writer.Close();
    reader.Open(Destination(dir));
    EXPECT_EQ(reader.GetImageCount(), 11u);
    EXPECT_EQ(Read(reader, 10), Record{Attribute::MakeText("I", "10")});
}

TEST(AttributeStreamTest, TheDestructorCompletesTheStreamAndOpenReplacesAnOldOne)
{
    TestSupport::TempDir dir;
    Write(Destination(dir), std::vector<Record>(5));
    {
        AttributeWriter writer;
        writer.SetRecordsPerBatch(100);
        writer.Open(Destination(dir));
        writer.Add("New", "stream");
        writer.NextImage();
    }
    C_AttributeReader reader;
    reader.Open(Destination(dir));
    ASSERT_EQ(reader.GetImageCount(), 1u);
    EXPECT_EQ(Read(reader, 0), Record{Attribute::MakeText("New", "stream")});
}

TEST(AttributeStreamTest, MisuseIsRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    AttributeWriter writer;
    EXPECT_THROW(writer.Add("A", "before Open"), RTE::VerificationFailed);
    EXPECT_THROW(writer.NextImage(), RTE::VerificationFailed);
    EXPECT_THROW(writer.Open(""), RTE::VerificationFailed);

    writer.Open(Destination(dir));
    EXPECT_THROW(writer.Open(Destination(dir, "Other_")), RTE::VerificationFailed);
    EXPECT_THROW(writer.AddArray("Null", 3, static_cast<const double*>(nullptr)), RTE::VerificationFailed);
    EXPECT_THROW(writer.AddArray("Huge", std::size_t(1) << 40, static_cast<const int*>(nullptr)),
                 RTE::VerificationFailed);
    writer.AddArray("NullWithoutElements", 0, static_cast<const float*>(nullptr));
    writer.NextImage();
    writer.Close();
    writer.Close();
    EXPECT_THROW(writer.Add("A", "after Close"), RTE::VerificationFailed);

    C_AttributeReader reader;
    EXPECT_THROW(Read(reader, 0), RTE::VerificationFailed);
    reader.Open(Destination(dir));
    EXPECT_EQ(Read(reader, 0), Record{Attribute::MakeFloats("NullWithoutElements", {})});
    EXPECT_THROW(reader.Open(Destination(dir, "Missing_")), RTE::Exception);
    EXPECT_EQ(reader.GetImageCount(), 0u);
}

TEST(AttributeStreamTest, AFullDiskKeepsEveryImageWrittenBeforeIt)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::uint32_t images = 6;
    std::vector<Record> records(images);
    for (std::uint32_t i = 0; i < images; ++i)
        records[i] = {Attribute::MakeText("I", QString::number(i)), Attribute::MakeWords("W", {1, 2, 3})};

    // Every budget from nothing to enough, in steps that land inside preambles, records and entries.
    for (std::uint64_t budget = 0; budget < 900; budget += 7) {
        const QString destination = Destination(dir);
        std::uint32_t written = 0;
        bool opened = false;
        {
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            RTE::ScopedFileSystemBackend installed(faults);
            faults->FailWritesAfter(budget);
            AttributeWriter writer;
            try {
                writer.Open(destination);
                opened = true;
                for (const Record& record : records) {
                    StreamTest::Replay(record, writer);
                    writer.NextImage();
                    ++written;
                }
                writer.Close();
            } catch (const RTE::FileWriteError&) {
                // After a failure the stream takes nothing more, even with room again.
                faults->ClearFaults();
                if (opened) {
                    EXPECT_THROW(writer.NextImage(), RTE::FileWriteError) << "budget " << budget;
                }
            }
        }
        C_AttributeReader reader;
        try {
            reader.Open(destination);
        } catch (const RTE::Exception&) {
            EXPECT_EQ(written, 0u) << "budget " << budget;
            continue;
        }
        ASSERT_EQ(reader.GetImageCount(), written) << "budget " << budget;
        for (std::uint32_t i = 0; i < written; ++i)
            EXPECT_EQ(Read(reader, i), records[i]) << "budget " << budget;
        if (written == images)
            break;
    }
}

TEST(AttributeStreamTest, PluginAnswersWithKeyAsNameAndNameAsType)
{
    C_AttributeReader::pluginRegister();
    std::unique_ptr<RTE::I_Plugin> plugin = RTE::C_PluginFactory::GetInstance().CreateUnique(
        "Core.Set.Recording.AttributeReader", "AttributeReaderV1");
    auto* reader = dynamic_cast<SetApi::I_AttributeReader*>(plugin.get());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(plugin->GetPluginName(), "Core.Set.Recording.AttributeReader");
    EXPECT_EQ(plugin->GetPluginType(), "AttributeReaderV1");

    AttributeWriter writer;
    EXPECT_EQ(writer.GetCorrespondingReaderType().toStdString(), plugin->GetPluginName());
    EXPECT_EQ(writer.GetCorrespondingReaderName().toStdString(), plugin->GetPluginType());
    EXPECT_EQ(writer.GetFormatDescription().toStdString(), plugin->GetPluginDescription());
}
