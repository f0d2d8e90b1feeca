// Converting a recording to a plain set in place: the buffers bit-exact, child sets and the
// user's files carried over, progress and cancel, the failure ends, and a failure of the disk at
// every call that never loses the recording's images.

#include "setapi/stream/StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <QDir>
#include <QFileInfo>

#include <functional>
#include <vector>

using namespace StreamSetTesting;
using SetApi::C_SetFactory;
using SetApi::ConvertStreamSetToNativeSet;
using SetApi::I_Set;
using TestSupport::MessageOf;
using TestSupport::TempDir;
using Operation = RTE::FaultInjectingFileSystem::Operation;

namespace {

struct Control : RTE::I_ActivityControl {
    std::function<bool()> cancelled = [] { return false; };
    bool IsCancelled() const override { return cancelled(); }
};

struct Feedback : RTE::I_ActivityFeedback {
    void SetProgress(double percent) override { progress.push_back(percent); }
    void SetStatusText(const std::string& text) override { texts.push_back(text); }
    std::vector<double> progress;
    std::vector<std::string> texts;
};

const unsigned Images = 5;

// A recording of two cameras with traces, a child set and files of the user's beside its streams.
void BuildRecording(const std::string& name, unsigned images = Images)
{
    StreamSetBuilder builder(name);
    builder.AddCamera(8, 4, images);
    builder.AddCamera(8, 4, images);
    if (images > 0)
        builder.AddTraces(1, images, 2);
    builder.Finish();
    std::unique_ptr<SetApi::C_Set> child(SetApi::C_Set::Create(name + "/Child", I_Set::SET_TYPE_IMAGE, true));
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 3, 2, 1)));
    child->AppendBuffer(buffer.get());
    for (const char* file : {"notes.txt", "results.xml", "Camera1.xml", "ADC1-meta.xml"})
        TestSupport::WriteFile(name + "/" + file, file);
}

// Whether `set` holds the recording's images, bit for bit.
::testing::AssertionResult HoldsTheImages(const std::shared_ptr<I_Set>& set, unsigned images = Images)
{
    const std::string difference = CompareCameraImages(*set, images, 2, 8, 4);
    if (difference.empty())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << difference;
}

bool Exists(const std::string& path) { return QFileInfo::exists(QString::fromStdString(path)); }

} // namespace

TEST(ConvertStreamSet, ReplacesTheRecordingByAPlainSetWithItsChildrenAndTheUsersFiles)
{
    for (const char* suffix : {"", ".set"}) {
        TempDir dir;
        const std::string name = dir / "Run";
        BuildRecording(name);
        Control control;
        Feedback feedback;
        ConvertStreamSetToNativeSet(name + suffix, control, feedback);

        const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
        ASSERT_TRUE(set->IsOpen());
        EXPECT_EQ(SetApi::Private::CastToStreamSet(set), nullptr);
        EXPECT_TRUE(HoldsTheImages(set));
        EXPECT_TRUE(set->HasFullDataTraces());
        EXPECT_TRUE(C_SetFactory::Instance().Open(name + "/Child")->IsOpen());
        EXPECT_TRUE(Exists(name + "/notes.txt"));
        EXPECT_TRUE(Exists(name + "/results.xml"));
        EXPECT_FALSE(Exists(name + "/Camera1.xml"));
        EXPECT_FALSE(Exists(name + "/ADC1-meta.xml"));
        EXPECT_FALSE(Exists(name + "/ReaderConfiguration.xml"));
        EXPECT_FALSE(Exists(dir / "old_StreamSet.set"));
        EXPECT_FALSE(Exists(dir / "old_StreamSet"));
        EXPECT_FALSE(Exists(dir / "Run_temp_Conversion.set"));
        EXPECT_FALSE(Exists(dir / "Run_temp_Conversion"));

        EXPECT_EQ(feedback.progress, (std::vector<double>{20, 40, 60, 80, 100}));
        EXPECT_EQ(feedback.texts.front(), "Converting 'Run': 20% finished");
        EXPECT_EQ(feedback.texts[4], "Converting 'Run': 100% finished");
        EXPECT_EQ(std::vector<std::string>(feedback.texts.end() - 2, feedback.texts.end()),
                  (std::vector<std::string>{"Tidying up the set directory", "Conversion finished"}));
    }
}

TEST(ConvertStreamSet, AnEmptyRecordingBecomesAnEmptyPlainSet)
{
    TempDir dir;
    const std::string name = dir / "Empty";
    BuildRecording(name, 0);
    Control control;
    Feedback feedback;
    ConvertStreamSetToNativeSet(name, control, feedback);
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetSize(), 0u);
    EXPECT_TRUE(feedback.progress.empty());
}

