// The stream set reader: buffers assembled from healthy recordings, widening of small cameras,
// damaged recordings noted rather than fatal, and configurations that cannot be used.

#include "StreamSetBuilder.h"

#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSetReader.h>

#include <StreamIO/AttributeReader.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>
#include <DataObjects/GlobalAndFrameAttributes.h>

#include <RTE/DeviceData.h>
#include <RTE/Exception.h>
#include <RTE/PluginRegistry.h>

#include "support/TestSupport.h"

#include <filesystem>
#include <thread>

using namespace StreamSetTesting;
using SetApi::C_ContentPurpose;
using SetApi::C_ImageWriter;
using SetApi::Private::C_ReaderInfo;
using SetApi::Private::StreamSetReader;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

double ValueAt(const BufferApi::I_PlaneBase& plane, unsigned x, unsigned y)
{
    const std::size_t at = std::size_t(y) * plane.GetWidth() + x;
    switch (plane.GetDataType()) {
    case BufferApi::DATATYPE_BYTE:
        return static_cast<const std::uint8_t*>(plane.GetData())[at];
    case BufferApi::DATATYPE_WORD:
        return static_cast<const std::uint16_t*>(plane.GetData())[at];
    case BufferApi::DATATYPE_FLOAT:
        return static_cast<const float*>(plane.GetData())[at];
    case BufferApi::DATATYPE_DOUBLE:
        return static_cast<const double*>(plane.GetData())[at];
    default:
        ADD_FAILURE() << "unexpected plane type " << plane.GetDataType();
        return -1;
    }
}

// Counts the pixels of the plane that differ from `expected` inside the stream's own size and from
// 0 outside it, so one failing check reports a whole plane.
template <class Expected>
unsigned CountWrongPixels(const BufferApi::I_PlaneBase& plane, unsigned width, unsigned height, Expected expected)
{
    unsigned wrong = 0;
    for (unsigned y = 0; y < plane.GetHeight(); ++y)
        for (unsigned x = 0; x < plane.GetWidth(); ++x) {
            const double want = x < width && y < height ? expected(x, y) : 0.0;
            wrong += ValueAt(plane, x, y) != want;
        }
    return wrong;
}

unsigned WrongCameraPixels(const BufferApi::I_Frame& frame, unsigned frameIndex, unsigned image, unsigned width,
                           unsigned height, unsigned plane = 0)
{
    return CountWrongPixels(*frame.GetComponent(BufferApi::I_FrameImage::COMPONENT_PIXEL)->GetPlane(plane), width,
                            height, [&](unsigned x, unsigned y) { return PixelValue(frameIndex, image, plane, x, y); });
}

unsigned WrongMaskPixels(const BufferApi::I_Frame& frame, unsigned frameIndex, unsigned image, unsigned width,
                         unsigned height)
{
    return CountWrongPixels(*frame.GetMask()->GetPlane(0), width, height,
                            [&](unsigned x, unsigned y) { return MaskValue(frameIndex, image, x, y) ? 1.0 : 0.0; });
}

std::string AttributeText(BufferApi::I_Frame* frame, const std::string& name)
{
    return BufferApi::C_FrameAttributes(frame).GetString(name);
}

std::string AttributeText(BufferApi::I_Buffer* buffer, const std::string& name)
{
    return BufferApi::C_BufferAttributes(buffer).GetString(name);
}

// Writes a configuration of the given entries in place of the builder's.
void SaveEntries(const StreamSetBuilder& builder, const std::vector<C_ReaderInfo>& entries)
{
    SetApi::Private::C_ReaderConfiguration configuration;
    for (const C_ReaderInfo& entry : entries)
        configuration.AddReader(entry);
    SetApi::Private::SaveReaderConfiguration(configuration, builder.ConfigurationPath());
}

std::vector<C_ReaderInfo> EntriesOf(const StreamSetBuilder& builder)
{
    std::vector<C_ReaderInfo> entries;
    for (unsigned i = 0; i < builder.Configuration().GetReaderCount(); ++i)
        entries.push_back(builder.Configuration().GetReader(i));
    return entries;
}

