// Buffers written by ExportBuffer come back bit-exact from ImportBuffer, and GetImportInformation
// describes them from the head alone.

#include "BufferFileTestData.h"

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Parameter/Factory.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <limits>

using namespace BufferApi;
using namespace BufferFileTest;

namespace {

const E_DataType kAllTypes[] = {DATATYPE_BYTE,  DATATYPE_RGB,    DATATYPE_DOUBLE, DATATYPE_FLOAT,
                                DATATYPE_INT32, DATATYPE_UINT32, DATATYPE_WORD};

BufferPtr RoundTrip(const I_Buffer& buffer, const std::string& path, long long packType)
{
    ExportBuffer(&buffer, path, PackOptions(packType));
    BufferPtr back = Import(path);
    EXPECT_TRUE(back);
    return back;
}

// The codec id of plane entry `index` counted from the end of the head.
unsigned CodecOfLastPlane(const std::string& bytes)
{
    const std::size_t headBytes = std::size_t(Load(bytes, kHeadBytesAt, 4));
    return unsigned(std::uint8_t(bytes[headBytes - 4 - 24 + 16]));
}

} // namespace

TEST(BufferFileRoundTripTest, EveryElementTypeAndPackTypeComesBackBitExact)
{
    TestSupport::TempDir dir;
    for (const long long packType : {0, 1, 2, 5}) {
        for (const E_DataType type : kAllTypes) {
            for (const bool smooth : {true, false}) {
                SCOPED_TRACE("pack type " + std::to_string(packType) + ", element type " + std::to_string(type) +
                             (smooth ? ", smooth" : ", random"));
                BufferPtr buffer(CreateBuffer());
                buffer->AddFrame(RichImage(type, 67, 45, 2, unsigned(type), smooth));
                BufferPtr back = RoundTrip(*buffer, dir / "B00001.im7", packType);
                ASSERT_TRUE(back);
                ExpectSameBuffer(*buffer, *back);
                EXPECT_TRUE(back->GetFrame(0)->HasData());
            }
        }
    }
}

TEST(BufferFileRoundTripTest, VectorFramesAnd3CFramesKeepKindGridAndComponents)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    std::unique_ptr<I_Frame> vector(CreateVectorFrame(DATATYPE_FLOAT, 40, 30, 1, 16));
    vector->AddMask();
    CreateTypedScalarInFrame(vector.get(), "Correlation", DATATYPE_DOUBLE);
    FillFrame(*vector, 3, true);
    std::unique_ptr<I_Frame> vector3C(CreateVector3CFrame(DATATYPE_DOUBLE, 20, 10, 3, 8));
    vector3C->SetScale(SCALE_I, Scale(0.001, 0, "m/s", "velocity"));
    FillFrame(*vector3C, 4, false);
    buffer->AddFrame(std::move(vector));
    buffer->AddFrame(std::move(vector3C));

    for (const long long packType : {0, 2}) {
        BufferPtr back = RoundTrip(*buffer, dir / "B00001.vc7", packType);
        ASSERT_TRUE(back);
        ExpectSameBuffer(*buffer, *back);
        EXPECT_TRUE(back->IsVectorBuffer());
        EXPECT_NE(dynamic_cast<const I_FrameVector*>(back->GetFrame(0)), nullptr);
        EXPECT_NE(dynamic_cast<const I_FrameVector3C*>(back->GetFrame(1)), nullptr);
        EXPECT_EQ(GetNamesOfFrameBoundTypedScalars(back->GetFrame(0)), std::vector<std::string>{"Correlation"});
    }
}

