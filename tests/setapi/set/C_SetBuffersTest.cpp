// The plain set's buffer files: storing under the numbering rules, loading with gap detection,
// head information without pixels, data traces, resizing, and failures that leave the map alone.

#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/I_SetObserver.h>

#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/Tree.h>

#include "support/TestSupport.h"

#include <cstring>
#include <memory>
#include <vector>

using namespace SetApi;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

std::unique_ptr<C_Set> MakeSet(const std::string& name)
{
    return std::unique_ptr<C_Set>(C_Set::Create(name, I_Set::SET_TYPE_IMAGE, true));
}

// A buffer of one word frame whose pixels are `seed + x + y * width`.
std::unique_ptr<BufferApi::I_Buffer> WordBuffer(unsigned seed, unsigned width = 64, unsigned height = 32)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_FrameImage> frame(
        BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, width, height, 1));
    auto* pixels = static_cast<unsigned short*>(frame->GetPixelPlane(0)->GetData());
    for (unsigned i = 0; i < width * height; ++i)
        pixels[i] = static_cast<unsigned short>(seed + i);
    buffer->AddFrame(std::move(frame));
    return buffer;
}

unsigned short FirstPixel(const BufferApi::I_Buffer& buffer)
{
    const auto* frame = dynamic_cast<const BufferApi::I_FrameImage*>(buffer.GetFrame(0));
    return *static_cast<const unsigned short*>(frame->GetPixelPlane(0)->GetData());
}

struct RecordingObserver : I_SetObserver {
    std::vector<unsigned> stored;
    void OnBufferStored(unsigned index) override { stored.push_back(index); }
};

} // namespace

TEST(C_SetBuffers, AppendNumbersFromOneAndLoadsBackBitExact)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    RecordingObserver observer;
    set->AttachObserver(&observer);
    EXPECT_EQ(set->GetSize(), 0u);
    set->AppendBuffer(WordBuffer(7).get());
    set->AppendBuffer(WordBuffer(9).get());
    set->RemoveObserver(&observer);

    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/B00001.im7"));
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/B00002.im7"));
    EXPECT_EQ(observer.stored, (std::vector<unsigned>{0, 1}));

    // A fresh set object lists the folder and finds both.
    std::unique_ptr<C_Set> reopened(C_Set::Open(dir / "Run"));
    ASSERT_EQ(reopened->GetSize(), 2u);
    const auto loaded = reopened->LoadBuffer(1);
    const auto expected = WordBuffer(9);
    const auto* a = dynamic_cast<const BufferApi::I_FrameImage*>(loaded->GetFrame(0));
    const auto* b = dynamic_cast<const BufferApi::I_FrameImage*>(expected->GetFrame(0));
    ASSERT_NE(a, nullptr);
    ASSERT_EQ(a->GetPixelPlane(0)->GetByteSize(), b->GetPixelPlane(0)->GetByteSize());
    EXPECT_EQ(std::memcmp(a->GetPixelPlane(0)->GetData(), b->GetPixelPlane(0)->GetData(),
                          b->GetPixelPlane(0)->GetByteSize()),
              0);
    EXPECT_EQ(reopened->GetLastError(), 0);
}

TEST(C_SetBuffers, StoredAgainKeepsTheOldFileNameAndVectorsGetTheirExtension)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    set->StoreBufferWithParametersThrows(WordBuffer(1).get(), 0, "Pressure=3.5", "");
    set->StoreBufferWithParametersThrows(WordBuffer(2).get(), 0, "Other", "dat");
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/B00001_Pressure=3.5.im7"));
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Run/B00001_Other.dat"));
    EXPECT_EQ(FirstPixel(*set->LoadBuffer(0)), 2);
    EXPECT_EQ(set->GetBufferTitle(0), QStringLiteral("Pressure=3"));

    std::unique_ptr<BufferApi::I_Buffer> vectors(BufferApi::CreateBuffer());
    vectors->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
        BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 8, 4, 1, 16)));
    set->AppendBuffer(vectors.get());
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/B00002.vc7"));
    EXPECT_EQ(set->GetStorageName(vectors.get(), 4, "", ".xyz"), "B00005.xyz");
}

