// Trace streams written by C_TraceWriter and read by C_TraceReader: whole traces, the attributes
// of one image, damaged files and a full disk.

#include <streamio/attributes/RecordingSink.h>

#include <StreamIO/TraceReader.h>
#include <StreamIO/TraceWriter.h>

#include <RTE/DeviceData.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/PluginFactory.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

using SetApi::C_TraceReader;
using SetApi::C_TraceWriter;
using StreamTest::Attribute;
using StreamTest::Record;
using StreamTest::RecordingSink;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::WriteFile;
using Samples = C_TraceWriter::Samples;

namespace {

// Two traces over three images; trace 0 has no samples in image 1.
const std::vector<std::vector<Samples>> kImages{
    {{{10, 1}, {12, 2}, {14, 3}, {16, 4}}, {{0, -1}, {1, -2}}},
    {{}, {{2, -3}, {3, -4}}},
    {{{18, 5}}, {{4, -5}, {5, -6}}},
};

void WriteSample(const QString& destination, std::size_t images = kImages.size())
{
    C_TraceWriter writer;
    writer.AddTrace("A/D Converter, Channel 1", RTE::S_Scale(0.5, 0, "s", "time"), RTE::S_Scale(2, -1, "V", "voltage"));
    writer.Open(destination);
    writer.AddTrace(QString::fromUtf8("Druck"), RTE::S_Scale(), RTE::S_Scale(1, 0, "bar", ""));
    for (std::size_t i = 0; i < images; ++i)
        writer.AppendImage(kImages[i]);
    writer.Close();
}

QString Name(const char* stem, int i)
{
    return QString::fromLatin1(stem) + QString::number(i);
}

Record ImageAttributes(C_TraceReader& reader, std::uint32_t image)
{
    RecordingSink sink;
    reader.ReadTraces(image, sink);
    return sink.attributes;
}

} // namespace

TEST(TraceStreamTest, WholeTracesJoinTheImagesAndApplyTheScales)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteSample(QString::fromStdString(dir / "Traces0_"));

    C_TraceReader reader;
    reader.Open(QString::fromStdString(dir / "Traces0_"));
    EXPECT_EQ(reader.GetImageCount(), 3u);
    ASSERT_EQ(reader.GetTraceCount(), 2u);
    const auto first = reader.GetTrace(0);
    EXPECT_EQ(first->name, "A/D Converter, Channel 1");
    EXPECT_EQ(first->points, (std::vector<std::pair<double, double>>{{5, 1}, {6, 3}, {7, 5}, {8, 7}, {9, 9}}));
    EXPECT_EQ(first->xScaleUnit, "s");
    EXPECT_EQ(first->xScaleDescription, "time");
    EXPECT_EQ(first->yScaleUnit, "V");
    EXPECT_EQ(first->yScaleDescription, "voltage");
    const auto second = reader.GetTrace(1);
    EXPECT_EQ(second->GetLength(), 6u);
    EXPECT_EQ(second->points.back(), std::make_pair(5.0, -6.0));
    EXPECT_EQ(second->yScaleUnit, "bar");
    EXPECT_EQ(reader.GetTrace(0), first); // read once, kept
    EXPECT_THROW(reader.GetTrace(2), RTE::VerificationFailed);
}

