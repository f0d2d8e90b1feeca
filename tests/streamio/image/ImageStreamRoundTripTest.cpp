// Image streams written and read back: every element type, depth and frames per image, every
// compression, conversions into other target types, random access, and the plug-in's identity.

#include "ImageStreamTestSupport.h"

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/PluginRegistry.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using namespace ImageStreamTest;
using SetApi::C_ImageReader;
using SetApi::C_ImageWriter;

namespace {

QString Destination(const TestSupport::TempDir& dir, const std::string& prefix = "Frame0")
{
    return QString::fromStdString(dir / prefix);
}

} // namespace

TEST(ImageStreamRoundTripTest, EveryTypeShapeAndCompressionReadsBackBitExact)
{
    TestSupport::TempDir dir;
    int stream = 0;
    for (Bits bits : {Bits::Word, Bits::Byte, Bits::Float, Bits::Double, Bits::Mask})
        for (unsigned depth : {1u, 3u})
            for (unsigned frames : {1u, 2u})
                for (const char* compression : {"", "Zlib", "IMX"}) {
                    Shape shape;
                    shape.width = 37; // rows that are no multiple of anything
                    shape.height = 11;
                    shape.depth = depth;
                    shape.framesPerImage = frames;
                    shape.bits = bits;
                    shape.compression = QString::fromLatin1(compression);
                    const QString destination = Destination(dir, "Frame" + std::to_string(stream++));
                    WriteStream(destination, shape, 3);

                    C_ImageReader reader;
                    reader.Open(destination);
                    SCOPED_TRACE(Describe(shape));
                    EXPECT_EQ(reader.GetFrameWidth(), 37u);
                    EXPECT_EQ(reader.GetFrameHeight(), 11u);
                    EXPECT_EQ(reader.GetFrameDepth(), depth);
                    EXPECT_EQ(reader.GetFramesPerImageCount(), frames);
                    EXPECT_EQ(reader.GetImageCount(), 3u);
                    EXPECT_TRUE(reader.IsDataConsistent());
                    EXPECT_EQ(reader.IsWordData(), bits == Bits::Word);
                    EXPECT_EQ(reader.IsFloatData(), bits == Bits::Float);
                    EXPECT_EQ(reader.IsDoubleData(), bits == Bits::Double);
                    EXPECT_EQ(reader.IsBoolData(), bits == Bits::Byte || bits == Bits::Mask);
                    for (std::uint32_t image : {2u, 0u, 1u})
                        EXPECT_TRUE(ImageMatches(reader, shape, image));
                }
}

TEST(ImageStreamRoundTripTest, LargeCompressiblePlanesPackAndLandAtBlockBoundaries)
{
    TestSupport::TempDir dir;
    Shape shape;
    shape.width = 1000;
    shape.height = 700; // 1.4 MB per plane: several chunks of the packed stream
    for (const char* compression : {"", "IMX"}) {
        shape.compression = QString::fromLatin1(compression);
        const QString destination = Destination(dir, std::string("F") + compression);
        WriteStream(destination, shape, 4);
        const std::string data = Bytes(destination.toStdString() + ".ims");
        EXPECT_EQ(data.size() % 4096, 0u);
        if (shape.compression.isEmpty())
            EXPECT_EQ(data.size(), 4096 + 4 * (4096 + (shape.PlaneBytes() + 4095) / 4096 * 4096));
        else
            EXPECT_LT(data.size(), 4 * shape.PlaneBytes() / 2) << "the ramps pack to less than half";
        C_ImageReader reader;
        reader.Open(destination);
        for (std::uint32_t image : {3u, 1u, 0u, 2u})
            EXPECT_TRUE(ImageMatches(reader, shape, image));
    }
}

TEST(ImageStreamRoundTripTest, AStreamWithoutImagesOpensEmptyAndConsistent)
{
    TestSupport::TempDir dir;
    for (const char* compression : {"", "Zlib"}) {
        Shape shape;
        shape.compression = QString::fromLatin1(compression);
        const QString destination = Destination(dir, std::string("F") + compression);
        WriteStream(destination, shape, 0);
        C_ImageReader reader;
        reader.Open(destination);
        EXPECT_EQ(reader.GetImageCount(), 0u);
        EXPECT_TRUE(reader.IsDataConsistent());
    }
}