TEST(C_SetBuffers, WordAndOtherDataUseTheirOwnPackTypes)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    // Zero pixels pack to almost nothing; stored raw they take their full size.
    std::unique_ptr<BufferApi::I_Buffer> zeros(BufferApi::CreateBuffer());
    zeros->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
        BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 512, 512, 1)));
    set->StoreBuffer(zeros.get(), 0); // word data: packed by default
    EXPECT_TRUE(set->SetPackTypeWord(0));
    set->StoreBuffer(zeros.get(), 1);
    EXPECT_LT(ReadFile(dir / "Run/B00001.im7").size(), 512u * 512u);
    EXPECT_GE(ReadFile(dir / "Run/B00002.im7").size(), 2u * 512u * 512u);

    std::unique_ptr<BufferApi::I_Buffer> floats(BufferApi::CreateBuffer());
    floats->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
        BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 512, 512, 1)));
    set->StoreBuffer(floats.get(), 2); // other data: raw by default
    EXPECT_FALSE(set->SetPackTypeFloat(2)); // answers false, yet takes effect
    set->StoreBuffer(floats.get(), 3);
    EXPECT_GE(ReadFile(dir / "Run/B00003.im7").size(), 4u * 512u * 512u);
    EXPECT_LT(ReadFile(dir / "Run/B00004.im7").size(), 512u * 512u);
}

TEST(C_SetBuffers, RefusedStoresLeaveMapFilesAndObserversAlone)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    RecordingObserver observer;
    set->AttachObserver(&observer);
    EXPECT_EQ(MessageOf([&] { set->StoreBuffer(nullptr, 0); }), "Source buffer is empty.");
    std::unique_ptr<BufferApi::I_Buffer> empty(BufferApi::CreateBuffer());
    EXPECT_EQ(MessageOf([&] { set->StoreBuffer(empty.get(), 0); }), "Source buffer has no frames.");

    // The folder is gone: the export fails, is logged with the index, and passed on.
    RTE::FileSystem::RemoveDirectory(dir / "Run");
    {
        LogCapture log;
        EXPECT_THROW(set->StoreBuffer(WordBuffer(1).get(), 4), std::exception);
        EXPECT_TRUE(log.contains("Set", "StoreBuffer 4: "));
    }
    EXPECT_EQ(set->GetSize(), 0u);
    EXPECT_TRUE(observer.stored.empty());
    set->RemoveObserver(&observer);
}

TEST(C_SetBuffers, PathsUpTo259CharactersAreStoredLongerOnesRefused)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    const std::string folder = set->GetName() + "/";
    const std::size_t fixed = folder.size() + std::string("B00001_.im7").size();
    ASSERT_LT(fixed, 250u) << "temporary folder too deep for this test";
    const std::string fits(259 - fixed, 'p');
    set->StoreBufferWithParametersThrows(WordBuffer(1).get(), 0, fits, "");
    EXPECT_EQ(set->GetSize(), 1u);

    const std::string tooLong(260 - fixed, 'p');
    EXPECT_EQ(MessageOf([&] { set->StoreBufferWithParametersThrows(WordBuffer(1).get(), 1, tooLong, ""); }),
              "Can't store buffer: Total path and file name length must not exceed 260 characters!");
    EXPECT_EQ(set->GetSize(), 1u);
    EXPECT_EQ(RTE::FileSystem::GetFiles(set->GetName(), ".*", false, false).size(), 1u);
}

TEST(C_SetBuffers, LoadTellsGapsFromTheEndAndLogsBoth)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    set->StoreBuffer(WordBuffer(1).get(), 0);
    set->StoreBuffer(WordBuffer(3).get(), 2);
    LogCapture log;
    EXPECT_EQ(MessageOf([&] { set->LoadBuffer(1); }),
              "Gap (=missing buffer) in the numbering of the set's buffer-files.");
    EXPECT_EQ(MessageOf([&] { set->LoadBuffer(3); }), "Unexpected error: Buffer is NULL.");
    EXPECT_TRUE(log.contains("Set", "LoadBuffer 1: Gap"));
    EXPECT_TRUE(log.contains("Set", "LoadBuffer 3: Unexpected error"));
    EXPECT_EQ(FirstPixel(*set->LoadBuffer(2)), 3);
}

