// Damaged attribute streams: every way a file can be cut, flipped, replaced or forged ends in a
// clear RTE::Exception or in records that are not counted, never in a crash, a wrong record or an
// allocation of what a file merely claims.

#include "RecordingSink.h"

#include "records/ByteCoding.h"
#include "records/RecordStream.h"

#include <StreamIO/AttributeReader.h>
#include <StreamIO/AttributeWriter.h>

#include <common/Crc32.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <fstream>
#include <random>

using SetApi::AttributeWriter;
using SetApi::Private::C_AttributeReader;
using SetApi::Private::Records::ByteWriter;
using StreamTest::Attribute;
using StreamTest::Record;
using StreamTest::RecordingSink;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

namespace {

constexpr std::size_t kPreamble = 32;
constexpr std::size_t kHead = 8; // the attribute stream's empty head block

struct Sample {
    QString destination;
    std::string dataPath;
    std::string indexPath;
    std::vector<Record> records;
    std::vector<std::size_t> recordEnds; // data file size after each image
    std::string data;
    std::string index;
};

Sample WriteSample(const TestSupport::TempDir& dir, std::uint32_t images = 3)
{
    Sample s;
    s.destination = QString::fromStdString(dir / "Attributes0_");
    s.dataPath = dir / "Attributes0_.attr";
    s.indexPath = dir / "Attributes0_.index.attr";
    AttributeWriter writer;
    writer.Open(s.destination);
    for (std::uint32_t i = 0; i < images; ++i) {
        s.records.push_back({Attribute::MakeText("Index", QString::number(i)),
                             Attribute::MakeDoubles("Values", std::vector<double>(i + 1, 0.5 * i))});
        StreamTest::Replay(s.records.back(), writer);
        writer.NextImage();
        s.recordEnds.push_back(ReadFile(s.dataPath).size());
    }
    writer.Close();
    s.data = ReadFile(s.dataPath);
    s.index = ReadFile(s.indexPath);
    return s;
}

// Opens the stream as it now lies on disk; each image it counts must read back exactly or raise.
// Returns the count, or -1 when opening raised.
int OpenAndCheck(const Sample& s, const std::string& context)
{
    C_AttributeReader reader;
    try {
        reader.Open(s.destination);
    } catch (const RTE::Exception&) {
        return -1;
    }
    EXPECT_LE(reader.GetImageCount(), s.records.size()) << context;
    for (std::uint32_t i = 0; i < reader.GetImageCount() && i < s.records.size(); ++i) {
        RecordingSink sink;
        try {
            reader.ReadAttributes(i, sink);
        } catch (const RTE::Exception&) {
            EXPECT_TRUE(sink.attributes.empty()) << context << ": a failing record fed the sink";
            continue;
        }
        EXPECT_EQ(sink.attributes, s.records[i]) << context << ", image " << i;
    }
    return int(reader.GetImageCount());
}

std::string U32(std::uint32_t value)
{
    std::vector<std::uint8_t> bytes;
    ByteWriter(bytes).U32(value);
    return std::string(bytes.begin(), bytes.end());
}

// A stream of one image whose record holds `payload`, with correct checksums everywhere, and an
// index entry that claims `claimedBytes` (0: the true size).
void Forge(const Sample& s, const std::string& payload, std::uint32_t claimedBytes = 0)
{
    using BufferApi::Private::Crc32;
    std::string record = U32(std::uint32_t(payload.size() + 12)) + U32(0) + payload;
    const std::uint32_t crc = Crc32(reinterpret_cast<const std::uint8_t*>(record.data()), record.size());
    record += U32(crc);
    std::vector<std::uint8_t> entry;
    ByteWriter out(entry);
    out.U64(kPreamble + kHead);
    out.U32(claimedBytes ? claimedBytes : std::uint32_t(record.size()));
    out.U32(0);
    out.U32(crc);
    out.U32(Crc32(entry.data(), entry.size()));
    WriteFile(s.dataPath, s.data.substr(0, kPreamble + kHead) + record);
    WriteFile(s.indexPath, s.index.substr(0, kPreamble) + std::string(entry.begin(), entry.end()));
}

} // namespace

