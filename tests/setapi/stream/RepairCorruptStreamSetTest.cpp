// Repair of damaged recordings: what the dialog is told and asked, which streams and files go,
// that the images stay bit-exact, that the repaired mark lasts, and what a failed save leaves.
// Also the small tools on stream sets.

#include "StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <QDir>

#include <map>

using namespace StreamSetTesting;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using SetApi::RepairCorruptStreamSet;
using SetApi::RepairCorruptStreamSetState;
using SetApi::Private::CastToStreamSet;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;

namespace {

class RecordingDialog : public SetApi::RepairCorruptStreamSetDialog {
public:
    explicit RecordingDialog(bool answer) : m_answer(answer) {}
    void AddCorruption(const QString& corruption) override { calls.push_back("corruption: " + corruption); }
    void SetConsequences(const QStringList& list) override
    {
        calls.push_back("consequences");
        consequences = list;
    }
    bool ConfirmRepair() override
    {
        calls.push_back("confirm");
        return m_answer;
    }
    void ReportRepairFailure(const std::string& setName, const QString& message) override
    {
        calls.push_back("failure");
        failedSet = setName;
        failure = message;
    }

    QStringList calls;
    QStringList consequences;
    std::string failedSet;
    QString failure;

private:
    bool m_answer;
};

// Every file of the folder with its bytes.
std::map<QString, std::string> Snapshot(const std::string& folder)
{
    std::map<QString, std::string> files;
    for (const QString& name : QDir(QString::fromStdString(folder)).entryList(QDir::Files))
        files[name] = ReadFile(folder + "/" + name.toStdString());
    return files;
}

std::shared_ptr<I_Set> Open(const std::string& name) { return C_SetFactory::Instance().Open(name); }

// Frame `frame` of the image holds the builder's pixels.
void ExpectPixels(const BufferApi::I_Buffer& buffer, unsigned frame, unsigned image, unsigned width, unsigned height)
{
    const auto* pixels = static_cast<const std::uint16_t*>(
        static_cast<const BufferApi::I_FrameImage*>(buffer.GetFrame(frame))->GetPixelPlane(0)->GetData());
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            ASSERT_EQ(pixels[y * width + x], PixelValue(frame, image, 0, x, y)) << frame << " " << image;
}

// Two cameras of 100 and 98 images, with every kind of side stream; attributes of frame 1,
// scales of frame 0 and the traces are damaged.
struct DamagedRecording {
    explicit DamagedRecording(const std::string& setName) : builder(setName)
    {
        builder.AddCamera(8, 4, 100);
        builder.AddCamera(8, 4, 98);
        scales = builder.AddScales(0, RTE::S_Scale(2.0, 1.0, "mm"), RTE::S_Scale(), RTE::S_Scale());
        builder.AddScales(1, RTE::S_Scale(3.0, 0.0, "mm"), RTE::S_Scale(), RTE::S_Scale());
        attributes0 = builder.AddFrameAttributes(0, 100);
        attributes1 = builder.AddFrameAttributes(1, 100);
        global = builder.AddGlobalAttributes(100);
        traces = builder.AddTraces(1, 100, 2);
        builder.Finish();
        builder.RemoveStream(scales);
        for (const std::string& file : builder.FilesOf(attributes1))
            TruncateFile(file, FileSize(file) / 2);
        builder.RemoveStream(traces);
    }
    StreamSetBuilder builder;
    QString scales, attributes0, attributes1, global, traces;
};

} // namespace

