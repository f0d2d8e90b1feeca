// `setapi record` as the tool runs it: the synthetic images it checks the recording against, the
// options it refuses before touching the disk, whole small recordings through both writers, and
// what an interrupt leaves behind.

#include "BufferComparison.h"
#include "Commands.h"
#include "RecordArguments.h"
#include "SyntheticCamera.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/I_Set.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/FaultInjectingFileSystem.h>

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace SetApiTool;
using TestSupport::MessageOf;

const void* PixelsOf(const BufferApi::I_Buffer& buffer, unsigned frame)
{
    return buffer.GetFrame(frame)->GetComponentAt(0)->GetPlane(0)->GetData();
}

std::vector<std::uint16_t> WordsOf(const BufferApi::I_Buffer& buffer, unsigned frame)
{
    const BufferApi::I_Frame& f = *buffer.GetFrame(frame);
    const auto* data = static_cast<const std::uint16_t*>(PixelsOf(buffer, frame));
    return std::vector<std::uint16_t>(data, data + std::size_t(f.GetWidth()) * f.GetHeight());
}

// The check after a recording relies on this: an index always gives the same bits, in fresh memory,
// and the images are not all alike (a writer that stored image 0 again and again must not pass).
TEST(SyntheticRecordingTest, ImagesAreReproducibleFreshAndDifferent)
{
    for (BufferApi::E_DataType type : {BufferApi::DATATYPE_WORD, BufferApi::DATATYPE_FLOAT}) {
        SCOPED_TRACE(type);
        const S_SyntheticShape shape{3, 160, 90, type};
        const SyntheticRecording images(shape, 1700000000000LL);
        EXPECT_EQ(images.GetImageBytes(), 3u * 160 * 90 * (type == BufferApi::DATATYPE_WORD ? 2 : 4));

        const auto a = images.MakeImage(7), again = images.MakeImage(7);
        EXPECT_EQ(FirstDifference(*a, *again), "");
        EXPECT_NE(PixelsOf(*a, 0), PixelsOf(*again, 0));
        ASSERT_EQ(a->GetNumberOfFrames(), 3u);
        for (unsigned f = 0; f < 3; ++f) {
            EXPECT_EQ(a->GetFrame(f)->GetWidth(), 160u);
            EXPECT_EQ(a->GetFrame(f)->GetHeight(), 90u);
            EXPECT_EQ(a->GetFrame(f)->GetDataType(), type);
        }

        // Next image, and the other cameras of the same image, differ in their pixels.
        const auto next = images.MakeImage(8);
        EXPECT_NE(FirstDifference(*a, *next).find("PIXEL"), std::string::npos) << FirstDifference(*a, *next);
        const std::size_t bytes = images.GetImageBytes() / 3;
        EXPECT_NE(std::memcmp(PixelsOf(*a, 0), PixelsOf(*a, 1), bytes), 0);
        EXPECT_NE(std::memcmp(PixelsOf(*a, 1), PixelsOf(*a, 2), bytes), 0);

        // Per image and per camera attributes that tell them apart.
        const BufferApi::I_AttributeBase* time7 = a->GetAttributeStore().Find("AcquisitionTime");
        const BufferApi::I_AttributeBase* time8 = next->GetAttributeStore().Find("AcquisitionTime");
        ASSERT_TRUE(time7 && time8);
        EXPECT_NE(dynamic_cast<const BufferApi::I_AttributeString&>(*time7).GetValue(),
                  dynamic_cast<const BufferApi::I_AttributeString&>(*time8).GetValue());
        const auto* camera2 = dynamic_cast<const BufferApi::I_AttributeString*>(
            a->GetFrame(1)->GetAttributeStore().Find("CameraName"));
        ASSERT_TRUE(camera2);
        EXPECT_EQ(camera2->GetValue(), "Camera 2");
    }
}

// Word images look like a 12-bit camera: a background of about a hundred counts with noise, and
// bright particle images that move between images.
TEST(SyntheticRecordingTest, WordImagesHoldParticlesOnNoiseWithinTwelveBits)
{
    const SyntheticRecording images(S_SyntheticShape{1, 256, 128, BufferApi::DATATYPE_WORD}, 0);
    const std::vector<std::uint16_t> first = WordsOf(*images.MakeImage(0), 0);
    const std::vector<std::uint16_t> later = WordsOf(*images.MakeImage(1), 0);
    EXPECT_LE(*std::max_element(first.begin(), first.end()), 4095);
    EXPECT_GT(*std::max_element(first.begin(), first.end()), 1000);
    std::vector<std::uint16_t> sorted = first;
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    const int median = sorted[sorted.size() / 2];
    EXPECT_GT(median, 60);
    EXPECT_LT(median, 250);
    // Noise: the background is not flat.
    std::size_t steps = 0;
    for (std::size_t i = 1; i < first.size(); ++i)
        steps += first[i] != first[i - 1];
    EXPECT_GT(steps, first.size() / 2);
    // Particles move: the bright pixels are elsewhere in the next image.
    std::size_t brightInBoth = 0, bright = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
        if (first[i] > 1000) {
            ++bright;
            brightInBoth += later[i] > 1000;
        }
    EXPECT_GT(bright, 10u);
    EXPECT_LT(brightInBoth, bright / 2);
}