const RTE::S_Scale kScaleX(0.25, -4.0, QStringLiteral("mm"), QStringLiteral("X"));
const RTE::S_Scale kScaleY(-0.25, 8.0, QStringLiteral("mm"), QStringLiteral("Y"));
const RTE::S_Scale kScaleI(2.0, 1.0, QStringLiteral("counts"), QStringLiteral("Intensity"));
const RTE::S_Scale kFieldScale(0.5, -3.0, QStringLiteral("K"), QStringLiteral("Temperature"));

constexpr unsigned kImages = 5;
constexpr unsigned kWidth = 24;
constexpr unsigned kHeight = 16;

// Two cameras with masks, a scalar field on frame 1, scales, frame and global attributes and two
// traces: every kind of stream the reader knows.
void BuildCompleteSet(StreamSetBuilder& builder)
{
    builder.AddCamera(kWidth, kHeight, kImages);
    builder.AddCamera(kWidth, kHeight, kImages);
    builder.AddMask(0, kWidth, kHeight, kImages);
    builder.AddMask(1, kWidth, kHeight, kImages);
    builder.AddScalarField(1, QStringLiteral("Temperature"), C_ImageWriter::Float, kFieldScale, kWidth, kHeight, kImages);
    builder.AddScales(0, kScaleX, kScaleY, kScaleI);
    builder.AddScales(1, kScaleX, kScaleY, kScaleI);
    builder.AddFrameAttributes(0, kImages);
    builder.AddFrameAttributes(1, kImages);
    builder.AddGlobalAttributes(kImages);
    builder.AddTraces(2, kImages, 4);
    builder.Finish();
}

void ExpectScale(const BufferApi::I_Scale& scale, const RTE::S_Scale& expected)
{
    EXPECT_EQ(scale.GetFactor(), expected.factor);
    EXPECT_EQ(scale.GetOffset(), expected.offset);
    EXPECT_EQ(scale.GetUnit(), expected.unit.toStdString());
    EXPECT_EQ(scale.GetDescription(), expected.description.toStdString());
}

} // namespace

TEST(StreamSetReader, AssemblesEveryKindOfStreamIntoTheBufferOfEachImage)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    BuildCompleteSet(builder);
    StreamSetReader reader(builder.ConfigurationPath());
    EXPECT_FALSE(reader.IsCorrupt());
    EXPECT_FALSE(reader.HasBeenRepaired());
    ASSERT_EQ(reader.GetImageCount(), kImages);
    EXPECT_EQ(reader.GetCorruptionStates().imageCounts, (std::vector<std::uint32_t>{kImages, kImages}));

    // Out of order, as a browser reads.
    for (unsigned image : {3u, 0u, 4u, 1u, 2u}) {
        SCOPED_TRACE(image);
        std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(image);
        ASSERT_EQ(buffer->GetNumberOfFrames(), 2u);
        for (unsigned f = 0; f < 2; ++f) {
            BufferApi::I_Frame* frame = buffer->GetFrame(f);
            ASSERT_EQ(frame->GetDataType(), BufferApi::DATATYPE_WORD);
            EXPECT_EQ(WrongCameraPixels(*frame, f, image, kWidth, kHeight), 0u);
            ASSERT_TRUE(frame->HasMask());
            EXPECT_EQ(WrongMaskPixels(*frame, f, image, kWidth, kHeight), 0u);
            ExpectScale(frame->GetScale(BufferApi::SCALE_X), kScaleX);
            ExpectScale(frame->GetScale(BufferApi::SCALE_Y), kScaleY);
            ExpectScale(frame->GetScale(BufferApi::SCALE_I), kScaleI);
            EXPECT_EQ(AttributeText(frame, "Exposure"), FrameAttributeText(f, image).toStdString());
            EXPECT_EQ(AttributeText(frame, "Window"), std::to_string(f) + ";" + std::to_string(image));
            // Every frame gets every scalar field of the set; frame 0 has no stream for it.
            ASSERT_EQ(BufferApi::GetNamesOfFrameBoundTypedScalars(frame), std::vector<std::string>{"Temperature"});
            BufferApi::C_TypedScalarFrame field(frame, "Temperature");
            EXPECT_EQ(field.GetDataType(), BufferApi::DATATYPE_FLOAT);
            EXPECT_EQ(field.GetScale().GetFactor(), 0.5);
            EXPECT_EQ(field.GetScale().GetOffset(), -3.0);
            EXPECT_EQ(field.GetScale().GetUnit(), "K");
            EXPECT_EQ(CountWrongPixels(*field.GetComponent(0), kWidth, kHeight,
                                       [&](unsigned x, unsigned y) { return f == 1 ? ScalarValue(1, image, x, y) : 0.0; }),
                      0u);
        }
        EXPECT_EQ(AttributeText(buffer.get(), "Counter"), GlobalAttributeText(image).toStdString());
        EXPECT_EQ(AttributeText(buffer.get(), std::string(RTE::DeviceData::DEVDATANAME) + "1"), "Channel1");
        EXPECT_EQ(AttributeText(buffer.get(), RTE::DeviceData::DEVDATASOURCE), "2");

        // The attributes alone are those of the loaded buffer.
        EXPECT_EQ(reader.GetAttributes(image), DataObjects::GetBufferAttributes(*buffer));
    }

    const DataObjects::BufferStructureInformation information = reader.GetBufferStructureInformation(4);
    EXPECT_EQ(information.frameCount, 2u);
    EXPECT_EQ(information.width, kWidth);
    EXPECT_EQ(information.height, kHeight);
    EXPECT_EQ(information.depth, 1u);
    EXPECT_EQ(information.dataType, BufferApi::DATATYPE_WORD);
    EXPECT_TRUE(information.isImage);
}

