// The stream set: a recording seen as a set through the factory, its parameters on disk, its
// source mapping, and the operations it refuses.

#include "StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

using namespace StreamSetTesting;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using SetApi::Private::CastToStreamSet;
using SetApi::Private::StreamSet;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

// A healthy recording of two small cameras.
void BuildRecording(const std::string& name, unsigned images = 4, int setType = 0x1000)
{
    StreamSetBuilder builder(name);
    builder.AddCamera(8, 6, images);
    builder.AddCamera(8, 6, images);
    builder.AddTraces(1, images, 2);
    builder.Finish(setType);
}

std::unique_ptr<StreamSet> OpenSet(const std::string& name) { return std::unique_ptr<StreamSet>(StreamSet::Open(name)); }

} // namespace

TEST(StreamSet, OpensThroughTheFactoryAndReadsLikeAnyOtherSet)
{
    TempDir dir;
    const std::string name = dir / "Run_Pressure=3.5";
    // The type identifier is that of a recording, whatever the set file's type says.
    BuildRecording(name, 4, 0x100);
    LogCapture log;
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name + ".set");
    ASSERT_TRUE(set->IsOpen());
    const std::shared_ptr<StreamSet> streamSet = CastToStreamSet(set);
    ASSERT_NE(streamSet, nullptr);
    EXPECT_TRUE(log.contains("Set", "open " + name));

    EXPECT_EQ(set->GetName(), name);
    EXPECT_EQ(set->GetTitle(), QStringLiteral("Run_Pressure=3.5"));
    EXPECT_EQ(set->GetTypeIdentifier(), QStringLiteral("SET_TYPE_ID_RECORDING"));
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_IMAGE);
    EXPECT_FALSE(set->IsVirtualDataSet());
    EXPECT_FALSE(streamSet->IsCorrupt());
    EXPECT_FALSE(streamSet->HasBeenRepaired());
    unsigned count = 0, first = 9, last = 0;
    set->GetInfo(count, first, last);
    EXPECT_EQ(count, 4u);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(last, 3u);
    EXPECT_EQ(set->GetSize(), 4u);

    const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(2);
    ASSERT_EQ(buffer->GetNumberOfFrames(), 2u);
    const auto* pixels = static_cast<const std::uint16_t*>(
        static_cast<BufferApi::I_FrameImage*>(buffer->GetFrame(1))->GetPixelPlane(0)->GetData());
    EXPECT_EQ(pixels[8 * 5 + 7], PixelValue(1, 2, 0, 7, 5));
    BufferApi::C_BufferAttributes attributes(buffer.get());
    EXPECT_EQ(attributes.GetString("_Date"), "---");
    EXPECT_EQ(attributes.GetString("_Time"), "---");
    EXPECT_EQ(attributes.GetString("Pressure"), "3.5");

    EXPECT_EQ(set->GetAttributes(2).global.GetAttributeValue("DevDataSource").ToString(), "1");
    EXPECT_EQ(set->GetBufferStructureInformation(3).frameCount, 2u);
    EXPECT_EQ(MessageOf([&] { set->LoadBuffer(4); }), "Invalid image index");
    EXPECT_TRUE(set->HasFullDataTraces());
    EXPECT_EQ(set->LoadFullDataTraces()->GetNumberOfFrames(), 1u);
    EXPECT_EQ(streamSet->GetBufferTitle(3), QString());
}

TEST(StreamSet, CastToStreamSetIsEmptyForOtherSets)
{
    TempDir dir;
    const std::shared_ptr<I_Set> plain(SetApi::C_Set::Create(dir / "Plain", I_Set::SET_TYPE_IMAGE, true));
    EXPECT_EQ(CastToStreamSet(plain), nullptr);
    EXPECT_EQ(CastToStreamSet(nullptr), nullptr);
    EXPECT_EQ(CastToStreamSet(C_SetFactory::Instance().Open(dir / "Missing")), nullptr);
}

TEST(StreamSet, ARecordingWithoutImagesHasAnEmptyRange)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    const QString camera = builder.AddCamera(8, 6, 3);
    builder.Finish();
    builder.RemoveStream(camera);
    const auto set = OpenSet(dir / "Run");
    unsigned count = 7, first = 7, last = 7;
    set->GetInfo(count, first, last);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(last, 0u);
    EXPECT_EQ(set->GetCorruptionStates().imageCounts, std::vector<std::uint32_t>{0});
}

TEST(StreamSet, SourceMappingIsOneBasedAndTheSourceSetDefaultsToTheParentFolder)
{
    TempDir dir;
    BuildRecording(dir / "Run");
    {
        const auto set = OpenSet(dir / "Run");
        set->SetSourceMapping(10, 2);
        EXPECT_EQ(set->GetSourceIndex(1), 10u);
        EXPECT_EQ(set->GetSourceIndex(3), 14u);
        EXPECT_EQ(set->GetSourceSet(), dir.path());
        set->SetSourceName(dir / "Run.set");
        EXPECT_EQ(set->GetSourceSet(), dir.path());
        set->SetSourceName("D:/Campaign/Source");
        EXPECT_EQ(set->GetSourceSet(), "D:/Campaign/Source");
    }
    const auto reopened = OpenSet(dir / "Run");
    int start = 0, increment = 0;
    EXPECT_TRUE(reopened->GetParameter("SetStart", start));
    EXPECT_TRUE(reopened->GetParameter("SetInc", increment));
    EXPECT_EQ(start, 10);
    EXPECT_EQ(increment, 2);
    EXPECT_EQ(reopened->GetSourceSet(), "D:/Campaign/Source");
}

