// Repair and conversion killed at every call that changes the disk (setapi_operation_child, see
// OperationChild.cpp): whatever the kill leaves, the recording's images are still there, and the
// next run of the operation works or stops with its documented words.

#include "OperationDoubles.h"
#include "setapi/stream/RecordingImages.h"
#include "setapi/stream/StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/StreamSet.h>

#include "support/TestSupport.h"

#include <QFileInfo>
#include <QProcess>

#include <string>

#ifndef SETAPI_OPERATION_CHILD
#error "SETAPI_OPERATION_CHILD must name the operation child program"
#endif

using namespace StreamSetTesting;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using TestSupport::TempDir;

namespace {

// Runs the child; true when it ran the operation to its end (k beyond its calls).
bool RunChild(const char* mode, const std::string& name, unsigned k, std::string& errors)
{
    QProcess child;
    child.start(QStringLiteral(SETAPI_OPERATION_CHILD),
                {QString::fromLatin1(mode), QString::fromStdString(name), QString::number(k)});
    if (!child.waitForFinished(120000)) {
        errors = "child did not end";
        child.kill();
        child.waitForFinished();
        return true;
    }
    const std::string out = child.readAllStandardOutput().toStdString();
    if (child.exitStatus() == QProcess::CrashExit)
        return false; // killed at call k, as asked
    if (out.find("done") == std::string::npos)
        errors = "child failed: " + child.readAllStandardError().toStdString();
    return true;
}

// Whether the set holds `images` images of two 8 x 4 cameras as the builder wrote them.
bool HoldsTheImages(const std::shared_ptr<I_Set>& set, unsigned images)
{
    return CompareCameraImages(*set, images, 2, 8, 4).empty();
}

} // namespace

TEST(OperationKill, ARepairKilledAtAnyCallLeavesTheImagesAndTheNextRepairWorks)
{
    const TestSupport::LogCapture log;
    unsigned k = 1;
    for (;; ++k) {
        SCOPED_TRACE("kill at call " + std::to_string(k));
        TempDir dir;
        const std::string name = dir / "Run";
        {
            StreamSetBuilder builder(name);
            builder.AddCamera(8, 4, 10);
            builder.AddCamera(8, 4, 9);
            builder.RemoveStream(builder.AddScales(0, RTE::S_Scale(2.0), RTE::S_Scale(), RTE::S_Scale()));
            builder.AddFrameAttributes(0, 10);
            const QString damaged = builder.AddFrameAttributes(1, 10);
            builder.RemoveStream(builder.AddTraces(1, 10, 2));
            builder.Finish();
            for (const std::string& file : builder.FilesOf(damaged))
                TruncateFile(file, FileSize(file) / 2);
        }
        std::string errors;
        const bool finished = RunChild("repair", name, k, errors);
        EXPECT_EQ(errors, "");
        const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
        ASSERT_TRUE(set->IsOpen());
        EXPECT_TRUE(HoldsTheImages(set, 9));
        OperationTesting::YesDialog yes;
        EXPECT_NE(SetApi::RepairCorruptStreamSet(set, yes), SetApi::RepairCorruptStreamSetState::RepairFailed);
        const auto streamSet = SetApi::Private::CastToStreamSet(C_SetFactory::Instance().Open(name));
        const auto& states = streamSet->GetCorruptionStates();
        EXPECT_TRUE(states.corruptAttributeFrames.empty());
        EXPECT_FALSE(states.scalesCorrupt || states.tracesCorrupt || states.globalAttributesCorrupt);
        EXPECT_TRUE(streamSet->HasBeenRepaired());
        EXPECT_TRUE(HoldsTheImages(streamSet, 9));
        if (finished || k > 200)
            break;
    }
    EXPECT_GT(k, 3u) << "the repair made fewer calls than expected";
}