TEST(StreamSetReader, JoinsTheWholeTracesOfTheRecordingInOneBuffer)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 3);
    builder.AddTraces(2, 3, 4);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());
    ASSERT_TRUE(reader.HasFullTraces());

    const std::unique_ptr<BufferApi::I_Buffer> traces = reader.LoadFullTracesBuffer();
    ASSERT_EQ(traces->GetNumberOfFrames(), 2u);
    for (unsigned t = 0; t < 2; ++t) {
        BufferApi::I_Frame* frame = traces->GetFrame(t);
        ASSERT_EQ(frame->GetWidth(), 12u);
        ASSERT_EQ(frame->GetHeight(), 2u);
        ASSERT_EQ(frame->GetDataType(), BufferApi::DATATYPE_FLOAT);
        const auto& plane = *frame->GetComponentAt(0)->GetPlane(0);
        for (unsigned i = 0; i < 12; ++i) {
            const auto sample = TraceSample(t, i / 4, i % 4);
            EXPECT_EQ(ValueAt(plane, i, 0), float(sample.second)) << i;
            EXPECT_EQ(ValueAt(plane, i, 1), float(sample.first)) << i;
        }
        EXPECT_EQ(frame->GetScale(BufferApi::SCALE_X).GetUnit(), "ms");
        EXPECT_EQ(frame->GetScale(BufferApi::SCALE_I).GetDescription(), "Voltage " + std::to_string(t));
    }
}

TEST(StreamSetReader, LoadsFloatAndVolumeCamerasAndReportsWordLayoutForThem)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(12, 10, 2, C_ImageWriter::Word, 3);
    builder.AddCamera(12, 10, 2, C_ImageWriter::Float, 3);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());
    ASSERT_EQ(reader.GetImageCount(), 2u);

    // The last camera decides the element type of all frames; word data is converted.
    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(1);
    for (unsigned f = 0; f < 2; ++f) {
        ASSERT_EQ(buffer->GetFrame(f)->GetDataType(), BufferApi::DATATYPE_FLOAT);
        ASSERT_EQ(buffer->GetFrame(f)->GetDepth(), 3u);
        for (unsigned plane = 0; plane < 3; ++plane)
            EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(f), f, 1, 12, 10, plane), 0u) << f << " " << plane;
    }
    const DataObjects::BufferStructureInformation information = reader.GetBufferStructureInformation(0);
    EXPECT_EQ(information.dataType, BufferApi::DATATYPE_WORD);
    EXPECT_EQ(information.depth, 3u);
}