TEST(AttributeStreamDamageTest, ACutDataFileCountsTheRecordsBeforeTheCut)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    for (std::size_t cut = 0; cut <= s.data.size(); ++cut) {
        WriteFile(s.dataPath, s.data.substr(0, cut));
        const int count = OpenAndCheck(s, "data cut at " + std::to_string(cut));
        if (cut < kPreamble + kHead) {
            EXPECT_EQ(count, -1) << "cut " << cut;
            continue;
        }
        int expected = 0;
        while (expected < int(s.recordEnds.size()) && s.recordEnds[expected] <= cut)
            ++expected;
        EXPECT_EQ(count, expected) << "cut " << cut;
    }
}

TEST(AttributeStreamDamageTest, ACutIndexCountsItsCompleteEntries)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    for (std::size_t cut = 0; cut <= s.index.size(); ++cut) {
        WriteFile(s.indexPath, s.index.substr(0, cut));
        const int count = OpenAndCheck(s, "index cut at " + std::to_string(cut));
        EXPECT_EQ(count, cut < kPreamble ? -1 : int((cut - kPreamble) / 24)) << "cut " << cut;
    }
}

TEST(AttributeStreamDamageTest, BytesAppendedBehindTheEndAreNotCounted)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    // What a file system may leave after a power loss: sizes grown, blocks of zeros.
    WriteFile(s.indexPath, s.index + std::string(24 * 1000 + 5, '\0'));
    WriteFile(s.dataPath, s.data + std::string(5000, '\0'));
    EXPECT_EQ(OpenAndCheck(s, "zeros"), 3);
    // An index entry without its record: the data of the last batch never arrived, or arrived as
    // zeros in a file of the right size.
    WriteFile(s.dataPath, s.data.substr(0, s.recordEnds[1]));
    WriteFile(s.indexPath, s.index);
    EXPECT_EQ(OpenAndCheck(s, "entry without record"), 2);
    WriteFile(s.dataPath, s.data.substr(0, s.recordEnds[1]) + std::string(s.data.size() - s.recordEnds[1], '\0'));
    EXPECT_EQ(OpenAndCheck(s, "entry with a zeroed record"), 2);
}

TEST(AttributeStreamDamageTest, EveryFlippedByteIsCaughtOrHarmless)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    for (const bool inIndex : {false, true}) {
        const std::string& original = inIndex ? s.index : s.data;
        const std::string& path = inIndex ? s.indexPath : s.dataPath;
        for (std::size_t at = 0; at < original.size(); ++at) {
            std::string damaged = original;
            damaged[at] = char(damaged[at] ^ 0x10);
            WriteFile(path, damaged);
            OpenAndCheck(s, (inIndex ? "index" : "data") + std::string(" byte ") + std::to_string(at));
        }
        WriteFile(path, original);
    }
}

TEST(AttributeStreamDamageTest, ADamagedRecordInTheMiddleFailsAloneWithAClearText)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    std::string damaged = s.data;
    damaged[s.recordEnds[0] + 14] ^= 0x01; // inside the record of image 1
    WriteFile(s.dataPath, damaged);

    C_AttributeReader reader;
    reader.Open(s.destination);
    ASSERT_EQ(reader.GetImageCount(), 3u);
    RecordingSink sink;
    EXPECT_EQ(MessageOf([&] { reader.ReadAttributes(1, sink); }),
              "Attribute stream '" + s.dataPath + "' is corrupt (record of image 1 fails its checksum)");
    EXPECT_NO_THROW(reader.ReadAttributes(0, sink));
    EXPECT_NO_THROW(reader.ReadAttributes(2, sink));
}