TEST(SyntheticRecordingTest, FloatImagesAreFinite)
{
    const SyntheticRecording images(S_SyntheticShape{2, 64, 48, BufferApi::DATATYPE_FLOAT}, 0);
    const auto image = images.MakeImage(3);
    const auto* pixels = static_cast<const float*>(PixelsOf(*image, 1));
    EXPECT_TRUE(std::all_of(pixels, pixels + 64 * 48, [](float v) { return std::isfinite(v) && v >= 0; }));
}

TEST(RecordArgumentsTest, ImageSizeTakesTwoPositiveSidesOnly)
{
    unsigned width = 0, height = 0;
    ParseImageSize("1024x768", width, height);
    EXPECT_EQ(width, 1024u);
    EXPECT_EQ(height, 768u);
    ParseImageSize("1X65535", width, height);
    EXPECT_EQ(width, 1u);
    EXPECT_EQ(height, 65535u);

    const std::string nul("12x1\0" "2", 6);
    for (const std::string& bad : {std::string("12x"), std::string("x12"), std::string(""), std::string("12"),
                                   std::string("0x5"), std::string("5x0"), std::string("-3x4"), std::string("+3x4"),
                                   std::string(" 3x4"), std::string("3x4 "), std::string("3x4x5"),
                                   std::string("65536x1"), std::string("99999999999999999999x1"), nul,
                                   std::string("\xff\xfex2"), std::string(100000, '9') + "x1"}) {
        SCOPED_TRACE(bad.substr(0, 40));
        width = height = 7;
        EXPECT_NE(MessageOf([&] { ParseImageSize(bad, width, height); }).find("bad size '"), std::string::npos);
        EXPECT_EQ(width, 7u);
        EXPECT_EQ(height, 7u);
    }
}

TEST(RecordArgumentsTest, OptionsOutOfRangeAreRefusedByName)
{
    const S_RecordSettings defaults = CheckRecordOptions(S_RecordOptions{});
    EXPECT_EQ(defaults.shape.cameras, 2u);
    EXPECT_EQ(defaults.shape.width, 1024u);
    EXPECT_EQ(defaults.shape.type, BufferApi::DATATYPE_WORD);
    EXPECT_EQ(defaults.images, 100u);
    EXPECT_EQ(defaults.queue, 16u);
    EXPECT_EQ(defaults.pack, BufferApi::BUFFER_PACK_NONE);

    auto refusal = [](auto change) {
        S_RecordOptions options;
        change(options);
        return MessageOf([&] { CheckRecordOptions(options); });
    };
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.cameras = 0; }).find("--cameras"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.cameras = 65; }).find("--cameras"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.type = "double"; }).find("--type"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.images = 0; }).find("--images"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.queue = 0; }).find("--queue"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.pack = 3; }).find("--pack"), std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.size = "12x"; }).find("bad size '12x'"), std::string::npos);
    // Sizes that would take unbounded memory are refused before anything is allocated.
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.cameras = 64, o.size = "65535x65535"; }).find("at most"),
              std::string::npos);
    EXPECT_NE(refusal([](S_RecordOptions& o) { o.size = "8192x8192", o.queue = 100; }).find("lower --queue"),
              std::string::npos);
}

struct RecordCase {
    bool plain;
    const char* type;
    unsigned pack;
};

class RecordTest : public ::testing::TestWithParam<RecordCase> {
protected:
    S_RecordOptions SmallRecording() const
    {
        S_RecordOptions options;
        options.size = "128x96";
        options.images = 20;
        options.queue = 4;
        options.plain = GetParam().plain;
        options.type = GetParam().type;
        options.pack = GetParam().pack;
        return options;
    }

    TestSupport::TempDir dir;
    std::atomic<bool> interrupted{false};
};

// A whole small recording: stored, reopened through the factory with every image checked bit for
// bit by the command, reported, and the picture of camera 1 beside the set.
TEST_P(RecordTest, RecordsVerifiesAndReports)
{
    const std::string set = dir / "Recording";
    std::ostringstream out, err, progress;
    RecordWatch watch{interrupted, &progress, {}};
    ASSERT_EQ(RunRecord(set, SmallRecording(), watch, out, err), 0) << err.str();
    const std::string report = out.str();
    // 20 images of two 128 x 96 frames, of 2 or 4 bytes per pixel.
    const std::string megabytes = std::string(GetParam().type) == "word" ? "1.0 MB" : "2.0 MB";
    EXPECT_NE(report.find("recorded 20 images, " + megabytes), std::string::npos) << report;
    EXPECT_NE(report.find("errors: none\n"), std::string::npos) << report;
    EXPECT_NE(report.find("verified 20 images bit-exact"), std::string::npos) << report;
    EXPECT_NE(report.find("high-water mark "), std::string::npos) << report;
    EXPECT_EQ(err.str(), "");
    EXPECT_NE(progress.str().find("20/20 images written"), std::string::npos) << progress.str();

    const auto reopened = SetApi::C_SetFactory::Instance().Open(set);
    ASSERT_TRUE(reopened->IsOpen());
    EXPECT_EQ(reopened->GetSize(), 20u);
    EXPECT_EQ(dynamic_cast<const SetApi::C_Set*>(reopened.get()) != nullptr, GetParam().plain);
    EXPECT_NE(report.find(GetParam().plain ? "as a plain set" : "as a stream set"), std::string::npos) << report;
    EXPECT_EQ(TestSupport::ReadFile(set + "-camera1.png").substr(0, 8), "\x89PNG\r\n\x1a\n");

    // A second recording into the same set is refused and leaves the first as it was.
    std::ostringstream out2, err2;
    EXPECT_NE(MessageOf([&] { RunRecord(set + ".set", SmallRecording(), watch, out2, err2); }).find("the set exists"),
              std::string::npos);
    EXPECT_EQ(SetApi::C_SetFactory::Instance().Open(set)->GetSize(), 20u);
}