TEST(StreamSetReader, WidensSmallerCamerasIntoTheTopLeftCorner)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(640, 480, 2);
    builder.AddCamera(320, 240, 2);
    builder.AddMask(0, 640, 480, 2);
    builder.AddMask(1, 320, 240, 2);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());

    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(1);
    for (unsigned f = 0; f < 2; ++f) {
        EXPECT_EQ(buffer->GetFrame(f)->GetWidth(), 640u);
        EXPECT_EQ(buffer->GetFrame(f)->GetHeight(), 480u);
    }
    EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(0), 0, 1, 640, 480), 0u);
    EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(1), 1, 1, 320, 240), 0u);
    // Outside the small camera's frame the mask says: no valid pixel.
    EXPECT_EQ(WrongMaskPixels(*buffer->GetFrame(1), 1, 1, 320, 240), 0u);
}

TEST(StreamSetReader, OffersTheImagesEveryCameraDeliveredAndNotesTheDifference)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 100);
    builder.AddCamera(8, 4, 98);
    builder.AddFrameAttributes(1, 98);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());

    EXPECT_EQ(reader.GetImageCount(), 98u);
    EXPECT_TRUE(reader.IsCorrupt());
    const StreamSetReader::CorruptionStates& states = reader.GetCorruptionStates();
    EXPECT_EQ(states.maxImageCount, 100u);
    EXPECT_EQ(states.minImageCount, 98u);
    EXPECT_EQ(states.imageCounts, (std::vector<std::uint32_t>{100, 98}));
    // The attribute stream is probed at the last recorded image, which the short camera lacks.
    EXPECT_EQ(states.corruptAttributeFrames, std::vector<std::uint32_t>{1});

    EXPECT_EQ(WrongCameraPixels(*reader.LoadBuffer(97)->GetFrame(1), 1, 97, 8, 4), 0u);
    EXPECT_EQ(MessageOf([&] { reader.LoadBuffer(98); }), "Invalid image index");
    EXPECT_EQ(MessageOf([&] { reader.GetAttributes(98); }), "Invalid image index");
    EXPECT_EQ(MessageOf([&] { reader.GetBufferStructureInformation(98); }), "Invalid image index");
}

TEST(StreamSetReader, AFrameStreamThatCannotBeReadLeavesTheSetWithoutImages)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 6);
    const QString lost = builder.AddCamera(8, 4, 6);
    builder.Finish();
    builder.RemoveStream(lost);
    StreamSetReader reader(builder.ConfigurationPath());

    EXPECT_EQ(reader.GetCorruptionStates().imageCounts, (std::vector<std::uint32_t>{6, 0}));
    EXPECT_EQ(reader.GetCorruptionStates().maxImageCount, 6u);
    EXPECT_EQ(reader.GetImageCount(), 0u);
    EXPECT_TRUE(reader.IsCorrupt());
    for (unsigned image : {0u, 5u, 6u})
        EXPECT_EQ(MessageOf([&] { reader.LoadBuffer(image); }), "Invalid image index");
}

TEST(StreamSetReader, AConfigurationThatListsAnotherEntryFirstOffersNoImage)
{
    // Frame streams come first in every configuration this system writes; the minimum starts at 0
    // and only the first entry replaces it.
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddScales(0, kScaleX, kScaleY, kScaleI);
    builder.AddCamera(8, 4, 7);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());
    EXPECT_EQ(reader.GetImageCount(), 0u);
    EXPECT_EQ(reader.GetCorruptionStates().maxImageCount, 7u);
    EXPECT_TRUE(reader.IsCorrupt());
}