TEST(OperationKill, AConversionKilledAtAnyCallNeverLosesTheImages)
{
    const TestSupport::LogCapture log;
    const unsigned images = 4;
    unsigned k = 1;
    unsigned split = 0;
    for (;; ++k) {
        SCOPED_TRACE("kill at call " + std::to_string(k));
        TempDir dir;
        const std::string name = dir / "Run";
        {
            StreamSetBuilder builder(name);
            builder.AddCamera(8, 4, images);
            builder.AddCamera(8, 4, images);
            builder.Finish();
            TestSupport::WriteFile(name + "/notes.txt", "notes");
        }
        std::string errors;
        const bool finished = RunChild("convert", name, k, errors);
        EXPECT_EQ(errors, "");
        const std::shared_ptr<I_Set> atName = C_SetFactory::Instance().Open(name);
        const std::shared_ptr<I_Set> parked = C_SetFactory::Instance().Open(dir / "old_StreamSet");
        const std::shared_ptr<I_Set> work = C_SetFactory::Instance().Open(dir / "Run_temp_Conversion");
        const bool kept = HoldsTheImages(atName, images) || HoldsTheImages(parked, images);
        if (!kept) {
            // A kill inside the renaming of a set (its folder renamed, its set file not yet) splits
            // set file and folder: the recording's streams are whole in the folder that was being
            // renamed and open again once it is renamed back.
            const bool streamsInParkedFolder = QFileInfo::exists(QString::fromStdString(dir / "old_StreamSet/ReaderConfiguration.xml"));
            const bool convertedInWorkFolder = QFileInfo::exists(QString::fromStdString(dir / "Run_temp_Conversion/B00001.im7"));
            EXPECT_TRUE(streamsInParkedFolder || convertedInWorkFolder || HoldsTheImages(work, images));
            ++split;
        }
        if (finished) {
            EXPECT_TRUE(HoldsTheImages(atName, images));
            EXPECT_EQ(SetApi::Private::CastToStreamSet(atName), nullptr);
            EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(name + "/notes.txt")));
            break;
        }
        // The next run: it works, or it stops at the work set a killed run left behind.
        if (SetApi::Private::CastToStreamSet(atName)) {
            OperationTesting::NeverCancel control;
            OperationTesting::QuietFeedback feedback;
            try {
                SetApi::ConvertStreamSetToNativeSet(name, control, feedback);
                EXPECT_TRUE(HoldsTheImages(C_SetFactory::Instance().Open(name), images));
            } catch (const std::exception& e) {
                EXPECT_EQ(std::string(e.what()), "Target set file already exists");
                EXPECT_TRUE(HoldsTheImages(C_SetFactory::Instance().Open(name), images));
            }
        }
        if (k > 400)
            break;
    }
    EXPECT_GT(k, 10u) << "the conversion made fewer calls than expected";
    RecordProperty("calls", int(k));
    RecordProperty("split", int(split));
}

// A recording killed at every call that changes the disk, appends included, through each writer:
// what is left opens or is no set at all, every image it offers reads back bit-exact, and a repair
// leaves no stream damaged.
TEST(OperationKill, ARecordingKilledAtAnyCallOfTheDiskKeepsEveryImageItOffers)
{
    const TestSupport::LogCapture log;
    const unsigned widths[3] = {64, 48, 64}, heights[3] = {48, 48, 32};
    for (const char* mode : {"record-stream", "record-plain"}) {
        unsigned k = 1;
        for (;; ++k) {
            SCOPED_TRACE(std::string(mode) + ", kill at call " + std::to_string(k));
            TempDir dir;
            const std::string name = dir / "Rec";
            std::string errors;
            const bool finished = RunChild(mode, name, k, errors);
            EXPECT_EQ(errors, "");
            const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
            if (set->IsOpen()) {
                for (unsigned i = 0; i < set->GetSize(); ++i) {
                    std::unique_ptr<BufferApi::I_Buffer> buffer;
                    try {
                        buffer = set->LoadBuffer(i);
                    } catch (const std::exception& e) {
                        // Buffer files appear under their name only when whole: a killed plain
                        // recording leaves gaps, never torn files.
                        EXPECT_NE(std::string(e.what()).find("Gap"), std::string::npos) << e.what();
                        continue;
                    }
                    for (unsigned c = 0; c < 3; ++c)
                        EXPECT_EQ(RecordingTesting::CompareCameraFrame(*buffer, c, widths[c], heights[c], i), "");
                }
                if (SetApi::IsStreamSet(set)) {
                    OperationTesting::YesDialog yes;
                    EXPECT_NE(SetApi::RepairCorruptStreamSet(set, yes), SetApi::RepairCorruptStreamSetState::RepairFailed);
                    const auto repaired = SetApi::Private::CastToStreamSet(C_SetFactory::Instance().Open(name));
                    const auto& states = repaired->GetCorruptionStates();
                    EXPECT_EQ(repaired->IsCorrupt(), states.minImageCount != states.maxImageCount);
                }
            }
            if (finished) {
                EXPECT_TRUE(set->IsOpen());
                EXPECT_EQ(set->GetSize(), 6u);
                break;
            }
            if (k > 2000)
                break;
        }
        RecordProperty(std::string(mode) + "_calls", int(k));
    }
}
