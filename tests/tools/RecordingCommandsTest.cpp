// The commands that look after recordings: repair with its questions, verify, convert with its
// progress and Ctrl-C, and rescale with its command-line form.

#include "Commands.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/BufferStreamWriter.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/I_Frame.h>
#include <DataObjects/LinearScale.h>

#include "setapi/stream/RecordingImages.h"
#include "support/TestSupport.h"

#include <QDir>

#include <atomic>
#include <sstream>

using SetApi::C_SetFactory;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

const unsigned Widths[2] = {16, 16};
const unsigned Heights[2] = {8, 8};

// A recording of two cameras and `images` images, written by the library's own writer.
std::string Record(const std::string& name, unsigned images = 4)
{
    SetApi::BufferStreamWriter writer(QString::fromStdString(name), SetApi::I_Set::SET_TYPE_IMAGE,
                                      BufferApi::BUFFER_PACK_NONE);
    for (unsigned image = 0; image < images; ++image)
        writer.Store(RecordingTesting::MakeCameraImage(2, Widths, Heights, image).get());
    return name;
}

void RemoveFiles(const std::string& folder, const QString& pattern)
{
    QDir dir(QString::fromStdString(folder));
    for (const QString& file : dir.entryList(QStringList{pattern}, QDir::Files))
        dir.remove(file);
}

bool IsRecording(const std::string& name)
{
    return SetApi::Private::CastToStreamSet(C_SetFactory::Instance().Open(name)) != nullptr;
}

} // namespace

TEST(RepairCommand, AsksOnATerminalAnswersWithYesAndDeclinesWithoutEither)
{
    const TestSupport::LogCapture log;
    TempDir dir;
    const std::string name = Record(dir / "Run");
    RemoveFiles(name, "*.scales");
    const std::string configuration = TestSupport::ReadFile(name + "/ReaderConfiguration.xml");

    // No terminal and no --yes: nothing changes.
    std::istringstream none;
    std::ostringstream out;
    EXPECT_EQ(SetApiTool::RunRepair(name, {false, false}, none, out), SetApiTool::DeclinedExitCode);
    EXPECT_NE(out.str().find("damage: Corrupt scales\n  Corrupt scales: Repairing would remove all scales"),
              std::string::npos)
        << out.str();
    EXPECT_NE(out.str().find("give --yes"), std::string::npos);
    // Asked, and answered no.
    std::istringstream no("n\n");
    out.str("");
    EXPECT_EQ(SetApiTool::RunRepair(name, {false, true}, no, out), SetApiTool::DeclinedExitCode);
    EXPECT_NE(out.str().find("Repair? [y/N] "), std::string::npos);
    EXPECT_EQ(TestSupport::ReadFile(name + "/ReaderConfiguration.xml"), configuration);
    // Asked, and answered yes.
    std::istringstream yes("y\n");
    out.str("");
    EXPECT_EQ(SetApiTool::RunRepair(name, {false, true}, yes, out), 0);
    EXPECT_NE(out.str().find("repaired '" + name + "': dropped \"scales,scales,\"; 4 images"), std::string::npos)
        << out.str();
    // Intact now: said so, nothing asked.
    std::istringstream unused;
    out.str("");
    EXPECT_EQ(SetApiTool::RunRepair(name, {true, false}, unused, out), 0);
    EXPECT_NE(out.str().find("is intact: nothing to repair (4 images)"), std::string::npos) << out.str();

    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRepair(dir / "None", {true, false}, unused, out); }),
              "'" + dir / "None" + "' is no set: there is no file '" + dir / "None" + ".set'");
}