TEST(C_SetBuffers, CorruptBufferFileFailsTheLoadWithItsName)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    set->AppendBuffer(WordBuffer(1).get());
    const std::string file = dir / "Run/B00001.im7";
    const std::string bytes = ReadFile(file);
    WriteFile(file, bytes.substr(0, bytes.size() / 2));
    LogCapture log;
    const std::string message = MessageOf([&] { set->LoadBuffer(0); });
    EXPECT_NE(message.find("B00001.im7"), std::string::npos) << message;
    EXPECT_TRUE(log.contains("Set", "LoadBuffer 0: "));
}

TEST(C_SetBuffers, HeadInformationTakesTheNextBufferAndReadsNoPixels)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    EXPECT_EQ(MessageOf([&] { set->GetBufferStructureInformation(0); }), "No buffer found in the set.");
    EXPECT_EQ(MessageOf([&] { set->GetAttributes(0); }), "No buffer found in the set.");

    auto buffer = WordBuffer(1, 40, 30);
    buffer->GetAttributeStore().SetString("Camera", "Synthetic");
    set->StoreBuffer(buffer.get(), 3);
    const auto info = set->GetBufferStructureInformation(0); // no gap check: index 3 answers
    EXPECT_EQ(info.frameCount, 1u);
    EXPECT_EQ(info.width, 40u);
    EXPECT_EQ(info.height, 30u);
    EXPECT_EQ(info.depth, 1u);
    EXPECT_EQ(info.dataType, BufferApi::DATATYPE_WORD);
    EXPECT_TRUE(info.isImage);
    EXPECT_FALSE(info.isVector);
    EXPECT_EQ(set->GetAttributes(1).GetAttributeValue("Camera").ToString(), "Synthetic");
    EXPECT_EQ(MessageOf([&] { set->GetBufferStructureInformation(4); }), "No buffer found in the set.");
}

TEST(C_SetBuffers, RemovingTheOnlyBufferThenAppendingStartsAtZeroAgain)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    set->AppendBuffer(WordBuffer(1).get());
    set->RemoveBuffer(0);
    EXPECT_EQ(set->GetSize(), 0u);
    EXPECT_EQ(set->GetIndexMax(), static_cast<unsigned>(-1));
    set->AppendBuffer(WordBuffer(2).get());
    EXPECT_EQ(set->GetIndexMin(), 0u);
    EXPECT_EQ(set->GetIndexMax(), 0u);
    EXPECT_EQ(FirstPixel(*set->LoadBuffer(0)), 2);
}

TEST(C_SetBuffers, ResizeGrowsWithTheLastBufferAndCannotShrinkAPlainSet)
{
    TempDir dir;
    std::shared_ptr<I_Set> set(MakeSet(dir / "Run").release());
    EXPECT_EQ(MessageOf([&] { C_SetUtilities::ResizeSet(set, 3, nullptr); }),
              "C_Set::Resize: Can't fill up if buffer==NULL and set is empty");
    set->AppendBuffer(WordBuffer(5).get());
    C_SetUtilities::ResizeSet(set, 3, nullptr);
    ASSERT_EQ(set->GetSize(), 3u);
    EXPECT_EQ(FirstPixel(*set->LoadBuffer(2)), 5);

    C_SetUtilities::ResizeSet(set, 0, nullptr); // zero never shrinks
    EXPECT_EQ(set->GetSize(), 3u);
    EXPECT_EQ(MessageOf([&] { C_SetUtilities::ResizeSet(set, 1, nullptr); }),
              "C_Set::RemoveBuffer: Can't remove buffer with index 3");
}