TEST(TraceStreamTest, AnImageGivesNameValuesAndScaleTextsPerTrace)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteSample(QString::fromStdString(dir / "Traces0_"));
    C_TraceReader reader;
    reader.Open(QString::fromStdString(dir / "Traces0_"));
    using namespace RTE::DeviceData;

    // The x axis text runs from the first sample's x to the last one's: x 10..16 raw is 5..8 s,
    // one second per value.
    EXPECT_EQ(ImageAttributes(reader, 0),
              (Record{Attribute::MakeText(Name(DEVDATANAME, 0), "A/D Converter, Channel 1"),
                      Attribute::MakeDoubles(Name(DEVDATATRACE, 0), {1, 2, 3, 4}),
                      Attribute::MakeText(Name(DEVDATASCALEX, 0), "1\n5\ns\ntime"),
                      Attribute::MakeText(Name(DEVDATASCALEI, 0), "2\n-1\nV\nvoltage"),
                      Attribute::MakeText(Name(DEVDATANAME, 1), "Druck"),
                      Attribute::MakeDoubles(Name(DEVDATATRACE, 1), {-1, -2}),
                      Attribute::MakeText(Name(DEVDATASCALEX, 1), "1\n0\n\n"),
                      Attribute::MakeText(Name(DEVDATASCALEI, 1), "1\n0\nbar\n")}));
    // No samples: no values, and the trace's own x scale; one sample: its x as offset.
    const Record empty = ImageAttributes(reader, 1);
    ASSERT_EQ(empty.size(), 8u);
    EXPECT_EQ(empty[1], Attribute::MakeDoubles(Name(DEVDATATRACE, 0), {}));
    EXPECT_EQ(empty[2], Attribute::MakeText(Name(DEVDATASCALEX, 0), "0.5\n0\ns\ntime"));
    EXPECT_EQ(ImageAttributes(reader, 2)[2], Attribute::MakeText(Name(DEVDATASCALEX, 0), "0.5\n9\ns\ntime"));

    EXPECT_EQ(MessageOf([&] { ImageAttributes(reader, 3); }),
              "Trace stream '" + (dir / "Traces0_.trc") + "' holds no image 3: it holds 3 images");
}

TEST(TraceStreamTest, StreamsWithoutTracesOrImagesReadBack)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    {
        C_TraceWriter writer(QString::fromStdString(dir / "Traces0_"));
        writer.Open();
    } // the destructor writes the head
    C_TraceReader reader;
    reader.Open(QString::fromStdString(dir / "Traces0_"));
    EXPECT_EQ(reader.GetTraceCount(), 0u);
    EXPECT_EQ(reader.GetImageCount(), 0u);

    WriteSample(QString::fromStdString(dir / "Traces1_"), 0);
    reader.Open(QString::fromStdString(dir / "Traces1_"));
    ASSERT_EQ(reader.GetTraceCount(), 2u);
    EXPECT_EQ(reader.GetTrace(1)->GetLength(), 0u);
    EXPECT_THROW(ImageAttributes(reader, 0), RTE::Exception);
}

TEST(TraceStreamTest, MisuseIsRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    C_TraceWriter writer;
    writer.AddTrace("T", {}, {});
    EXPECT_THROW(writer.AppendImage({{}}), RTE::VerificationFailed); // before Open
    EXPECT_THROW(writer.Open(), RTE::VerificationFailed);            // no destination
    writer.Open(QString::fromStdString(dir / "Traces0_"));
    EXPECT_THROW(writer.SetDestination("elsewhere"), RTE::VerificationFailed);
    EXPECT_THROW(writer.AppendImage({}), RTE::VerificationFailed);
    EXPECT_THROW(writer.AppendImage({{}, {}}), RTE::VerificationFailed);
    writer.AppendImage({{{1, 2}}});
    EXPECT_THROW(writer.AddTrace("Late", {}, {}), RTE::VerificationFailed);
    writer.Close();
    EXPECT_THROW(writer.AppendImage({{}}), RTE::VerificationFailed);

    C_TraceReader reader;
    EXPECT_THROW(reader.Open(QString::fromStdString(dir / "Missing_")), RTE::Exception);
    EXPECT_EQ(reader.GetTraceCount(), 0u);
}