TEST(AttributeStreamDamageTest, EmptyJunkAndForeignFilesAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);

    WriteFile(s.dataPath, "");
    EXPECT_EQ(MessageOf([&] { C_AttributeReader().Open(s.destination); }),
              "Attribute stream '" + s.dataPath + "' is empty");
    WriteFile(s.dataPath, std::string(4096, '\0'));
    EXPECT_THROW(C_AttributeReader().Open(s.destination), RTE::Exception);
    std::mt19937 random(3);
    std::string junk(10000, ' ');
    for (char& c : junk)
        c = char(random());
    WriteFile(s.dataPath, junk);
    EXPECT_EQ(MessageOf([&] { C_AttributeReader().Open(s.destination); }),
              "Attribute stream '" + s.dataPath + "' is not a file of the attribute stream format");
    // Index and data swapped: each has the other's magic.
    WriteFile(s.dataPath, s.index);
    EXPECT_THROW(C_AttributeReader().Open(s.destination), RTE::Exception);

    // The index of another stream beside this data file.
    WriteFile(s.dataPath, s.data);
    TestSupport::TempDir other;
    const Sample foreign = WriteSample(other);
    WriteFile(s.indexPath, foreign.index);
    EXPECT_EQ(MessageOf([&] { C_AttributeReader().Open(s.destination); }),
              "Attribute stream '" + s.indexPath + "' belongs to another stream than '" + s.dataPath + "'");
    WriteFile(s.indexPath, s.index);
    EXPECT_EQ(OpenAndCheck(s, "restored"), 3);
}

TEST(AttributeStreamDamageTest, OtherMajorVersionsAreRefusedByName)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir);
    std::string newer = s.data;
    newer[8] = 2;
    newer[10] = 7;
    WriteFile(s.dataPath, newer);
    EXPECT_EQ(MessageOf([&] { C_AttributeReader().Open(s.destination); }),
              "Attribute stream '" + s.dataPath +
                  "' was written by a newer version (2.7) of the attribute stream format");
    std::string older = s.data;
    older[8] = 0;
    WriteFile(s.dataPath, older);
    EXPECT_THROW(C_AttributeReader().Open(s.destination), RTE::Exception);
}

TEST(AttributeStreamDamageTest, ForgedLengthsWithGoodChecksumsAllocateNothing)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Sample s = WriteSample(dir, 1);
    const auto readOnlyImage = [&] {
        C_AttributeReader reader;
        reader.Open(s.destination);
        RecordingSink sink;
        reader.ReadAttributes(0, sink);
    };
    const std::string kindText(1, '\0');
    const std::string name = U32(1) + "N";

    Forge(s, U32(0)); // sound: one image without attributes
    EXPECT_NO_THROW(readOnlyImage());
    // 4 billion attributes in a few bytes.
    Forge(s, U32(0xFFFFFFFF) + std::string(20, 'x'));
    EXPECT_THROW(readOnlyImage(), RTE::Exception);
    // A name and a text of 4 GiB.
    Forge(s, U32(1) + kindText + U32(0xFFFFFFF0) + "N");
    EXPECT_THROW(readOnlyImage(), RTE::Exception);
    Forge(s, U32(1) + kindText + name + U32(0xFFFFFFF0));
    EXPECT_THROW(readOnlyImage(), RTE::Exception);
    // An array of 4 billion doubles.
    Forge(s, U32(1) + std::string(1, '\3') + name + U32(0xFFFFFFFF) + std::string(16, '\0'));
    EXPECT_THROW(readOnlyImage(), RTE::Exception);
    // An unknown kind.
    Forge(s, U32(1) + std::string(1, '\x42') + name + U32(0));
    EXPECT_THROW(readOnlyImage(), RTE::Exception);
    // An index entry that claims a record of 4 GiB: the entry is refused, the image not counted.
    Forge(s, U32(0), 0xFFFFFFF0);
    C_AttributeReader reader;
    reader.Open(s.destination);
    EXPECT_EQ(reader.GetImageCount(), 0u);
}