TEST(StreamSetReader, SideStreamsThatCannotBeReadAreLeftOutAndEverythingElseLoads)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(kWidth, kHeight, kImages);
    builder.AddCamera(kWidth, kHeight, kImages);
    const QString mask = builder.AddMask(0, kWidth, kHeight, kImages);
    const QString field = builder.AddScalarField(0, QStringLiteral("T"), C_ImageWriter::Word, kFieldScale, kWidth,
                                                 kHeight, kImages);
    const QString scales = builder.AddScales(0, kScaleX, kScaleY, kScaleI);
    builder.AddFrameAttributes(0, kImages);
    builder.AddFrameAttributes(1, kImages - 1); // ends before the last image
    builder.AddGlobalAttributes(kImages - 1);
    const QString traces = builder.AddTraces(1, kImages, 3);
    builder.Finish();
    for (const QString& prefix : {mask, field, scales, traces})
        builder.RemoveStream(prefix);
    StreamSetReader reader(builder.ConfigurationPath());

    const StreamSetReader::CorruptionStates& states = reader.GetCorruptionStates();
    EXPECT_TRUE(states.masksCorrupt);
    EXPECT_TRUE(states.scalarFieldsCorrupt);
    EXPECT_TRUE(states.scalesCorrupt);
    EXPECT_TRUE(states.tracesCorrupt);
    EXPECT_TRUE(states.globalAttributesCorrupt);
    EXPECT_EQ(states.corruptAttributeFrames, std::vector<std::uint32_t>{1});
    EXPECT_EQ(states.minImageCount, kImages);
    EXPECT_TRUE(reader.IsCorrupt());
    EXPECT_FALSE(reader.HasFullTraces());
    EXPECT_EQ(MessageOf([&] { reader.LoadFullTracesBuffer(); }), "No traces available.");

    ASSERT_EQ(reader.GetImageCount(), kImages);
    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(kImages - 1);
    for (unsigned f = 0; f < 2; ++f) {
        BufferApi::I_Frame* frame = buffer->GetFrame(f);
        EXPECT_EQ(WrongCameraPixels(*frame, f, kImages - 1, kWidth, kHeight), 0u);
        EXPECT_FALSE(frame->HasMask());
        EXPECT_TRUE(BufferApi::GetNamesOfFrameBoundTypedScalars(frame).empty());
        EXPECT_EQ(frame->GetScale(BufferApi::SCALE_X).GetFactor(), 1.0);
    }
    EXPECT_EQ(AttributeText(buffer->GetFrame(0), "Exposure"), FrameAttributeText(0, kImages - 1).toStdString());
    EXPECT_EQ(BufferApi::C_FrameAttributes(buffer->GetFrame(1)).Get("Exposure"), nullptr);
    EXPECT_EQ(BufferApi::C_BufferAttributes(buffer.get()).Get("Counter"), nullptr);
    EXPECT_EQ(BufferApi::C_BufferAttributes(buffer.get()).Get(RTE::DeviceData::DEVDATASOURCE), nullptr);
}

TEST(StreamSetReader, MasksScalarFieldsAndTracesThatEndEarlyCountAsCorrupt)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(kWidth, kHeight, kImages);
    builder.AddMask(0, kWidth, kHeight, kImages - 2);
    builder.AddScalarField(0, QStringLiteral("T"), C_ImageWriter::Double, kFieldScale, kWidth, kHeight, kImages - 1);
    builder.AddTraces(1, kImages - 1, 3);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());

    EXPECT_TRUE(reader.GetCorruptionStates().masksCorrupt);
    EXPECT_TRUE(reader.GetCorruptionStates().scalarFieldsCorrupt);
    EXPECT_TRUE(reader.GetCorruptionStates().tracesCorrupt);
    // Every image the set offers still loads, without the short streams.
    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(kImages - 1);
    EXPECT_FALSE(buffer->GetFrame(0)->HasMask());
    EXPECT_TRUE(BufferApi::GetNamesOfFrameBoundTypedScalars(buffer->GetFrame(0)).empty());
    EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(0), 0, kImages - 1, kWidth, kHeight), 0u);
}