TEST(RepairCorruptStreamSet, DescribesTheDamageDropsTheDamagedStreamsAndKeepsTheImages)
{
    TempDir dir;
    const std::string name = dir / "Run";
    DamagedRecording recording(name);
    const std::shared_ptr<I_Set> set = Open(name);
    ASSERT_TRUE(CastToStreamSet(set)->IsCorrupt());

    RecordingDialog dialog(true);
    EXPECT_EQ(RepairCorruptStreamSet(set, dialog), RepairCorruptStreamSetState::Repaired);
    EXPECT_EQ(dialog.calls, (QStringList{"corruption: Corrupt images", "corruption: Corrupt attributes of frame 1",
                                         "corruption: Corrupt scales", "corruption: Corrupt traces", "consequences",
                                         "confirm"}));
    EXPECT_EQ(dialog.consequences,
              (QStringList{"Corrupt images: At least one image of the recording is missing. This can't be repaired. The "
                           "number of available images is reduced to the minimum of 98 from 100 recorded images.",
                           "Corrupt attributes of frame 1: Repairing this set would remove all attributes of this frame "
                           "from the data.",
                           "Corrupt scales: Repairing would remove all scales from the data.",
                           "Corrupt traces: Repairing would remove all AD traces from the data."}));

    // Both scale streams go (the whole kind counts as bad), the damaged attribute stream goes
    // alone, the traces go; frames, frame 0's attributes and the global ones stay.
    const auto streamSet = CastToStreamSet(set);
    EXPECT_TRUE(streamSet->HasBeenRepaired());
    EXPECT_EQ(streamSet->GetDetailsOfRepair(), QStringLiteral("scales,scales,attributes of frame 1, traces,"));
    const SetApi::Private::C_ReaderConfiguration configuration =
        SetApi::Private::LoadReaderConfiguration(recording.builder.ConfigurationPath());
    QStringList prefixes;
    for (unsigned i = 0; i < configuration.GetReaderCount(); ++i)
        prefixes << configuration.GetReader(i).FilePrefix;
    EXPECT_EQ(prefixes.size(), 4);
    EXPECT_TRUE(prefixes.contains(recording.attributes0));
    EXPECT_TRUE(prefixes.contains(recording.global));
    EXPECT_TRUE(recording.builder.FilesOf(recording.attributes1).empty());
    for (unsigned i = 0; i < recording.builder.Configuration().GetReaderCount(); ++i) {
        const auto& info = recording.builder.Configuration().GetReader(i);
        if (info.Type == QLatin1String("Core.Set.Recording.ScaleReader")) {
            EXPECT_TRUE(recording.builder.FilesOf(info.FilePrefix).empty()) << info.FilePrefix.toStdString();
        }
    }

    // Images lost by the short camera cannot come back: the set stays corrupt for them only.
    EXPECT_TRUE(streamSet->IsCorrupt());
    EXPECT_EQ(streamSet->GetCorruptionStates().minImageCount, 98u);
    EXPECT_TRUE(streamSet->GetCorruptionStates().corruptAttributeFrames.empty());
    EXPECT_FALSE(streamSet->GetCorruptionStates().scalesCorrupt);

    // Opened anew, every image reads back with its pixels and the surviving attributes.
    const std::shared_ptr<I_Set> reopened = Open(name);
    ASSERT_EQ(reopened->GetSize(), 98u);
    for (unsigned image : {0u, 50u, 97u}) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = reopened->LoadBuffer(image);
        ExpectPixels(*buffer, 0, image, 8, 4);
        ExpectPixels(*buffer, 1, image, 8, 4);
        EXPECT_EQ(BufferApi::C_FrameAttributes(buffer->GetFrame(0)).GetString("Exposure"),
                  FrameAttributeText(0, image).toStdString());
        EXPECT_EQ(BufferApi::C_BufferAttributes(buffer.get()).GetString("Counter"), GlobalAttributeText(image).toStdString());
    }

    // A second repair finds only the missing images: nothing more is removed, and the mark stays.
    const auto before = Snapshot(name);
    RecordingDialog again(true);
    EXPECT_EQ(RepairCorruptStreamSet(reopened, again), RepairCorruptStreamSetState::Repaired);
    EXPECT_EQ(again.calls, (QStringList{"corruption: Corrupt images", "consequences", "confirm"}));
    auto after = Snapshot(name);
    EXPECT_EQ(after.size(), before.size());
    EXPECT_TRUE(SetApi::IsRepairedStreamSet(Open(name)));
    EXPECT_EQ(CastToStreamSet(Open(name))->GetDetailsOfRepair(), QString());
}

TEST(RepairCorruptStreamSet, DamagedMasksGetNoLineButAreRepaired)
{
    TempDir dir;
    const std::string name = dir / "Masks";
    StreamSetBuilder builder(name);
    builder.AddCamera(8, 4, 5);
    builder.AddCamera(8, 4, 5);
    const QString mask0 = builder.AddMask(0, 8, 4, 5);
    const QString mask1 = builder.AddMask(1, 8, 4, 5);
    builder.Finish();
    builder.RemoveStream(mask1);
    const std::shared_ptr<I_Set> set = Open(name);
    ASSERT_TRUE(CastToStreamSet(set)->IsCorrupt());

    RecordingDialog dialog(true);
    EXPECT_EQ(RepairCorruptStreamSet(set, dialog), RepairCorruptStreamSetState::Repaired);
    EXPECT_EQ(dialog.calls, (QStringList{"consequences", "confirm"}));
    EXPECT_TRUE(dialog.consequences.isEmpty());
    // Every mask stream goes, also the one that opened.
    EXPECT_TRUE(builder.FilesOf(mask0).empty());
    EXPECT_FALSE(CastToStreamSet(set)->IsCorrupt());
    EXPECT_EQ(CastToStreamSet(set)->GetDetailsOfRepair(), QStringLiteral("masks,masks,"));
    const std::shared_ptr<I_Set> reopened = Open(name);
    EXPECT_FALSE(CastToStreamSet(reopened)->IsCorrupt());
    ExpectPixels(*reopened->LoadBuffer(4), 1, 4, 8, 4);
}