TEST(VerifyCommand, NamesEveryBufferThatFailsAndCountsThem)
{
    const TestSupport::LogCapture log;
    TempDir dir;
    const std::string name = Record(dir / "Run");
    std::ostringstream out;
    EXPECT_EQ(SetApiTool::RunVerify(name, out), 0);
    EXPECT_EQ(out.str(), "recording: intact\nverified 4 buffers, 0 damaged\n");

    // Camera 1's stream cut inside its last image: the recording offers one image less and is
    // reported damaged.
    const std::string stream = name + "/Frame1_.ims";
    const std::string bytes = TestSupport::ReadFile(stream);
    TestSupport::WriteFile(stream, bytes.substr(0, bytes.size() - 100));
    out.str("");
    EXPECT_EQ(SetApiTool::RunVerify(name, out), 1);
    EXPECT_EQ(out.str(), "recording: corrupt: frame streams end at 3..4 images\nverified 3 buffers, 0 damaged\n");

    // A plain set with a buffer file cut short: that buffer is named with the reason.
    {
        std::unique_ptr<SetApi::C_Set> plain(SetApi::C_Set::Create(dir / "Plain", SetApi::I_Set::SET_TYPE_IMAGE, true));
        for (unsigned image = 0; image < 3; ++image)
            plain->AppendBuffer(RecordingTesting::MakeCameraImage(2, Widths, Heights, image).get());
    }
    const std::string file = dir / "Plain" + "/B00002.im7";
    TestSupport::WriteFile(file, TestSupport::ReadFile(file).substr(0, 200));
    out.str("");
    EXPECT_EQ(SetApiTool::RunVerify(dir / "Plain", out), 1);
    EXPECT_EQ(out.str().rfind("buffer 1: ", 0), 0u) << out.str();
    EXPECT_NE(out.str().find("B00002.im7"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("verified 3 buffers, 1 damaged\n"), std::string::npos) << out.str();

    // A set that is no recording verifies the same way; one that ended before its first image too.
    {
        SetApi::BufferStreamWriter empty(QString::fromStdString(dir / "Empty"), SetApi::I_Set::SET_TYPE_IMAGE,
                                         BufferApi::BUFFER_PACK_NONE);
    }
    out.str("");
    EXPECT_EQ(SetApiTool::RunVerify(dir / "Empty", out), 0);
    EXPECT_NE(out.str().find("verified 0 buffers, 0 damaged"), std::string::npos) << out.str();
}

TEST(ConvertCommand, ConvertsAndACtrlCLeavesTheRecording)
{
    const TestSupport::LogCapture log;
    TempDir dir;
    const std::string name = Record(dir / "Run", 6);
    std::atomic<bool> interrupted{false};
    std::vector<double> seen;
    SetApiTool::ConvertWatch watch{interrupted, nullptr, [&](double percent) {
                                       seen.push_back(percent);
                                       if (seen.size() == 2)
                                           interrupted = true;
                                   }};
    std::ostringstream out, err;
    EXPECT_EQ(SetApiTool::RunConvert(name, watch, out, err), SetApiTool::InterruptedExitCode);
    EXPECT_NE(err.str().find("setapi: conversion canceled"), std::string::npos) << err.str();
    EXPECT_TRUE(IsRecording(name));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir / "Run_temp_Conversion.set")));

    interrupted = false;
    seen.clear();
    watch.onProgress = [&](double percent) { seen.push_back(percent); };
    EXPECT_EQ(SetApiTool::RunConvert(name, watch, out, err), 0);
    EXPECT_EQ(seen.back(), 100.0);
    EXPECT_NE(out.str().find("converted '" + name + "' to a plain set of 6 buffers"), std::string::npos) << out.str();
    EXPECT_FALSE(IsRecording(name));
    EXPECT_EQ(C_SetFactory::Instance().Open(name)->GetSize(), 6u);
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunConvert(name, watch, out, err); }),
              "'" + name + "' is no recording (stream set): there is nothing to convert");

    EXPECT_EQ(SetApiTool::FormatConvertProgress(0, 1e9, 0), "0%, -- MB/s, -- left");
    EXPECT_EQ(SetApiTool::FormatConvertProgress(50, 2e9, 2), "50%, 500.0 MB/s, 0:02 left");
}

TEST(RescaleCommand, SetsTheScalesOfEachFrameAndRefusesMalformedValuesFirst)
{
    const TestSupport::LogCapture log;
    TempDir dir;
    const std::string name = Record(dir / "Run");
    std::ostringstream out;
    const auto records = SetApiTool::CollectFrameScales({0, 1}, {"0.5,-1,mm", "2,0"}, {}, {"10, 0, K", "1,0"});
    EXPECT_EQ(SetApiTool::RunRescale(name, records, out), 0);
    EXPECT_NE(out.str().find("frame 0: x = 0.5 * value + -1 mm, y = 1 * value + 0, i = 10 * value + 0 K"),
              std::string::npos)
        << out.str();
    const std::unique_ptr<BufferApi::I_Buffer> buffer = C_SetFactory::Instance().Open(name)->LoadBuffer(3);
    EXPECT_EQ(DataObjects::GetScaleFromFrame(*buffer->GetFrame(0), BufferApi::SCALE_X),
              DataObjects::LinearScale(0.5, -1, "mm"));
    EXPECT_EQ(DataObjects::GetScaleFromFrame(*buffer->GetFrame(0), BufferApi::SCALE_I),
              DataObjects::LinearScale(10, 0, "K"));
    EXPECT_EQ(DataObjects::GetScaleFromFrame(*buffer->GetFrame(1), BufferApi::SCALE_X), DataObjects::LinearScale(2, 0));
    EXPECT_EQ(RecordingTesting::CompareCameraFrame(*buffer, 1, 16, 8, 3), "");

    for (const char* bad : {"1", "1,2,3,4", "a,0", "1,", "inf,0"})
        EXPECT_NE(MessageOf([&] { SetApiTool::ParseScale(bad); }).find("bad scale '"), std::string::npos) << bad;
    EXPECT_EQ(MessageOf([&] { SetApiTool::CollectFrameScales({0, 1}, {"1,0"}, {}, {}); }),
              "give --x once for every --frame (2 frames, 1 times --x)");
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRescale(name, SetApiTool::CollectFrameScales({2}, {}, {}, {}), out); }),
              "the recording has frames 0..1, not frame 2");
}
