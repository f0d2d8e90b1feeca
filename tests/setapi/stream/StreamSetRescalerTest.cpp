// Replacing the scales of a finished recording: the configuration's entries, the scales the
// reopened set carries, pixels untouched, and what failures of the disk leave.

#include "StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSetRescaler.h>

#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <DataObjects/LinearScale.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <QStringList>

using namespace StreamSetTesting;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using SetApi::StreamSetRescaler;
using TestSupport::MessageOf;
using TestSupport::TempDir;
using Operation = RTE::FaultInjectingFileSystem::Operation;

namespace {

struct Recording {
    explicit Recording(const std::string& name) : builder(name)
    {
        builder.AddCamera(8, 4, 3);
        builder.AddCamera(8, 4, 3);
        builder.AddScales(0, RTE::S_Scale(2.0, 1.0, "mm"), RTE::S_Scale(2.0, 1.0, "mm"), RTE::S_Scale(1.0, 0.0, "counts"));
        attributes = builder.AddFrameAttributes(0, 3);
        builder.AddScales(1, RTE::S_Scale(3.0, 0.0, "mm"), RTE::S_Scale(3.0, 0.0, "mm"), RTE::S_Scale());
        builder.Finish();
    }
    StreamSetBuilder builder;
    QString attributes;
};

QStringList Prefixes(const QString& configurationPath)
{
    const auto configuration = SetApi::Private::LoadReaderConfiguration(configurationPath);
    QStringList prefixes;
    for (unsigned i = 0; i < configuration.GetReaderCount(); ++i)
        prefixes << configuration.GetReader(i).FilePrefix;
    return prefixes;
}

DataObjects::LinearScale ScaleOf(const BufferApi::I_Buffer& buffer, unsigned frame, BufferApi::E_ScaleType axis)
{
    return DataObjects::GetScaleFromFrame(*buffer.GetFrame(frame), axis);
}

void ExpectPixelsUntouched(const I_Set& set)
{
    for (unsigned image = 0; image < set.GetSize(); ++image) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set.LoadBuffer(image);
        for (unsigned frame = 0; frame < 2; ++frame) {
            const auto* pixels = static_cast<const std::uint16_t*>(
                static_cast<const BufferApi::I_FrameImage*>(buffer->GetFrame(frame))->GetPixelPlane(0)->GetData());
            for (unsigned y = 0; y < 4; ++y)
                for (unsigned x = 0; x < 8; ++x)
                    ASSERT_EQ(pixels[y * 8 + x], PixelValue(frame, image, 0, x, y));
        }
    }
}

} // namespace

TEST(StreamSetRescaler, ReplacesEveryScaleStreamAndKeepsTheOtherEntriesInOrder)
{
    TempDir dir;
    const std::string name = dir / "Run";
    Recording recording(name);
    const QString configurationPath = recording.builder.ConfigurationPath();
    const QStringList before = Prefixes(configurationPath);
    ASSERT_EQ(before.size(), 5);

    StreamSetRescaler rescaler(QString::fromStdString(name));
    rescaler.SetFrameScales(1, RTE::S_Scale(0.5, -4.0, "m", "X"), RTE::S_Scale(0.25, 2.0, "m", "Y"),
                            RTE::S_Scale(10.0, 0.0, "K", "T"));
    rescaler.SetFrameScales(1, RTE::S_Scale(0.75, 0.0, "m"), RTE::S_Scale(), RTE::S_Scale());
    for (int run = 0; run < 2; ++run) {
        // A second run removes the new entries it made and writes them again: the same result.
        rescaler.Write();
        EXPECT_EQ(Prefixes(configurationPath),
                  (QStringList{before[0], before[1], recording.attributes, "FrameScales1", "FrameScales1"}));
    }
    const auto configuration = SetApi::Private::LoadReaderConfiguration(configurationPath);
    const auto& entry = configuration.GetReader(3);
    EXPECT_EQ(entry.FormatDescription, QStringLiteral("Frame scale files"));
    EXPECT_TRUE(entry.ContentPurpose.IsAssociatedToFrames());
    EXPECT_FALSE(entry.ContentPurpose.IsAssociatedToEntireImage());
    EXPECT_TRUE(entry.ContentPurpose.IsAssociatedToAllImages());
    EXPECT_EQ(entry.ContentPurpose.StartFrame(), 1u);
    EXPECT_EQ(entry.ContentPurpose.EndFrame(), 1u);
    for (const QString& prefix : before.mid(2)) {
        if (prefix != recording.attributes) {
            EXPECT_TRUE(recording.builder.FilesOf(prefix).empty()) << prefix.toStdString();
        }
    }

    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_TRUE(set->IsOpen());
    const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(2);
    // Frame 0 has no record any more: identity.
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_X), DataObjects::LinearScale());
    // Both records of frame 1 name the same file, which the later one rewrote: it holds.
    EXPECT_EQ(ScaleOf(*buffer, 1, BufferApi::SCALE_X), DataObjects::LinearScale(0.75, 0.0, "m"));
    ExpectPixelsUntouched(*set);
}