TEST(BufferFileRoundTripTest, SeveralFramesOfDifferentSizesAndTheirAttributes)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(RichImage(DATATYPE_WORD, 1, 1, 1, 1));
    buffer->AddFrame(RichImage(DATATYPE_WORD, 300, 7, 3, 2));
    buffer->AddFrame(RichImage(DATATYPE_BYTE, 4097, 3, 1, 3));
    const int ints[] = {-1, 0, std::numeric_limits<int>::max()};
    const unsigned short words[] = {0, 65535};
    const float floats[] = {-0.0f, std::numeric_limits<float>::infinity()};
    const double doubles[] = {TestSupport::DoubleFromBits(0x7FF4000000000123ull), -0.0};
    AttributeStore& global = buffer->GetAttributeStore();
    global.SetString("Comment", "first \"good\" run\n\t;");
    global.SetString("Empty", "");
    global.SetArray("Ints", 3, DATATYPE_INT32, ints);
    global.SetArray("Words", 2, DATATYPE_WORD, words);
    global.SetArray("Floats", 2, DATATYPE_FLOAT, floats);
    global.SetArray("Doubles", 2, DATATYPE_DOUBLE, doubles);
    for (const E_DataType type : {DATATYPE_INT32, DATATYPE_WORD, DATATYPE_FLOAT, DATATYPE_DOUBLE})
        global.SetArray("Empty array " + std::to_string(type), 0, type, nullptr);
    buffer->GetFrame(1)->GetAttributeStore().SetString("Frame text", "second");
    buffer->GetFrame(2)->GetAttributeStore().SetArray("Frame doubles", 1, DATATYPE_DOUBLE, doubles);

    BufferPtr back = RoundTrip(*buffer, dir / "B00002.im7", 1);
    ASSERT_TRUE(back);
    ExpectSameBuffer(*buffer, *back);
    const auto* nan = static_cast<const I_AttributePlane*>(back->GetAttributeStore().Find("Doubles"));
    ASSERT_NE(nan, nullptr);
    EXPECT_EQ(TestSupport::BitsOf(static_cast<const double*>(nan->GetData())[0]), 0x7FF4000000000123ull);
}

TEST(BufferFileRoundTripTest, UnicodeNamesAndPathsAndAnEmptyBuffer)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    std::unique_ptr<I_Frame> frame = RichImage(DATATYPE_WORD, 8, 8, 1, 5);
    frame->SetName("Kamera \xE2\x80\x93 Bild \xC2\xB5");
    CreateTypedScalarInFrame(frame.get(), "Temperatur \xC2\xB0" "C \xF0\x9F\x8C\xA1", DATATYPE_WORD);
    frame->GetAttributeStore().SetString("Bemerkung \xC3\xA4", "\xE6\x97\xA5\xE6\x9C\xAC");
    buffer->AddFrame(std::move(frame));
    BufferPtr back = RoundTrip(*buffer, dir / "Bild \xC3\xA4\xE2\x80\x93.im7", 2);
    ASSERT_TRUE(back);
    ExpectSameBuffer(*buffer, *back);

    BufferPtr empty(CreateBuffer());
    empty->GetAttributeStore().SetString("only", "attributes");
    BufferPtr emptyBack = RoundTrip(*empty, dir / "Empty.im7", 0);
    ASSERT_TRUE(emptyBack);
    ExpectSameBuffer(*empty, *emptyBack);
    unsigned frames = 9, width = 9, height = 9, depth = 9;
    std::unique_ptr<I_Buffer> head(GetImportInformation(dir / "Empty.im7", frames, width, height, depth, false));
    EXPECT_EQ(frames, 0u);
    EXPECT_EQ(width + height + depth, 0u);
}

TEST(BufferFileRoundTripTest, ComponentOrderAndMissingStandardComponentsAreKept)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 5, 4, 1));
    frame->AddMask();
    frame->RemoveComponent(I_FrameImage::COMPONENT_PIXEL);
    frame->AddComponent(I_FrameImage::COMPONENT_PIXEL, DATATYPE_WORD);
    frame->AddComponent("Extra", DATATYPE_DOUBLE);
    FillFrame(*frame, 6, false);
    buffer->AddFrame(std::move(frame));
    std::unique_ptr<I_Frame> bare(CreateVectorFrame(DATATYPE_FLOAT, 3, 3, 1, 4));
    bare->RemoveComponent(I_FrameVector::COMPONENT_V);
    buffer->AddFrame(std::move(bare));

    BufferPtr back = RoundTrip(*buffer, dir / "B00001.im7", 0);
    ASSERT_TRUE(back);
    ExpectSameBuffer(*buffer, *back);
    EXPECT_EQ(back->GetFrame(0)->GetComponentAt(0)->GetName(), I_Frame::COMPONENT_MASK);
    EXPECT_EQ(back->GetFrame(1)->GetComponent(I_FrameVector::COMPONENT_V), nullptr);
}