TEST(TraceStreamTest, DamagedFilesRaiseOrLoseOnlyTheirBrokenTail)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString destination = QString::fromStdString(dir / "Traces0_");
    WriteSample(destination);
    const std::string dataPath = dir / "Traces0_.trc";
    const std::string indexPath = dir / "Traces0_.index.trc";
    const std::string data = ReadFile(dataPath);
    const std::string index = ReadFile(indexPath);
    RecordingSink expected[3];
    {
        C_TraceReader reader;
        reader.Open(destination);
        for (std::uint32_t i = 0; i < 3; ++i)
            reader.ReadTraces(i, expected[i]);
    }
    const auto check = [&](const std::string& context) {
        C_TraceReader reader;
        try {
            reader.Open(destination);
        } catch (const RTE::Exception&) {
            return;
        }
        EXPECT_LE(reader.GetImageCount(), 3u) << context;
        for (std::uint32_t i = 0; i < reader.GetImageCount(); ++i) {
            try {
                EXPECT_EQ(ImageAttributes(reader, i), expected[i].attributes) << context;
            } catch (const RTE::Exception&) {
            }
        }
        try {
            reader.GetTrace(0);
        } catch (const RTE::Exception&) {
        }
    };
    // The frame (preamble, index, checksums) is that of the attribute stream and tested there;
    // here every byte of head and records is flipped once.
    for (std::size_t at = 0; at < data.size(); ++at) {
        std::string damaged = data;
        damaged[at] ^= 0x40;
        WriteFile(dataPath, damaged);
        check("data flip at " + std::to_string(at));
    }
    // The record of the last image cut short: two images remain.
    WriteFile(indexPath, index);
    WriteFile(dataPath, data.substr(0, data.size() - 1));
    C_TraceReader reader;
    reader.Open(destination);
    EXPECT_EQ(reader.GetImageCount(), 2u);
    EXPECT_EQ(reader.GetTrace(0)->GetLength(), 4u);
}

TEST(TraceStreamTest, AFullDiskKeepsEveryImageWrittenBeforeIt)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString destination = QString::fromStdString(dir / "Traces0_");
    for (std::uint64_t budget = 0; budget < 700; budget += 5) {
        std::uint32_t written = 0;
        {
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            RTE::ScopedFileSystemBackend installed(faults);
            faults->FailWritesAfter(budget);
            C_TraceWriter writer;
            try {
                writer.AddTrace("T", {}, {});
                writer.Open(destination);
                for (int i = 0; i < 5; ++i) {
                    writer.AppendImage({{{double(i), double(-i)}}});
                    ++written;
                }
                writer.Close();
            } catch (const RTE::FileWriteError&) {
            }
        }
        C_TraceReader reader;
        try {
            reader.Open(destination);
        } catch (const RTE::Exception&) {
            EXPECT_EQ(written, 0u) << "budget " << budget;
            continue;
        }
        ASSERT_EQ(reader.GetImageCount(), written) << "budget " << budget;
        const auto trace = reader.GetTrace(0);
        ASSERT_EQ(trace->GetLength(), written);
        for (std::uint32_t i = 0; i < written; ++i)
            EXPECT_EQ(trace->points[i], std::make_pair(double(i), -double(i)));
    }
}

TEST(TraceStreamTest, PluginAnswersWithKeyAsNameAndNameAsType)
{
    C_TraceReader::pluginRegister();
    std::unique_ptr<RTE::I_Plugin> plugin =
        RTE::C_PluginFactory::GetInstance().CreateUnique("Core.Set.Recording.TraceReader", "TraceReaderV1");
    ASSERT_NE(dynamic_cast<SetApi::I_TraceReader*>(plugin.get()), nullptr);
    EXPECT_EQ(plugin->GetPluginName(), "Core.Set.Recording.TraceReader");
    EXPECT_EQ(plugin->GetPluginType(), "TraceReaderV1");
    C_TraceWriter writer;
    EXPECT_EQ(writer.GetCorrespondingReaderType().toStdString(), plugin->GetPluginName());
    EXPECT_EQ(writer.GetCorrespondingReaderName().toStdString(), plugin->GetPluginType());
    EXPECT_EQ(writer.GetFormatDescription().toStdString(), plugin->GetPluginDescription());
}