TEST(StreamSetReader, ScalarFieldsOfTheSameNameShareTheTypeOfTheFirstStream)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(kWidth, kHeight, 2);
    builder.AddCamera(kWidth, kHeight, 2);
    builder.AddScalarField(0, QStringLiteral("T"), C_ImageWriter::Word, RTE::S_Scale(), kWidth, kHeight, 2);
    builder.AddScalarField(1, QStringLiteral("T"), C_ImageWriter::Double, kFieldScale, kWidth, kHeight, 2);
    builder.AddScalarField(1, QStringLiteral("A"), C_ImageWriter::Double, kFieldScale, kWidth, kHeight, 2);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());

    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(1);
    BufferApi::I_Frame* frame = buffer->GetFrame(1);
    // Sorted by name.
    EXPECT_EQ(BufferApi::GetNamesOfFrameBoundTypedScalars(frame), (std::vector<std::string>{"A", "T"}));
    BufferApi::C_TypedScalarFrame t(frame, "T");
    EXPECT_EQ(t.GetDataType(), BufferApi::DATATYPE_WORD);
    EXPECT_EQ(t.GetScale().GetFactor(), 1.0);
    EXPECT_EQ(CountWrongPixels(*t.GetComponent(0), kWidth, kHeight,
                               [](unsigned x, unsigned y) { return ScalarValue(1, 1, x, y); }),
              0u);
    EXPECT_EQ(BufferApi::C_TypedScalarFrame(frame, "A").GetDataType(), BufferApi::DATATYPE_DOUBLE);
}

TEST(StreamSetReader, EntriesThatDoNotFitTheirStreamsFailEveryLoadWithTheirWords)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 2);
    builder.AddMask(0, 8, 4, 2);
    builder.AddScalarField(0, QStringLiteral("T"), C_ImageWriter::Float, kFieldScale, 8, 4, 2);
    builder.AddScales(0, kScaleX, kScaleY, kScaleI);
    builder.AddFrameAttributes(0, 2);
    builder.Finish();
    const std::vector<C_ReaderInfo> healthy = EntriesOf(builder);
    const C_ContentPurpose twoFrames(true, false, true, 0, 1);
    const C_ContentPurpose noFrames(false, false, true);

    const auto loadWith = [&](unsigned entry, const C_ContentPurpose& purpose) {
        std::vector<C_ReaderInfo> entries = healthy;
        entries[entry].ContentPurpose = purpose;
        SaveEntries(builder, entries);
        StreamSetReader reader(builder.ConfigurationPath());
        return MessageOf([&] { reader.LoadBuffer(0); });
    };
    EXPECT_EQ(loadWith(0, noFrames), "FrameReader is not associated with frames.");
    EXPECT_EQ(loadWith(0, twoFrames), "Detected frame count inconsistency: FrameReader-FrameCount=1ContentPurpose-FrameCount=2");
    EXPECT_EQ(loadWith(1, noFrames), "FrameReader is not associated with frames.");
    EXPECT_EQ(loadWith(1, twoFrames), "Detected frame count inconsistency: MaskFrameReader-FrameCount=1ContentPurpose-FrameCount=2");
    EXPECT_EQ(loadWith(2, twoFrames),
              "Detected frame count inconsistency: ScalarFieldFrameReader-FrameCount=1ContentPurpose-FrameCount=2");
    EXPECT_EQ(loadWith(3, noFrames), "ScaleReader is not associated with frames.");
    EXPECT_EQ(loadWith(4, noFrames), "Attribute reader has invalid content purpose.");
    // A frame the buffer does not have is refused, not written.
    EXPECT_NE(loadWith(1, C_ContentPurpose(true, false, true, 3, 3)), "(no exception)");
}

TEST(StreamSetReader, UnusableConfigurationsMakeTheConstructorFail)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 2);
    builder.Finish();
    const std::string path = builder.ConfigurationPath().toStdString();
    const auto openFails = [&]() { return MessageOf([&] { StreamSetReader reader(builder.ConfigurationPath()); }); };
    const std::string xmlError = "Reading reader-configuration from XML-content failed:\nXML-error is:\n";

    EXPECT_EQ(MessageOf([] { StreamSetReader reader{QString()}; }), "Destination speci" "fication is empty");

    TestSupport::WriteFile(path, "");
    EXPECT_EQ(openFails().rfind(xmlError, 0), 0u) << openFails();
    TestSupport::WriteFile(path, "<ReaderCfg><ReaderInfo Name=\"x\"><ContentPurp");
    EXPECT_EQ(openFails(), "Detected unexpected/invalid XML-content.");
    TestSupport::WriteFile(path, "<ReaderCfg><ReaderInfo Name=\"x\"><ContentPurpose/></ReaderInfo>");
    EXPECT_EQ(openFails().rfind(xmlError, 0), 0u) << openFails();
    TestSupport::WriteFile(path, std::string("\0\x01\xff<ReaderCfg>", 14));
    EXPECT_EQ(openFails().rfind(xmlError, 0), 0u) << openFails();
    TestSupport::WriteFile(path, "<ReaderCfg></ReaderCfg>");
    EXPECT_EQ(openFails(), "Reader count is zero.");

    std::filesystem::remove(path);
    EXPECT_EQ(openFails().rfind("Could not open file: ", 0), 0u) << openFails();
}

