// Scale files written by C_ScaleWriter and read by C_ScaleReader: the one record of a recording,
// range records of which the last one decides, damaged files and a full disk.

#include <StreamIO/ScaleReader.h>
#include <StreamIO/ScaleWriter.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/PluginFactory.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <limits>

using SetApi::C_ScaleReader;
using SetApi::C_ScaleWriter;
using TestSupport::BitsOf;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

namespace {

struct Scales {
    RTE::S_Scale x, y, intensity;
};

// Bit-exact comparison, NaN included.
void ExpectSame(const RTE::S_Scale& a, const RTE::S_Scale& b, const std::string& context)
{
    EXPECT_EQ(BitsOf(a.factor), BitsOf(b.factor)) << context;
    EXPECT_EQ(BitsOf(a.offset), BitsOf(b.offset)) << context;
    EXPECT_EQ(a.unit, b.unit) << context;
    EXPECT_EQ(a.description, b.description) << context;
}

void ExpectScales(C_ScaleReader& reader, std::uint32_t image, const Scales& expected, const std::string& context = {})
{
    Scales got{RTE::S_Scale(7, 7, "stale"), RTE::S_Scale(7, 7, "stale"), RTE::S_Scale(7, 7, "stale")};
    reader.ReadScales(image, got.x, got.y, got.intensity);
    const std::string where = context + " image " + std::to_string(image);
    ExpectSame(got.x, expected.x, where + " x");
    ExpectSame(got.y, expected.y, where + " y");
    ExpectSame(got.intensity, expected.intensity, where + " intensity");
}

Scales Numbered(int n)
{
    return Scales{RTE::S_Scale(0.1 * n, -n, "mm", "x " + QString::number(n)),
                  RTE::S_Scale(0.2 * n, n, QString::fromUtf8("µm"), "y"),
                  RTE::S_Scale(n, 0.0, "counts", QString::fromUtf8("Intensität"))};
}

} // namespace

TEST(ScaleStreamTest, TheRecordForAllImagesHoldsForEveryImage)
{
    TestSupport::TempDir dir;
    const Scales odd{RTE::S_Scale(TestSupport::DoubleFromBits(0x7ff0000000000abcull), -0.0, "", ""),
                     RTE::S_Scale(1e-300, std::numeric_limits<double>::max(), "a\nb", "\"<&>\""),
                     RTE::S_Scale(-std::numeric_limits<double>::infinity(), 4.9e-324, "u", "d")};
    {
        C_ScaleWriter writer;
        writer.SetDestination(QString::fromStdString(dir / "Scales0_"));
        writer.WriteScalesForAllImages(odd.x, odd.y, odd.intensity);
        // On disk before Close.
        C_ScaleReader reader;
        reader.Open(QString::fromStdString(dir / "Scales0_"));
        EXPECT_EQ(reader.GetRecordCount(), 1u);
    }
    C_ScaleReader reader;
    reader.Open(QString::fromStdString(dir / "Scales0_"));
    for (std::uint32_t image : {0u, 1u, 99999u, 0xFFFFFFFFu})
        ExpectScales(reader, image, odd);
}

TEST(ScaleStreamTest, TheLastRecordThatHoldsAnImageDecides)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString destination = QString::fromStdString(dir / "Scales0_");
    {
        C_ScaleWriter writer(destination);
        writer.SetRecordsPerBatch(10);
        writer.AddScalesForImages(10, 19, Numbered(1).x, Numbered(1).y, Numbered(1).intensity);
        writer.AddScalesForImages(15, 15, Numbered(2).x, Numbered(2).y, Numbered(2).intensity);
        writer.AddScalesForImages(18, C_ScaleWriter::NoEnd, Numbered(3).x, Numbered(3).y, Numbered(3).intensity);
        EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Scales0_.scales")); // still in the batch
        EXPECT_THROW(writer.AddScalesForImages(5, 4, {}, {}, {}), RTE::VerificationFailed);
        writer.Close();
        EXPECT_THROW(writer.WriteScalesForAllImages({}, {}, {}), RTE::VerificationFailed);
    }
    C_ScaleReader reader;
    reader.Open(destination);
    EXPECT_EQ(reader.GetRecordCount(), 3u);
    ExpectScales(reader, 9, Scales{}); // no record: the identity
    ExpectScales(reader, 10, Numbered(1));
    ExpectScales(reader, 15, Numbered(2));
    ExpectScales(reader, 17, Numbered(1));
    ExpectScales(reader, 18, Numbered(3));
    ExpectScales(reader, 1000000, Numbered(3));
}