TEST(ImageStreamRoundTripTest, LoadFrameGivesThePlanesOneBehindTheOtherAndBadIndicesAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    Shape shape;
    shape.depth = 3;
    shape.framesPerImage = 2;
    const QString destination = Destination(dir);
    WriteStream(destination, shape, 2);
    C_ImageReader reader;
    const std::size_t planeElements = std::size_t(shape.width) * shape.height;
    std::vector<std::uint16_t> frame(planeElements * 3);
    EXPECT_THROW(reader.LoadFrame(0, 0, frame.data()), RTE::VerificationFailed); // not open
    reader.Open(destination);
    reader.LoadFrame(1, 1, frame.data());
    for (unsigned plane = 0; plane < 3; ++plane)
        EXPECT_EQ(std::memcmp(frame.data() + plane * planeElements, PlaneBytes(shape, 1, 3 + plane).data(),
                              shape.PlaneBytes()),
                  0)
            << "plane " << plane;
    EXPECT_THROW(reader.LoadPlane(2, 0, 0, frame.data()), RTE::VerificationFailed);
    EXPECT_THROW(reader.LoadPlane(0, 3, 0, frame.data()), RTE::VerificationFailed);
    EXPECT_THROW(reader.LoadPlane(0, 0, 2, frame.data()), RTE::VerificationFailed);
}

namespace {

// Writes one image of one plane of the given values and loads it into a target of type T; for
// bool targets the bytes the target received.
template <class Source, class Target>
auto Converted(const TestSupport::TempDir& dir, Bits bits, const std::vector<Source>& values,
               const char* compression = "")
{
    static int count = 0;
    const QString destination = QString::fromStdString(dir / ("C" + std::to_string(count++)));
    C_ImageWriter writer(unsigned(values.size()), 1, 1, 1, bits, QString::fromLatin1(compression));
    writer.Open(destination);
    writer.AppendFramesOfOneImage(values.data());
    writer.Close();
    C_ImageReader reader;
    reader.Open(destination);
    if constexpr (std::is_same<Target, bool>::value) {
        std::vector<std::uint8_t> bytes(values.size(), 0xAA);
        reader.LoadPlane(0, 0, 0, reinterpret_cast<bool*>(bytes.data()));
        return bytes;
    } else {
        std::vector<Target> target(values.size());
        reader.LoadPlane(0, 0, 0, target.data());
        return target;
    }
}

} // namespace

TEST(ImageStreamConversionTest, WordTargetsRoundAndClampFloatingValues)
{
    TestSupport::TempDir dir;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> floats{-5.0f, 0.4f, 0.5f, 1.5f, 2.49f, 65534.6f, 70000.0f, nan,
                                    std::numeric_limits<float>::infinity()};
    EXPECT_EQ((Converted<float, std::uint16_t>(dir, Bits::Float, floats)),
              (std::vector<std::uint16_t>{0, 0, 1, 2, 2, 65535, 65535, 0, 65535}));
    const std::vector<double> doubles{-0.0, 12.5, 1e300, -1e300};
    EXPECT_EQ((Converted<double, std::uint16_t>(dir, Bits::Double, doubles, "IMX")),
              (std::vector<std::uint16_t>{0, 13, 65535, 0}));
    const std::vector<std::uint8_t> bytes{0, 1, 200, 255};
    EXPECT_EQ((Converted<std::uint8_t, std::uint16_t>(dir, Bits::Byte, bytes)),
              (std::vector<std::uint16_t>{0, 1, 200, 255}));
}

TEST(ImageStreamConversionTest, FloatingTargetsTakeTheValues)
{
    TestSupport::TempDir dir;
    const std::vector<std::uint16_t> words{0, 1, 40000, 65535};
    EXPECT_EQ((Converted<std::uint16_t, float>(dir, Bits::Word, words, "Zlib")),
              (std::vector<float>{0.0f, 1.0f, 40000.0f, 65535.0f}));
    EXPECT_EQ((Converted<std::uint16_t, double>(dir, Bits::Word, words)),
              (std::vector<double>{0.0, 1.0, 40000.0, 65535.0}));
    const std::vector<double> doubles{0.1, -1e300, 1e300, 3.0};
    const std::vector<float> asFloats = Converted<double, float>(dir, Bits::Double, doubles);
    EXPECT_EQ(asFloats[0], 0.1f);
    EXPECT_EQ(asFloats[1], -std::numeric_limits<float>::infinity());
    EXPECT_EQ(asFloats[2], std::numeric_limits<float>::infinity());
    EXPECT_EQ(asFloats[3], 3.0f);
    const std::vector<double> nanDouble{std::numeric_limits<double>::quiet_NaN()};
    EXPECT_TRUE(std::isnan((Converted<double, float>(dir, Bits::Double, nanDouble))[0]));
    const std::vector<float> floats{-2.5f, 1e30f};
    EXPECT_EQ((Converted<float, double>(dir, Bits::Float, floats)), (std::vector<double>{-2.5, double(1e30f)}));
    const std::vector<std::uint8_t> mask{0, 1, 1};
    EXPECT_EQ((Converted<std::uint8_t, float>(dir, Bits::Mask, mask)), (std::vector<float>{0.0f, 1.0f, 1.0f}));
}