TEST(StreamSetReader, ReadersThatCannotBeCreatedStopTheOpeningAndUnknownTypesArePassedOver)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 2);
    builder.Finish();
    const C_ReaderInfo camera = builder.Configuration().GetReader(0);
    const auto openWith = [&](const QString& type, const QString& name) {
        SaveEntries(builder, {camera, C_ReaderInfo(name, type, QStringLiteral("Other_"), QString(), C_ContentPurpose::CreateFrameLink(0))});
        return MessageOf([&] { StreamSetReader reader(builder.ConfigurationPath()); });
    };
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.FrameReader"), QStringLiteral("NoSuch")),
              "Could not create reader plugin: NoSuch");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.MaskFrameReader"), QStringLiteral("NoSuch")),
              "Could not create reader plugin: NoSuch");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.ScalarFieldFrameReader"), QStringLiteral("NoSuch")),
              "Could not create reader plugin: NoSuch");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.ScaleReader"), QStringLiteral("NoSuch")),
              "Could not create scale reader plugin: NoSuch");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.AttributeReader"), QStringLiteral("NoSuch")),
              "Could not create attribute reader plugin: NoSuch");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.TraceReader"), QStringLiteral("NoSuch")),
              "Could not create trace reader plugin: NoSuch");
    // A plug-in of another kind under the key is no reader of that kind.
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin("Core.Set.Recording.ScaleReader", "Impostor", "",
                                                        &SetApi::Private::C_AttributeReader::CreateObject);
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.ScaleReader"), QStringLiteral("Impostor")),
              "Could not create scale reader plugin: Impostor");
    RTE::C_PluginRegistry::GetInstance().UnregisterPlugin("Core.Set.Recording.ScaleReader", "Impostor");
    EXPECT_EQ(openWith(QStringLiteral("Core.Set.Recording.Hologram"), QStringLiteral("V7")), "(no exception)");

    StreamSetReader reader(builder.ConfigurationPath());
    EXPECT_FALSE(reader.IsCorrupt());
    EXPECT_EQ(reader.GetImageCount(), 2u);
}

TEST(StreamSetReader, HalfWrittenLastImageIsNotCounted)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    const QString camera = builder.AddCamera(64, 64, 10);
    builder.AddCamera(64, 64, 10);
    builder.Finish();
    const std::string data = builder.Name() + "/" + camera.toStdString() + ".ims";
    // Cut into the pixel data of the last image, as a crash during its write leaves the file.
    TruncateFile(data, FileSize(data) - 64 * 64);

    StreamSetReader reader(builder.ConfigurationPath());
    EXPECT_EQ(reader.GetCorruptionStates().imageCounts, (std::vector<std::uint32_t>{9, 10}));
    ASSERT_EQ(reader.GetImageCount(), 9u);
    EXPECT_EQ(WrongCameraPixels(*reader.LoadBuffer(8)->GetFrame(0), 0, 8, 64, 64), 0u);
}

TEST(StreamSetReader, ADamagedRecordFailsItsOwnLoadOnly)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    const QString camera = builder.AddCamera(64, 64, 9);
    builder.Finish();
    const std::string data = builder.Name() + "/" + camera.toStdString() + ".ims";
    FlipByte(data, FileSize(data) / 2);

    StreamSetReader reader(builder.ConfigurationPath());
    ASSERT_EQ(reader.GetImageCount(), 9u);
    unsigned failed = 0;
    for (unsigned image = 0; image < 9; ++image) {
        try {
            const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(image);
            EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(0), 0, image, 64, 64), 0u) << image;
        } catch (const RTE::Exception&) {
            ++failed;
        }
    }
    EXPECT_EQ(failed, 1u);
}