TEST(StreamSet, EachParameterChangeIsWrittenAtOnceAndNothingAfterwards)
{
    TempDir dir;
    BuildRecording(dir / "Run");
    const std::string file = dir / "Run.set";
    auto set = OpenSet(dir / "Run");

    EXPECT_TRUE(set->SetParameter("SetComments", std::string("first")));
    EXPECT_NE(ReadFile(file).find("SetComments = \"first\";"), std::string::npos);
    WriteFile(file, "overwritten\n");
    EXPECT_TRUE(set->SetParameter("SetStart", 5));
    EXPECT_NE(ReadFile(file).find("SetStart = 5;"), std::string::npos);
    EXPECT_NE(ReadFile(file).find("SetIdentifier = \"StreamSet\";"), std::string::npos);

    // Unknown names and values of the wrong kind change nothing and write nothing.
    WriteFile(file, "overwritten\n");
    EXPECT_FALSE(set->SetParameter("SetNoSuchKey", 1));
    EXPECT_FALSE(set->SetParameter("SetComments", 3));
    EXPECT_TRUE(set->WriteSetFile());
    set.reset();
    EXPECT_EQ(ReadFile(file), "overwritten\n");
}

// A parameter change that meets a full disk leaves the set file as it was: the recording opens
// again as the recording it is, not as a set of type 0 from an empty file.
TEST(StreamSet, AParameterChangeOnAFullDiskKeepsTheSetFileWhole)
{
    TempDir dir;
    BuildRecording(dir / "Run", 4, 0x1000);
    const std::string file = dir / "Run.set";
    const std::string before = ReadFile(file);
    {
        auto set = OpenSet(dir / "Run");
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        faults->FailWritesAfter(0);
        RTE::ScopedFileSystemBackend installed(faults);
        LogCapture log;
        EXPECT_TRUE(set->SetParameter("SetComments", std::string("after the disk filled up")));
        EXPECT_TRUE(log.contains("Exception", "No space left on device"));
    }
    EXPECT_EQ(ReadFile(file), before);
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), "\\..*", false, false), std::vector<std::string>{});
    const std::shared_ptr<I_Set> reopened = C_SetFactory::Instance().Open(dir / "Run");
    ASSERT_NE(CastToStreamSet(reopened), nullptr);
    EXPECT_EQ(int(reopened->GetSetType()), 0x1000);
}

TEST(StreamSet, ASetFileWithoutTypeGivesTypeZero)
{
    TempDir dir;
    BuildRecording(dir / "Run");
    WriteFile(dir / "Run.set", "#GROUP Sets\nSetIdentifier = \"StreamSet\";\n");
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(dir / "Run");
    ASSERT_NE(CastToStreamSet(set), nullptr);
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_UNKNOWN);
    EXPECT_EQ(set->GetTypeIdentifier(), QStringLiteral("SET_TYPE_ID_RECORDING"));
}

TEST(StreamSet, RefusesToChangeItsImagesWithTheOperationsName)
{
    TempDir dir;
    BuildRecording(dir / "Run");
    const auto set = OpenSet(dir / "Run");
    const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(0);
    LogCapture log;
    EXPECT_EQ(MessageOf([&] { set->StoreBuffer(buffer.get(), 0); }), "StoreBuffer");
    EXPECT_TRUE(log.contains("Set", "StoreBuffer"));
    EXPECT_EQ(MessageOf([&] { set->AppendBuffer(buffer.get()); }), "AppendBuffer");
    EXPECT_EQ(MessageOf([&] { set->RemoveBuffer(0); }), "RemoveBuffer");
    EXPECT_EQ(MessageOf([&] { set->RemoveBufferRange(0, 1); }), "RemoveBufferRange");
    EXPECT_EQ(MessageOf([&] { set->SetPackTypeWord(1); }), "SetPackTypeWord");
    EXPECT_EQ(MessageOf([&] { set->SetPackTypeFloat(1); }), "SetPackTypeFloat");
    EXPECT_EQ(set->GetSize(), 4u);
    EXPECT_EQ(set->LoadBuffer(3)->GetNumberOfFrames(), 2u);
}

TEST(StreamSet, TheFactoryNeverCreatesOneAndGivesANullSetForAnUnusableRecording)
{
    TempDir dir;
    C_SetFactory& factory = C_SetFactory::Instance();
    EXPECT_FALSE(factory.Create(dir / "New", "StreamSet", I_Set::SET_TYPE_RECORDING, true)->IsOpen());
    EXPECT_EQ(MessageOf([&] { StreamSet::Open(dir / "New"); }).rfind("Could not open file: ", 0), 0u);

    BuildRecording(dir / "Run");
    WriteFile(dir / "Run/ReaderConfiguration.xml", "<ReaderCfg/>");
    LogCapture log;
    const std::shared_ptr<I_Set> set = factory.Open(dir / "Run");
    EXPECT_FALSE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "Run");
    EXPECT_TRUE(log.contains("Set", "Could not open set '" + dir / "Run" + "' --> 'Reader count is zero.'"));
}

TEST(StreamSet, ADamagedRecordingOpensAndTellsWhatIsWrong)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 100);
    builder.AddCamera(8, 4, 98);
    builder.Finish();
    const std::shared_ptr<StreamSet> set = CastToStreamSet(C_SetFactory::Instance().Open(dir / "Run"));
    ASSERT_NE(set, nullptr);
    EXPECT_TRUE(set->IsCorrupt());
    EXPECT_EQ(set->GetSize(), 98u);
    EXPECT_EQ(set->GetCorruptionStates().maxImageCount, 100u);
    EXPECT_EQ(set->GetDetailsOfRepair(), QString());
}