// Ctrl-C after five images: the writer is aborted, what it wrote stays and opens, and the command
// says so and returns the interrupt's exit code.
TEST_P(RecordTest, InterruptKeepsThePartialRecording)
{
    const std::string set = dir / "Interrupted";
    std::ostringstream out, err;
    RecordWatch watch{interrupted, nullptr, [&](unsigned stored) {
                          if (stored == 5)
                              interrupted = true;
                      }};
    EXPECT_EQ(RunRecord(set, SmallRecording(), watch, out, err), InterruptedExitCode);
    EXPECT_NE(err.str().find("setapi: recording aborted after 5 of 20 images; the partial recording stays in"),
              std::string::npos)
        << err.str();
    EXPECT_EQ(out.str().find("verified"), std::string::npos);
    EXPECT_TRUE(SetApi::C_SetFactory::Instance().Exists(set));
    const auto partial = SetApi::C_SetFactory::Instance().Open(set);
    if (partial->IsOpen()) {
        EXPECT_LE(partial->GetSize(), 5u);
    }
}

// The disk fills up after a few images: the command reports no recording, but the cause first
// (the file and "No space left on device") and how many images are safe, which is what the
// recording then opens with.
TEST_P(RecordTest, AFullDiskIsReportedWithItsCauseAndTheImagesThatAreSafe)
{
    const std::string set = dir / "Full";
    std::ostringstream out, err;
    RecordWatch watch{interrupted, nullptr, {}};
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    faults->FailWritesAfter(400 * 1024);
    std::string message;
    {
        RTE::ScopedFileSystemBackend installed(faults);
        message = MessageOf([&] { RunRecord(set, SmallRecording(), watch, out, err); });
    }
    const std::string start = "the recording failed: ";
    ASSERT_EQ(message.substr(0, start.size()), start) << message;
    EXPECT_NE(message.find("No space left on device"), std::string::npos) << message;
    EXPECT_NE(message.find(set), std::string::npos) << message;
    EXPECT_EQ(message.find("Store must be called in order"), std::string::npos) << message;
    EXPECT_EQ(out.str().find("recorded "), std::string::npos) << out.str();

    const auto reopened = SetApi::C_SetFactory::Instance().Open(set);
    const unsigned safe = reopened->IsOpen() ? reopened->GetSize() : 0;
    EXPECT_LT(safe, 20u);
    EXPECT_NE(message.find("; " + std::to_string(safe) + " of 20 images are safe in '" + set +
                           "' (complete in all cameras)"),
              std::string::npos)
        << message;
}

INSTANTIATE_TEST_SUITE_P(Writers, RecordTest,
                         ::testing::Values(RecordCase{false, "word", 0}, RecordCase{false, "float", 1},
                                           RecordCase{true, "word", 1}, RecordCase{true, "float", 0}),
                         [](const ::testing::TestParamInfo<RecordCase>& info) {
                             return std::string(info.param.plain ? "Plain" : "Stream") + "_" + info.param.type
                                    + "_pack" + std::to_string(info.param.pack);
                         });

TEST(RecordRefusalTest, NothingIsMadeForABadOptionOrAMissingFolder)
{
    TestSupport::TempDir dir;
    std::atomic<bool> interrupted{false};
    RecordWatch watch{interrupted, nullptr, {}};
    std::ostringstream out, err;
    S_RecordOptions options;
    options.cameras = 0;
    EXPECT_NE(MessageOf([&] { RunRecord(dir / "A", options, watch, out, err); }).find("--cameras"),
              std::string::npos);
    EXPECT_NE(MessageOf([&] { RunRecord(dir / "missing/A", S_RecordOptions{}, watch, out, err); })
                  .find("there is no folder"),
              std::string::npos);
    // A folder of the set's name without a set file is in the way as well.
    TestSupport::WriteFile(dir / "B", "not a set");
    EXPECT_NE(MessageOf([&] { RunRecord(dir / "B", S_RecordOptions{}, watch, out, err); }).find("in the way"),
              std::string::npos);
    EXPECT_FALSE(SetApi::C_SetFactory::Instance().Exists(dir / "A"));
    EXPECT_EQ(out.str(), "");
}

} // namespace