TEST(StreamSetReader, CamerasReadSideBySideGiveTheOutcomeOfReadingThemInOrder)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    std::vector<QString> cameras;
    for (unsigned camera = 0; camera < 4; ++camera)
        cameras.push_back(builder.AddCamera(64, 64, 9));
    builder.Finish();
    // The same record of cameras 2 and 4 is damaged: the load names the first of them.
    for (unsigned camera : {1u, 3u}) {
        const std::string data = builder.Name() + "/" + cameras[camera].toStdString() + ".ims";
        FlipByte(data, FileSize(data) / 2);
    }
    StreamSetReader reader(builder.ConfigurationPath());
    std::vector<std::string> failures;
    for (unsigned image = 0; image < 9; ++image) {
        const std::string message = MessageOf([&] { reader.LoadBuffer(image); });
        if (message != "(no exception)")
            failures.push_back(message);
    }
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_NE(failures[0].find(cameras[1].toStdString()), std::string::npos) << failures[0];

    // Two entries that feed the same frame: the later one wins, as when read one after the other.
    std::vector<C_ReaderInfo> entries = EntriesOf(builder);
    entries[3].ContentPurpose = C_ContentPurpose::CreateFrameLink(0);
    SaveEntries(builder, entries);
    StreamSetReader overlapping(builder.ConfigurationPath());
    const std::unique_ptr<BufferApi::I_Buffer> buffer = overlapping.LoadBuffer(0);
    EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(0), 3, 0, 64, 64), 0u);
    EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(3), 3, 0, 0, 0), 0u); // fed by no stream: zero
}

TEST(StreamSetReader, LoadsFromManyThreadsAtOnce)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(32, 16, 8);
    builder.AddCamera(16, 16, 8);
    builder.AddFrameAttributes(0, 8);
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());

    std::vector<unsigned> wrong(4, 0);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (unsigned round = 0; round < 5; ++round)
                for (unsigned image = 0; image < 8; ++image) {
                    const unsigned i = (image + t * 3) % 8;
                    const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(i);
                    wrong[t] += WrongCameraPixels(*buffer->GetFrame(0), 0, i, 32, 16) +
                                WrongCameraPixels(*buffer->GetFrame(1), 1, i, 16, 16);
                    wrong[t] += reader.GetAttributes(i).frames.size() != 2;
                }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<unsigned>(4, 0));
}

TEST(StreamSetReader, DirectReadsGiveTheSamePixels)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(640, 480, 3);
    builder.AddCamera(320, 200, 3);
    builder.Finish();
    StreamSetReader::Options options;
    options.directIo = true;
    StreamSetReader reader(builder.ConfigurationPath(), options);
    for (unsigned image = 0; image < 3; ++image) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = reader.LoadBuffer(image);
        EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(0), 0, image, 640, 480), 0u);
        EXPECT_EQ(WrongCameraPixels(*buffer->GetFrame(1), 1, image, 320, 200), 0u);
    }
}

// Repair opens again on the living reader without resetting the frame count: it grows by the kept
// frame streams until the recording is opened anew, while the image count and the streams are right.
TEST(StreamSetReader, RepairOnALivingReaderGrowsTheFrameCountUntilOpenedAnew)
{
    TempDir dir;
    StreamSetBuilder builder(dir / "Run");
    builder.AddCamera(8, 4, 2);
    builder.AddCamera(8, 4, 2);
    builder.RemoveStream(builder.AddScales(1, RTE::S_Scale(2.0), RTE::S_Scale(), RTE::S_Scale()));
    builder.Finish();
    StreamSetReader reader(builder.ConfigurationPath());
    ASSERT_TRUE(reader.IsCorrupt());
    reader.Repair();
    EXPECT_FALSE(reader.IsCorrupt());
    EXPECT_TRUE(reader.HasBeenRepaired());
    EXPECT_EQ(reader.GetDetailsOfRepair(), QStringLiteral("scales,"));
    EXPECT_EQ(reader.GetImageCount(), 2u);
    EXPECT_EQ(reader.GetBufferStructureInformation(0).frameCount, 4u);
    EXPECT_EQ(StreamSetReader(builder.ConfigurationPath()).GetBufferStructureInformation(0).frameCount, 2u);
}