TEST(RepairCorruptStreamSet, ADeclinedRepairChangesNothingAndIntactOrOtherSetsAreNotTouched)
{
    TempDir dir;
    const std::string name = dir / "Run";
    DamagedRecording recording(name);
    const auto before = Snapshot(name);
    RecordingDialog no(false);
    EXPECT_EQ(RepairCorruptStreamSet(Open(name), no), RepairCorruptStreamSetState::RepairDeclined);
    EXPECT_EQ(Snapshot(name), before);
    EXPECT_FALSE(SetApi::IsRepairedStreamSet(Open(name)));

    StreamSetBuilder intact(dir / "Intact");
    intact.AddCamera(8, 4, 3);
    intact.Finish();
    const std::shared_ptr<I_Set> plain(SetApi::C_Set::Create(dir / "Plain", I_Set::SET_TYPE_IMAGE, true));
    for (const std::shared_ptr<I_Set>& set : {Open(dir / "Intact"), plain, Open(dir / "Missing")}) {
        RecordingDialog untouched(true);
        EXPECT_EQ(RepairCorruptStreamSet(set, untouched), RepairCorruptStreamSetState::NotCorrupt);
        EXPECT_TRUE(untouched.calls.isEmpty());
    }
    EXPECT_TRUE(SetApi::IsStreamSet(Open(dir / "Intact")));
    EXPECT_FALSE(SetApi::IsStreamSet(plain));
    EXPECT_FALSE(SetApi::IsRepairedStreamSet(plain));
    EXPECT_FALSE(SetApi::IsRepairedStreamSet(Open(dir / "Intact")));
}

TEST(RepairCorruptStreamSet, AFailedSaveIsReportedAndALaterRepairStillWorks)
{
    TempDir dir;
    const std::string name = dir / "Run";
    DamagedRecording recording(name);
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    const TestSupport::LogCapture log;
    {
        // Files cannot be removed and the configuration cannot be written.
        faults->FailCallsFrom(RTE::FaultInjectingFileSystem::Operation::RemoveFile, 1);
        faults->FailCallsFrom(RTE::FaultInjectingFileSystem::Operation::ReplaceFile, 1);
        const std::shared_ptr<I_Set> set = Open(name);
        RecordingDialog dialog(true);
        EXPECT_EQ(RepairCorruptStreamSet(set, dialog), RepairCorruptStreamSetState::RepairFailed);
        EXPECT_EQ(dialog.calls.back(), QStringLiteral("failure"));
        EXPECT_EQ(dialog.failedSet, name);
        EXPECT_TRUE(dialog.failure.contains("ReaderConfiguration.xml")) << dialog.failure.toStdString();
    }
    faults->ClearFaults();
    // The old configuration stands; nothing was marked, the images are there.
    std::shared_ptr<I_Set> set = Open(name);
    EXPECT_FALSE(SetApi::IsRepairedStreamSet(set));
    EXPECT_EQ(set->GetSize(), 98u);
    ExpectPixels(*set->LoadBuffer(97), 1, 97, 8, 4);

    RecordingDialog dialog(true);
    EXPECT_EQ(RepairCorruptStreamSet(set, dialog), RepairCorruptStreamSetState::Repaired);
    EXPECT_TRUE(recording.builder.FilesOf(recording.attributes1).empty());
    set = Open(name);
    EXPECT_TRUE(SetApi::IsRepairedStreamSet(set));
    ExpectPixels(*set->LoadBuffer(97), 0, 97, 8, 4);
}

TEST(RepairCorruptStreamSet, AFileThatCannotBeRemovedIsPassedOver)
{
    TempDir dir;
    const std::string name = dir / "Run";
    DamagedRecording recording(name);
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCallsFrom(RTE::FaultInjectingFileSystem::Operation::RemoveFile, 1);
    RecordingDialog dialog(true);
    EXPECT_EQ(RepairCorruptStreamSet(Open(name), dialog), RepairCorruptStreamSetState::Repaired);
    EXPECT_GT(faults->FailureCount(RTE::FaultInjectingFileSystem::Operation::RemoveFile), 0u);
    // The damaged attribute file stays on disk, but out of the configuration.
    EXPECT_FALSE(recording.builder.FilesOf(recording.attributes1).empty());
    const std::shared_ptr<I_Set> set = Open(name);
    EXPECT_TRUE(CastToStreamSet(set)->GetCorruptionStates().corruptAttributeFrames.empty());
}