TEST(C_SetBuffers, OldTwoFrameTracesAreConvertedToThePlotForm)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    EXPECT_FALSE(set->HasFullDataTraces());

    std::unique_ptr<BufferApi::I_Buffer> old(BufferApi::CreateBuffer());
    old->GetAttributeStore().SetString("Source", "DAQ");
    BufferApi::C_ScaleFactory& scales = BufferApi::C_ScaleFactory::GetInstance();
    for (unsigned f = 0; f < 2; ++f) {
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 4, 1, 1));
        frame->SetName(f == 0 ? "Pressure" : "Temperature");
        auto* samples = static_cast<unsigned short*>(frame->GetPixelPlane(0)->GetData());
        for (unsigned x = 0; x < 4; ++x)
            samples[x] = static_cast<unsigned short>(10 * (f + 1) + x);
        frame->SetScale(BufferApi::SCALE_I,
                        std::unique_ptr<BufferApi::I_Scale>(scales.CreateLinearScale(0.5, f, "bar", "value")));
        frame->SetScale(BufferApi::SCALE_X,
                        std::unique_ptr<BufferApi::I_Scale>(scales.CreateLinearScale(2.0 + f, 1.0, "ms", "time")));
        old->AddFrame(std::move(frame));
    }
    set->StoreFullDataTraces(old.get());
    EXPECT_TRUE(set->HasFullDataTraces());
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/AnalogData.im7"));

    const auto traces = set->LoadFullDataTraces();
    ASSERT_EQ(traces->GetNumberOfFrames(), 2u);
    EXPECT_EQ(traces->GetAttributeStore().GetCount(), 1u);
    for (unsigned f = 0; f < 2; ++f) {
        const auto* frame = dynamic_cast<const BufferApi::I_FrameImage*>(traces->GetFrame(f));
        ASSERT_NE(frame, nullptr);
        EXPECT_EQ(frame->GetName(), f == 0 ? "Pressure" : "Temperature");
        EXPECT_EQ(frame->GetDataType(), BufferApi::DATATYPE_FLOAT);
        ASSERT_EQ(frame->GetHeight(), 2u);
        const auto* rows = static_cast<const float*>(frame->GetPixelPlane(0)->GetData());
        for (unsigned x = 0; x < 4; ++x) {
            EXPECT_FLOAT_EQ(rows[x], 0.5f * (10 * (f + 1) + x) + f);
            EXPECT_FLOAT_EQ(rows[4 + x], 2.0f * x + 1.0f); // positions through frame 0's scale
        }
    }
    // Already in the plot form: handed back as it is.
    set->StoreFullDataTraces(const_cast<BufferApi::I_Buffer*>(traces.get()));
    EXPECT_EQ(set->LoadFullDataTraces()->GetFrame(1)->GetScale(BufferApi::SCALE_X).GetFactor(), 3.0);
}

TEST(C_SetBuffers, MalformedOldTracesAreRefused)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    const auto store = [&](std::vector<std::pair<unsigned, unsigned>> shapes) {
        std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
        for (const auto& shape : shapes)
            buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
                BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, shape.first, shape.second, 1)));
        set->StoreFullDataTraces(buffer.get());
    };
    store({{4, 1}});
    EXPECT_EQ(MessageOf([&] { set->LoadFullDataTraces(); }), "DataTrace buffer has wrong number of frames");
    store({{4, 1}, {5, 1}});
    EXPECT_EQ(MessageOf([&] { set->LoadFullDataTraces(); }), "DataTrace buffer has different weight");
    store({{4, 1}, {4, 3}});
    EXPECT_EQ(MessageOf([&] { set->LoadFullDataTraces(); }), "DataTrace buffer has wrong height");
}

TEST(C_SetBuffers, ForeignFilesInTheFolderFailOnlyTheirOwnLoad)
{
    TempDir dir;
    auto set = MakeSet(dir / "Run");
    set->AppendBuffer(WordBuffer(1).get());
    WriteFile(dir / "Run/B00002_notes.txt", "written by somebody else");
    WriteFile(dir / "Run/Background.im7", "not numbered: never in the map");
    WriteFile(dir / "Run/readme.txt", "no B: never in the map");
    set->GetFileList();
    ASSERT_EQ(set->GetSize(), 2u);

    const std::string message = MessageOf([&] { set->LoadBuffer(1); });
    EXPECT_NE(message.find("B00002_notes.txt"), std::string::npos) << message;
    EXPECT_EQ(FirstPixel(*set->LoadBuffer(0)), 1);
    EXPECT_EQ(ReadFile(dir / "Run/B00002_notes.txt"), "written by somebody else");
    EXPECT_EQ(RTE::FileSystem::GetFiles(set->GetName(), ".*", false, false).size(), 4u);
}