TEST(ConvertStreamSet, ACancelLeavesTheSourceAndNoWorkSet)
{
    for (const unsigned after : {0u, 2u}) {
        TempDir dir;
        const std::string name = dir / "Run";
        BuildRecording(name);
        Control control;
        Feedback feedback;
        control.cancelled = [&] { return feedback.progress.size() >= after; };
        ConvertStreamSetToNativeSet(name, control, feedback);
        EXPECT_EQ(feedback.progress.size(), after);
        EXPECT_EQ(feedback.texts.back(), "Conversion canceled");
        EXPECT_NE(SetApi::Private::CastToStreamSet(C_SetFactory::Instance().Open(name)), nullptr);
        EXPECT_TRUE(HoldsTheImages(C_SetFactory::Instance().Open(name)));
        EXPECT_FALSE(Exists(dir / "Run_temp_Conversion.set"));
        EXPECT_FALSE(Exists(dir / "Run_temp_Conversion"));
    }
}

TEST(ConvertStreamSet, AParkedSetInTheWayStopsItWithTheSourceWhole)
{
    TempDir dir;
    const std::string name = dir / "Run";
    BuildRecording(name);
    std::unique_ptr<SetApi::C_Set>(SetApi::C_Set::Create(dir / "old_StreamSet", I_Set::SET_TYPE_IMAGE, true));
    Control control;
    Feedback feedback;
    const TestSupport::LogCapture log;
    EXPECT_EQ(MessageOf([&] { ConvertStreamSetToNativeSet(name, control, feedback); }), "Can not rename source set");
    EXPECT_TRUE(HoldsTheImages(C_SetFactory::Instance().Open(name)));
    // The child set came back.
    EXPECT_TRUE(C_SetFactory::Instance().Open(name + "/Child")->IsOpen());
    EXPECT_FALSE(Exists(dir / "Run_temp_Conversion.set"));

    // A work set left over from an earlier run stops the next one at its start.
    TestSupport::WriteFile(dir / "Run_temp_Conversion.set", "#GROUP Sets\n");
    EXPECT_EQ(MessageOf([&] { ConvertStreamSetToNativeSet(name, control, feedback); }), "Target set file already exists");

    std::unique_ptr<SetApi::C_Set>(SetApi::C_Set::Create(dir / "Plain", I_Set::SET_TYPE_IMAGE, true));
    EXPECT_THROW(ConvertStreamSetToNativeSet(dir / "Plain", control, feedback), RTE::VerificationFailed);
}

// A failure at each call of the disk, of each kind, in turn. Whatever the outcome, the recording's
// images are in the source, the parked set or the converted set.
TEST(ConvertStreamSet, AFailureAtAnyCallOfTheDiskNeverLosesTheImages)
{
    const TestSupport::LogCapture log;
    unsigned swept = 0;
    for (const Operation operation : {Operation::Rename, Operation::RemoveFile, Operation::RemoveDirectory,
                                      Operation::CreateDirectory, Operation::OpenForWriting, Operation::ReplaceFile}) {
        for (unsigned call = 1;; ++call) {
            SCOPED_TRACE(std::string(RTE::FaultInjectingFileSystem::OperationName(operation)) + " " + std::to_string(call));
            TempDir dir;
            const std::string name = dir / "Run";
            BuildRecording(name);
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            std::string failure;
            {
                RTE::ScopedFileSystemBackend installed(faults);
                faults->FailCall(operation, call);
                Control control;
                Feedback feedback;
                try {
                    ConvertStreamSetToNativeSet(name, control, feedback);
                } catch (const std::exception& e) {
                    failure = e.what();
                }
            }
            const bool failed = faults->FailureCount(operation) > 0;
            if (!failed)
                break; // the conversion makes fewer calls than that
            ++swept;
            const std::shared_ptr<I_Set> converted = C_SetFactory::Instance().Open(name);
            const std::shared_ptr<I_Set> parked = C_SetFactory::Instance().Open(dir / "old_StreamSet");
            const bool inSource = SetApi::Private::CastToStreamSet(converted) != nullptr && HoldsTheImages(converted);
            const bool inConverted = converted->IsOpen() && HoldsTheImages(converted);
            const bool inParked = parked->IsOpen() && HoldsTheImages(parked);
            EXPECT_TRUE(inSource || inConverted || inParked) << failure;
            if (failure.empty()) {
                EXPECT_TRUE(inConverted);
            }
        }
    }
    EXPECT_GT(swept, 20u);
}