TEST(ScaleStreamTest, WithoutDestinationOrFileNothingIsWrittenOrRead)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    C_ScaleWriter writer;
    EXPECT_THROW(writer.WriteScalesForAllImages({}, {}, {}), RTE::VerificationFailed);
    writer.SetDestination(QString::fromStdString(dir / "S_"));
    writer.WriteScalesForAllImages({}, {}, {});
    EXPECT_THROW(writer.SetDestination(QString::fromStdString(dir / "T_")), RTE::VerificationFailed);

    C_ScaleReader reader;
    RTE::S_Scale x, y, i;
    EXPECT_THROW(reader.ReadScales(0, x, y, i), RTE::VerificationFailed);
    EXPECT_THROW(reader.Open(QString::fromStdString(dir / "Missing_")), RTE::Exception);
}

TEST(ScaleStreamTest, DamagedFilesRaiseOrLoseOnlyTheirBrokenTail)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString destination = QString::fromStdString(dir / "Scales0_");
    const std::string path = dir / "Scales0_.scales";
    std::vector<std::size_t> ends;
    {
        C_ScaleWriter writer(destination);
        for (int n = 1; n <= 3; ++n) {
            writer.AddScalesForImages(n, n, Numbered(n).x, Numbered(n).y, Numbered(n).intensity);
            ends.push_back(ReadFile(path).size());
        }
    }
    const std::string original = ReadFile(path);
    // The reader must give the records of a prefix of the file, or raise.
    const auto check = [&](const std::string& context) -> int {
        C_ScaleReader reader;
        try {
            reader.Open(destination);
        } catch (const RTE::Exception&) {
            return -1;
        }
        const int records = int(reader.GetRecordCount());
        EXPECT_LE(records, 3) << context;
        for (int n = 1; n <= 3; ++n)
            ExpectScales(reader, std::uint32_t(n), n <= records ? Numbered(n) : Scales{}, context);
        return records;
    };

    for (std::size_t cut = 0; cut <= original.size(); ++cut) {
        WriteFile(path, original.substr(0, cut));
        int expected = 0;
        while (expected < 3 && ends[expected] <= cut)
            ++expected;
        EXPECT_EQ(check("cut at " + std::to_string(cut)), expected == 0 ? -1 : expected) << "cut " << cut;
    }
    for (std::size_t at = 0; at < original.size(); ++at) {
        std::string damaged = original;
        damaged[at] ^= 0x04;
        WriteFile(path, damaged);
        check("flip at " + std::to_string(at));
    }
    WriteFile(path, "");
    EXPECT_EQ(MessageOf([&] { C_ScaleReader().Open(destination); }), "Scale file '" + path + "' is empty");
    WriteFile(path, original.substr(0, 32) + std::string(100000, '\0'));
    EXPECT_EQ(MessageOf([&] { C_ScaleReader().Open(destination); }),
              "Scale file '" + path + "' is corrupt (no complete scale record)");
    std::string newer = original;
    newer[8] = 3;
    WriteFile(path, newer);
    EXPECT_EQ(MessageOf([&] { C_ScaleReader().Open(destination); }),
              "Scale file '" + path + "' was written by a newer version (3.0) of the scale file format");
}

TEST(ScaleStreamTest, AFullDiskLeavesAFileThatIsRefusedOrRight)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString destination = QString::fromStdString(dir / "Scales0_");
    for (std::uint64_t budget = 0; budget < 200; budget += 3) {
        bool written = false;
        {
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            RTE::ScopedFileSystemBackend installed(faults);
            faults->FailWritesAfter(budget);
            C_ScaleWriter writer(destination);
            try {
                writer.WriteScalesForAllImages(Numbered(4).x, Numbered(4).y, Numbered(4).intensity);
                written = true;
            } catch (const RTE::FileWriteError&) {
                EXPECT_THROW(writer.Flush(), RTE::FileWriteError);
            }
        }
        C_ScaleReader reader;
        try {
            reader.Open(destination);
        } catch (const RTE::Exception&) {
            EXPECT_FALSE(written) << "budget " << budget;
            continue;
        }
        EXPECT_TRUE(written) << "budget " << budget;
        ExpectScales(reader, 0, Numbered(4));
    }
}

TEST(ScaleStreamTest, PluginAnswersWithKeyAsNameAndNameAsType)
{
    C_ScaleReader::pluginRegister();
    std::unique_ptr<RTE::I_Plugin> plugin =
        RTE::C_PluginFactory::GetInstance().CreateUnique("Core.Set.Recording.ScaleReader", "ScaleReaderV1");
    ASSERT_NE(dynamic_cast<SetApi::I_ScaleReader*>(plugin.get()), nullptr);
    EXPECT_EQ(plugin->GetPluginName(), "Core.Set.Recording.ScaleReader");
    EXPECT_EQ(plugin->GetPluginType(), "ScaleReaderV1");
    C_ScaleWriter writer;
    EXPECT_EQ(writer.GetCorrespondingReaderType().toStdString(), plugin->GetPluginName());
    EXPECT_EQ(writer.GetCorrespondingReaderName().toStdString(), plugin->GetPluginType());
    EXPECT_EQ(writer.GetFormatDescription().toStdString(), plugin->GetPluginDescription());
}