TEST(AppendAttributesToStreamSet, AddsAStreamThatTheReopenedSetReadsAndKeepsTheRepairedMark)
{
    TempDir dir;
    const std::string name = dir / "Run";
    StreamSetBuilder builder(name);
    builder.AddCamera(8, 4, 3);
    builder.AddCamera(8, 4, 3);
    const QString mask = builder.AddMask(1, 8, 4, 3);
    builder.Finish();
    builder.RemoveStream(mask);
    RecordingDialog yes(true);
    ASSERT_EQ(RepairCorruptStreamSet(Open(name), yes), RepairCorruptStreamSetState::Repaired);

    for (const int frame : {-1, 1}) {
        const std::shared_ptr<I_Set> set = Open(name);
        std::unique_ptr<SetApi::AttributeWriter> writer = SetApi::AppendAttributesToStreamSet(set.get(), frame);
        for (unsigned image = 0; image < 3; ++image) {
            writer->Add(frame < 0 ? QStringLiteral("Computed") : QStringLiteral("Velocity"), QString::number(image * 10 + 1));
            writer->NextImage();
        }
        writer->Close();
    }
    const SetApi::Private::C_ReaderConfiguration configuration =
        SetApi::Private::LoadReaderConfiguration(builder.ConfigurationPath());
    const auto& global = configuration.GetReader(configuration.GetReaderCount() - 2);
    EXPECT_TRUE(global.FilePrefix.startsWith("AppendedAttributes_")) << global.FilePrefix.toStdString();
    EXPECT_TRUE(global.FilePrefix.endsWith("_global")) << global.FilePrefix.toStdString();
    EXPECT_TRUE(global.ContentPurpose.IsAssociatedToEntireImage());
    const auto& framed = configuration.GetReader(configuration.GetReaderCount() - 1);
    EXPECT_TRUE(framed.FilePrefix.endsWith("_1"));
    EXPECT_TRUE(framed.ContentPurpose.IsAssociatedToFrames());
    EXPECT_EQ(framed.ContentPurpose.StartFrame(), 1u);
    // The later saves kept the mark.
    EXPECT_TRUE(configuration.HasBeenRepaired());
    EXPECT_EQ(configuration.GetDetailsOfRepair(), QStringLiteral("masks,"));

    const std::shared_ptr<I_Set> set = Open(name);
    EXPECT_FALSE(CastToStreamSet(set)->IsCorrupt());
    const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(2);
    EXPECT_EQ(BufferApi::C_BufferAttributes(buffer.get()).GetString("Computed"), "21");
    EXPECT_EQ(BufferApi::C_FrameAttributes(buffer->GetFrame(1)).GetString("Velocity"), "21");

    const std::shared_ptr<I_Set> plain(SetApi::C_Set::Create(dir / "Plain", I_Set::SET_TYPE_IMAGE, true));
    const TestSupport::LogCapture log;
    EXPECT_EQ(MessageOf([&] { SetApi::AppendAttributesToStreamSet(plain.get(), 0); }), "No stream set given.");
}

// A failure at each call of the disk, of each kind, in turn: a repair either completes, or reports
// a failed save (RepairFailed) and leaves a recording that a later repair completes. The images
// are there all the time.
TEST(RepairCorruptStreamSet, AFailureAtAnyCallOfTheDiskLeavesARepairableRecording)
{
    using Operation = RTE::FaultInjectingFileSystem::Operation;
    const TestSupport::LogCapture log;
    unsigned swept = 0;
    for (const Operation operation : {Operation::RemoveFile, Operation::OpenForWriting, Operation::ReplaceFile,
                                      Operation::Rename, Operation::CreateDirectory}) {
        for (unsigned call = 1;; ++call) {
            SCOPED_TRACE(std::string(RTE::FaultInjectingFileSystem::OperationName(operation)) + " " + std::to_string(call));
            TempDir dir;
            const std::string name = dir / "Run";
            DamagedRecording recording(name);
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            RepairCorruptStreamSetState state;
            {
                RTE::ScopedFileSystemBackend installed(faults);
                faults->FailCall(operation, call);
                RecordingDialog dialog(true);
                state = RepairCorruptStreamSet(Open(name), dialog);
            }
            if (faults->FailureCount(operation) == 0)
                break;
            ++swept;
            EXPECT_TRUE(state == RepairCorruptStreamSetState::Repaired || state == RepairCorruptStreamSetState::RepairFailed);
            ExpectPixels(*Open(name)->LoadBuffer(97), 1, 97, 8, 4);
            RecordingDialog again(true);
            RepairCorruptStreamSet(Open(name), again);
            const auto set = CastToStreamSet(Open(name));
            EXPECT_TRUE(set->HasBeenRepaired());
            EXPECT_TRUE(set->GetCorruptionStates().corruptAttributeFrames.empty());
            EXPECT_FALSE(set->GetCorruptionStates().scalesCorrupt || set->GetCorruptionStates().tracesCorrupt);
            EXPECT_EQ(set->GetSize(), 98u);
        }
    }
    EXPECT_GE(swept, 4u);
}