TEST(BufferFileRoundTripTest, PlanesLieAlignedAndPackedPlanesAreSmallerWhenPackingHelps)
{
    TestSupport::TempDir dir;
    BufferPtr smooth(CreateBuffer());
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 256, 200, 1));
    FillFrame(*frame, 1, true);
    smooth->AddFrame(std::move(frame));

    ExportBuffer(smooth.get(), dir / "raw.im7", PackOptions(0));
    const std::string raw = TestSupport::ReadFile(dir / "raw.im7");
    ASSERT_EQ(raw.size(), Load(raw, kFileBytesAt, 8));
    const std::size_t headBytes = std::size_t(Load(raw, kHeadBytesAt, 4));
    const std::uint64_t planeOffset = Load(raw, headBytes - 4 - 24, 8);
    EXPECT_EQ(planeOffset % 4096, 0u);
    EXPECT_EQ(raw.size(), planeOffset + 256 * 200 * 2);
    EXPECT_EQ(CodecOfLastPlane(raw), 0u);
    EXPECT_EQ(Load(raw, 8, 2), 1u); // major version
    EXPECT_EQ(raw.compare(0, 8, "\x89SBF\r\n\x1a\n"), 0);

    for (const long long packType : {1, 2}) {
        ExportBuffer(smooth.get(), dir / "packed.im7", PackOptions(packType));
        const std::string packed = TestSupport::ReadFile(dir / "packed.im7");
        EXPECT_LT(packed.size(), raw.size());
        EXPECT_EQ(CodecOfLastPlane(packed), packType == 2 ? 1u : 2u);
    }

    // Noise that packing cannot shrink is stored raw whatever the pack type.
    FillFrame(*smooth->GetFrame(0), 2, false);
    ExportBuffer(smooth.get(), dir / "noise.im7", PackOptions(2));
    EXPECT_EQ(CodecOfLastPlane(TestSupport::ReadFile(dir / "noise.im7")), 0u);
    BufferPtr back = Import(dir / "noise.im7");
    ASSERT_TRUE(back);
    ExpectSameBuffer(*smooth, *back);
}

TEST(BufferFileRoundTripTest, ImportInformationReadsTheHeadOnly)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(RichImage(DATATYPE_WORD, 64, 48, 3, 1));
    buffer->AddFrame(RichImage(DATATYPE_FLOAT, 10, 20, 1, 2));
    buffer->GetAttributeStore().SetString("Global", "yes");
    buffer->GetFrame(1)->GetAttributeStore().SetString("Local", "too");
    ExportBuffer(buffer.get(), dir / "B00001.im7", PackOptions(2));

    unsigned frames = 0, width = 0, height = 0, depth = 0;
    std::unique_ptr<I_Buffer> head(GetImportInformation(dir / "B00001.im7", frames, width, height, depth, false));
    ASSERT_TRUE(head);
    EXPECT_EQ(frames, 2u);
    EXPECT_EQ(width, 64u);
    EXPECT_EQ(height, 48u);
    EXPECT_EQ(depth, 3u);
    ExpectSameBuffer(*buffer, *head, false, false);
    for (unsigned f = 0; f < head->GetNumberOfFrames(); ++f) {
        EXPECT_FALSE(head->GetFrame(f)->HasData());
        EXPECT_EQ(head->GetFrame(f)->GetComponentAt(0)->GetPlane(0)->GetData(), nullptr);
        EXPECT_TRUE(head->GetFrame(f)->GetAttributeStore().IsEmpty());
    }
    EXPECT_TRUE(head->GetAttributeStore().IsEmpty());

    std::unique_ptr<I_Buffer> withAttributes(
        GetImportInformation(dir / "B00001.im7", frames, width, height, depth, true));
    ASSERT_TRUE(withAttributes);
    ExpectSameBuffer(*buffer, *withAttributes, false, true);
}