TEST(StreamSetRescaler, NewScalesReachTheLoadedBuffersAndNoRecordsRemovesAllScales)
{
    TempDir dir;
    const std::string name = dir / "Run";
    Recording recording(name);
    StreamSetRescaler rescaler(QString::fromStdString(name));
    rescaler.SetFrameScales(0, RTE::S_Scale(0.5, -4.0, "m", "X"), RTE::S_Scale(0.25, 2.0, "m", "Y"),
                            RTE::S_Scale(10.0, 0.0, "K", "T"));
    rescaler.Write();
    std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(1);
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_X), DataObjects::LinearScale(0.5, -4.0, "m", "X"));
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_Y), DataObjects::LinearScale(0.25, 2.0, "m", "Y"));
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_I), DataObjects::LinearScale(10.0, 0.0, "K", "T"));
    EXPECT_EQ(ScaleOf(*buffer, 1, BufferApi::SCALE_X), DataObjects::LinearScale());

    StreamSetRescaler(QString::fromStdString(name)).Write();
    EXPECT_EQ(Prefixes(recording.builder.ConfigurationPath()).size(), 3);
    set = C_SetFactory::Instance().Open(name);
    buffer = set->LoadBuffer(1);
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_X).GetFactor(), 1.0);
    EXPECT_EQ(ScaleOf(*buffer, 0, BufferApi::SCALE_X).GetOffset(), 0.0);
    ExpectPixelsUntouched(*set);
}

TEST(StreamSetRescaler, RefusesAnEmptyNameAndAConfigurationWithoutEntries)
{
    TempDir dir;
    const TestSupport::LogCapture log;
    EXPECT_EQ(MessageOf([] { StreamSetRescaler(QString()).Write(); }), "Destination speci" "fication is empty");
    StreamSetBuilder empty(dir / "Empty");
    empty.Finish();
    EXPECT_EQ(MessageOf([&] { StreamSetRescaler(QString::fromStdString(dir / "Empty")).Write(); }),
              "Reader count is zero.");
    EXPECT_THROW(StreamSetRescaler(QString::fromStdString(dir / "Missing")).Write(), RTE::Exception);
}

// Each failure of the disk in turn: the images never change, a failed save or a failed scale file
// raises, and a scale file that cannot be removed is passed over.
TEST(StreamSetRescaler, FailuresOfTheDiskLeaveTheImagesAlone)
{
    const TestSupport::LogCapture log;
    for (const Operation operation : {Operation::RemoveFile, Operation::OpenForWriting, Operation::ReplaceFile}) {
        for (unsigned call = 1; call <= 3; ++call) {
            SCOPED_TRACE(std::string(RTE::FaultInjectingFileSystem::OperationName(operation)) + " " + std::to_string(call));
            TempDir dir;
            const std::string name = dir / "Run";
            Recording recording(name);
            auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
            bool raised = false;
            {
                RTE::ScopedFileSystemBackend installed(faults);
                faults->FailCall(operation, call);
                StreamSetRescaler rescaler(QString::fromStdString(name));
                rescaler.SetFrameScales(0, RTE::S_Scale(0.5), RTE::S_Scale(), RTE::S_Scale());
                rescaler.SetFrameScales(1, RTE::S_Scale(0.5), RTE::S_Scale(), RTE::S_Scale());
                try {
                    rescaler.Write();
                } catch (const RTE::Exception&) {
                    raised = true;
                }
            }
            const bool failed = faults->FailureCount(operation) > 0;
            if (operation == Operation::RemoveFile)
                EXPECT_FALSE(raised);
            else
                EXPECT_EQ(raised, failed);
            const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
            ASSERT_TRUE(set->IsOpen());
            ASSERT_EQ(set->GetSize(), 3u);
            ExpectPixelsUntouched(*set);
        }
    }
}