TEST(ImageStreamConversionTest, BoolTargetsCopyBytesOrTestForNonzero)
{
    TestSupport::TempDir dir;
    // Byte and mask streams are copied byte for byte into the (one byte per element) target.
    const std::vector<std::uint8_t> bytes{0, 1, 7, 255};
    EXPECT_EQ((Converted<std::uint8_t, bool>(dir, Bits::Byte, bytes, "Zlib")), bytes);
    const std::vector<std::uint8_t> mask{0, 1, 1, 0};
    EXPECT_EQ((Converted<std::uint8_t, bool>(dir, Bits::Mask, mask)), mask);
    // Other types give true (1) for every nonzero value.
    const std::vector<std::uint16_t> words{0, 1, 300, 0};
    EXPECT_EQ((Converted<std::uint16_t, bool>(dir, Bits::Word, words)), (std::vector<std::uint8_t>{0, 1, 1, 0}));
    const std::vector<float> floats{0.0f, -0.0f, 0.001f, std::numeric_limits<float>::quiet_NaN()};
    EXPECT_EQ((Converted<float, bool>(dir, Bits::Float, floats)), (std::vector<std::uint8_t>{0, 0, 1, 1}));
    const std::vector<double> doubles{1e-300, 0.0};
    EXPECT_EQ((Converted<double, bool>(dir, Bits::Double, doubles)), (std::vector<std::uint8_t>{1, 0}));
}

TEST(ImageStreamWriterTest, BadArgumentsAndCallOrderAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    EXPECT_THROW(C_ImageWriter(0, 10, 1, 1, Bits::Word, ""), RTE::VerificationFailed);
    EXPECT_THROW(C_ImageWriter(10, 10, 1, 1, Bits(6), ""), RTE::VerificationFailed);
    EXPECT_THROW(C_ImageWriter(10, 10, 1, 1, Bits::Word, "zlib"), RTE::VerificationFailed);
    EXPECT_THROW(C_ImageWriter(1u << 20, 1u << 20, 1, 1, Bits::Word, ""), RTE::VerificationFailed);

    std::vector<std::uint16_t> pixels(100);
    C_ImageWriter writer(10, 10, 2, 1, Bits::Word, "");
    EXPECT_THROW(writer.AppendPlanesOfOneImage({pixels.data(), pixels.data()}), RTE::VerificationFailed);
    writer.Open(QString::fromStdString(dir / "F"));
    EXPECT_THROW(writer.AppendFramesOfOneImage(pixels.data()), RTE::VerificationFailed); // depth 2
    EXPECT_THROW(writer.AppendPlanesOfOneImage({pixels.data()}), RTE::VerificationFailed);
    writer.AppendPlanesOfOneImage({pixels.data(), pixels.data()});
    writer.Close();
    EXPECT_THROW(writer.AppendPlanesOfOneImage({pixels.data(), pixels.data()}), RTE::VerificationFailed);
    C_ImageReader reader;
    reader.Open(QString::fromStdString(dir / "F"));
    EXPECT_EQ(reader.GetImageCount(), 1u);
}

TEST(ImageStreamWriterTest, MasksAreNeverCompressedAndAStreamIsReplacedWhole)
{
    TestSupport::TempDir dir;
    const QString destination = QString::fromStdString(dir / "Mask0");
    Shape shape;
    shape.compression = "IMX";
    WriteStream(destination, shape, 3);
    EXPECT_TRUE(TestSupport::ReadFile(dir / "Mask0.index.ims").size() > 0);

    // The same destination again as a mask stream: raw, its index gone, the old images too.
    shape.bits = Bits::Mask;
    WriteStream(destination, shape, 1);
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Mask0.index.ims"));
    EXPECT_EQ(Bytes(dir / "Mask0.ims").size(), 4096u + 4096u + 4096u);
    C_ImageReader reader;
    reader.Open(destination);
    EXPECT_EQ(reader.GetImageCount(), 1u);
    EXPECT_TRUE(reader.IsBoolData());
    EXPECT_TRUE(ImageMatches(reader, shape, 0));
}

TEST(ImageStreamPluginTest, TheReaderIsRegisteredUnderKeyAndNameWithCrossedGetters)
{
    C_ImageReader::pluginRegister();
    const auto entries = RTE::C_PluginRegistry::GetInstance().GetPlugins("Core.Set.Recording.FrameReader");
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [](const auto& e) { return e.name == C_ImageReader::PluginName; });
    ASSERT_NE(entry, entries.end());

    C_ImageWriter writer(4, 4, 1, 1, Bits::Word, "");
    EXPECT_EQ(writer.GetCorrespondingReaderType(), QStringLiteral("Core.Set.Recording.FrameReader"));
    EXPECT_EQ(writer.GetCorrespondingReaderName().toStdString(), entry->name);
    EXPECT_EQ(writer.GetFormatDescription().toStdString(), entry->description);

    std::unique_ptr<RTE::I_Plugin> plugin(entry->create(nullptr));
    auto* reader = dynamic_cast<SetApi::I_ImageFrameReader*>(plugin.get());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->GetPluginName(), "Core.Set.Recording.FrameReader");
    EXPECT_EQ(reader->GetPluginType(), entry->name);
    EXPECT_EQ(reader->GetPluginDescription(), entry->description);
}