TEST(BufferFileRoundTripTest, ExportReplacesAnExistingFileAndLeavesNothingElse)
{
    TestSupport::TempDir dir;
    BufferPtr first = SmallBuffer(4, 3);
    BufferPtr second = SmallBuffer(9, 9);
    ExportBuffer(first.get(), dir / "B00001.im7", nullptr);
    ExportBuffer(second.get(), dir / "B00001.im7", nullptr);
    BufferPtr back = Import(dir / "B00001.im7");
    ASSERT_TRUE(back);
    ExpectSameBuffer(*second, *back);
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), ".*", false, false), std::vector<std::string>{"B00001.im7"});

    // A temporary file left by a crashed writer does not stand in the way.
    TestSupport::WriteFile(dir / ".~B00001.im7", "left over");
    ExportBuffer(first.get(), dir / "B00001.im7", nullptr);
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), ".*", false, false), std::vector<std::string>{"B00001.im7"});
}

TEST(BufferFileRoundTripTest, OptionsAndArgumentsAreChecked)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    BufferPtr buffer = SmallBuffer();

    // No tree, a tree without "PackType", and values other than 0 and 2 are all fine.
    ExportBuffer(buffer.get(), dir / "a.im7", nullptr);
    ExportBuffer(buffer.get(), dir / "b.im7", RTE::Parameter::CreateTree());
    ExportBuffer(buffer.get(), dir / "c.im7", PackOptions(-7));
    for (const char* name : {"a.im7", "b.im7", "c.im7"}) {
        BufferPtr back = Import(dir / name);
        ASSERT_TRUE(back) << name;
        ExpectSameBuffer(*buffer, *back);
    }

    auto textOption = RTE::Parameter::CreateTree();
    textOption->Add(RTE::Parameter::CreateText(QStringLiteral("PackType"), QStringLiteral("2")));
    EXPECT_THROW(ExportBuffer(buffer.get(), dir / "d.im7", textOption), RTE::VerificationFailed);
    EXPECT_THROW(ExportBuffer(nullptr, dir / "d.im7", nullptr), RTE::VerificationFailed);
    EXPECT_THROW(ExportBuffer(buffer.get(), "", nullptr), RTE::VerificationFailed);

    unsigned frames, width, height, depth;
    std::unique_ptr<I_Buffer> head(GetImportInformation(dir / "a.im7", frames, width, height, depth, true));
    EXPECT_THROW(ExportBuffer(head.get(), dir / "d.im7", nullptr), RTE::VerificationFailed);
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "d.im7"));

    RTE::FileSystem::CreateDirectory(dir / "folder.im7");
    const std::string message = TestSupport::MessageOf([&] { ExportBuffer(buffer.get(), dir / "folder.im7", nullptr); });
    EXPECT_NE(message.find(dir / "folder.im7"), std::string::npos) << message;
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(dir / "folder.im7"));
}

TEST(BufferFileRoundTripTest, MissingFiles)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    EXPECT_EQ(ImportBuffer(dir / "none.im7", nullptr), nullptr);
    unsigned frames, width, height, depth;
    const std::string message = TestSupport::MessageOf(
        [&] { delete GetImportInformation(dir / "none.im7", frames, width, height, depth, false); });
    EXPECT_EQ(message, "Buffer file '" + (dir / "none.im7") + "' does not exist");
    EXPECT_THROW(ImportBuffer(dir.path(), nullptr), RTE::Exception); // a folder is no buffer file
}

TEST(BufferFileRoundTripTest, ComponentsAddedToAnImportedFrameStartZeroFilled)
{
    TestSupport::TempDir dir;
    BufferPtr buffer(CreateBuffer());
    buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_WORD, 64, 64, 1)));
    const std::string path = dir / "B00001.im7";
    ExportBuffer(buffer.get(), path, PackOptions(0));
    const BufferPtr back = Import(path);
    ASSERT_TRUE(back);
    I_Component* mask = back->GetFrame(0)->AddComponent("Extra", DATATYPE_DOUBLE);
    const auto* values = static_cast<const double*>(mask->GetPlane(0)->GetData());
    for (unsigned i = 0; i < 64 * 64; ++i)
        ASSERT_EQ(values[i], 0.0) << i;
}
