#include <SetApi/stream/ScalarFieldReader.h>
#include <SetApi/stream/ScalarFieldWriter.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using SetApi::C_ImageWriter;
using SetApi::C_ScalarFieldReader;
using SetApi::ScalarFieldWriter;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

const RTE::S_Scale Speed(2.5, -1.0, "m/s", "Velocity magnitude");

template <class T>
std::vector<T> Plane(unsigned size, unsigned image, unsigned plane)
{
    std::vector<T> values(size);
    for (unsigned k = 0; k < size; ++k)
        values[k] = static_cast<T>(k * 3 + image * 100 + plane * 1000) / T(2);
    return values;
}

// Writes `images` images of depth `depth` and returns the destination.
template <class T>
QString WriteField(const TempDir& dir, const std::string& prefix, C_ImageWriter::E_BitsPerPixel bits,
                   unsigned width, unsigned height, unsigned depth, unsigned images,
                   const QString& name = "Velocity magnitude", const RTE::S_Scale& scale = Speed)
{
    const QString destination = QString::fromStdString(dir / prefix);
    ScalarFieldWriter writer(width, height, depth, 1, bits, name, scale);
    writer.Open(destination);
    for (unsigned i = 0; i < images; ++i) {
        std::vector<std::vector<T>> planes;
        std::vector<const void*> pointers;
        for (unsigned p = 0; p < depth; ++p)
            planes.push_back(Plane<T>(width * height, i, p));
        for (const auto& plane : planes)
            pointers.push_back(plane.data());
        if (depth == 1)
            writer.AppendFramesOfOneImage(pointers[0]);
        else
            writer.AppendPlanesOfOneImage(pointers);
    }
    writer.Close();
    return destination;
}

std::string HeadOf(const QString& destination)
{
    return ScalarFieldWriter::GetFilenameForScalarFieldName(destination).toStdString();
}

} // namespace

TEST(ScalarFieldStreamTest, WriterArgumentsAndDescription)
{
    LogCapture quiet;
    EXPECT_THROW(ScalarFieldWriter(4, 4, 1, 1, C_ImageWriter::Float, "", Speed), RTE::VerificationFailed);
    EXPECT_EQ("Empty name of scalar field is not allowed",
              MessageOf([] { ScalarFieldWriter(4, 4, 1, 1, C_ImageWriter::Float, QString(), Speed); }));
    EXPECT_THROW(ScalarFieldWriter(4, 4, 1, 1, C_ImageWriter::Byte, "b", Speed), RTE::VerificationFailed);
    EXPECT_THROW(ScalarFieldWriter(4, 4, 1, 1, C_ImageWriter::Mask, "m", Speed), RTE::VerificationFailed);

    const ScalarFieldWriter writer(4, 4, 1, 1, C_ImageWriter::Double, "d", Speed);
    EXPECT_EQ(QString("Core.Set.Recording.ScalarFieldFrameReader"), writer.GetCorrespondingReaderType());
    EXPECT_EQ(QString("ScalarField"), writer.GetCorrespondingReaderName());
    EXPECT_EQ(QString("Qualmora scalar field stream format"), writer.GetFormatDescription());
    EXPECT_EQ(QString("C:/rec/ScalarField3-0.sfn"), ScalarFieldWriter::GetFilenameForScalarFieldName("C:/rec/ScalarField3"));
}

TEST(ScalarFieldStreamTest, ReaderBeforeOpenAndPluginIdentity)
{
    const C_ScalarFieldReader reader;
    EXPECT_TRUE(reader.GetNameOfScalarField().isEmpty());
    const RTE::S_Scale scale = reader.GetIntensityScale();
    EXPECT_EQ(1.0, scale.factor);
    EXPECT_EQ(0.0, scale.offset);
    EXPECT_TRUE(scale.unit.isEmpty());
    EXPECT_TRUE(scale.description.isEmpty());

    EXPECT_EQ("ScalarField", C_ScalarFieldReader::PluginName());
    EXPECT_EQ("Core.Set.Recording.ScalarFieldFrameReader", reader.GetPluginName());
    EXPECT_EQ("ScalarField", reader.GetPluginType());
    EXPECT_EQ("Reader for scalar field data of type word, float or double.", reader.GetPluginDescription());
}

TEST(ScalarFieldStreamTest, FieldsRoundTripWithNameAndScale)
{
    TempDir dir;
    const unsigned width = 6, height = 4, size = width * height;

    // Float, depth 1: the name and scale come back from the head file, the values from the stream.
    const QString floats = WriteField<float>(dir, "ScalarField0", C_ImageWriter::Float, width, height, 1, 3);
    C_ScalarFieldReader reader;
    reader.Open(floats);
    EXPECT_EQ(QString("Velocity magnitude"), reader.GetNameOfScalarField());
    EXPECT_EQ(Speed, reader.GetIntensityScale());
    EXPECT_EQ(width, reader.GetFrameWidth());
    EXPECT_EQ(height, reader.GetFrameHeight());
    EXPECT_EQ(1u, reader.GetFrameDepth());
    EXPECT_EQ(1u, reader.GetFramesPerImageCount());
    EXPECT_EQ(3u, reader.GetImageCount());
    EXPECT_TRUE(reader.IsDataConsistent());
    EXPECT_TRUE(reader.IsFloatData());
    EXPECT_FALSE(reader.IsDoubleData());
    EXPECT_FALSE(reader.IsWordData());
    EXPECT_FALSE(reader.IsBoolData());
    for (unsigned i = 0; i < 3; ++i) {
        std::vector<float> loaded(size);
        reader.LoadFrame(i, 0, loaded.data());
        EXPECT_EQ(Plane<float>(size, i, 0), loaded) << "image " << i;
        std::vector<double> widened(size);
        reader.LoadFrame(i, 0, widened.data());
        EXPECT_EQ(double(Plane<float>(size, i, 0)[5]), widened[5]);
    }

    // Double, depth 3, plane by plane, with markup and non-ASCII characters in name and scale.
    const QString name = QString::fromUtf8("Temperatur \xC2\xB0" "C <&>");
    const RTE::S_Scale kelvin(1e-300, 273.15, QString::fromUtf8("\xC2\xB0" "C"), "");
    const QString doubles = WriteField<double>(dir, "ScalarField1", C_ImageWriter::Double, width, height, 3, 2, name, kelvin);
    C_ScalarFieldReader doubleReader;
    doubleReader.Open(doubles);
    EXPECT_EQ(name, doubleReader.GetNameOfScalarField());
    EXPECT_EQ(kelvin, doubleReader.GetIntensityScale());
    EXPECT_TRUE(doubleReader.IsDoubleData());
    EXPECT_EQ(3u, doubleReader.GetFrameDepth());
    for (unsigned p = 0; p < 3; ++p) {
        std::vector<double> value(size);
        doubleReader.LoadPlane(1, p, 0, value.data());
        EXPECT_EQ(Plane<double>(size, 1, p), value) << "plane " << p;
    }

    // Every file of a field begins with its prefix; the field's name is in no file name.
    for (const std::string& file : RTE::FileSystem::GetFiles(dir.path(), ".*", true, false)) {
        EXPECT_EQ(0u, file.rfind("ScalarField", 0)) << file;
        EXPECT_EQ(std::string::npos, file.find("Velocity")) << file;
    }
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "ScalarField0-0.sfn"));
}

TEST(ScalarFieldStreamTest, HeadFileFailures)
{
    LogCapture quiet;
    TempDir dir;
    const QString destination = WriteField<float>(dir, "ScalarField0", C_ImageWriter::Float, 2, 2, 1, 1);
    const std::string head = HeadOf(destination);
    C_ScalarFieldReader reader;

    const auto failureOf = [&](const std::string& content) {
        TestSupport::WriteFile(head, content);
        try {
            reader.Open(destination);
        } catch (const RTE::VerificationFailed& e) {
            return e.message().toStdString();
        }
        return std::string("(no RTE::VerificationFailed)");
    };
    EXPECT_EQ("Attribute 'Name' is missing.", failureOf("<ScalarField><Name/></ScalarField>"));
    EXPECT_EQ("Attribute 'Name' is missing.", failureOf("<ScalarField><Name name=\"x\"/></ScalarField>"));
    const char* nameless[] = {
        "",
        "<ScalarField/>",
        "<ScalarField><Name Name=\"\"/></ScalarField>",
        "<ScalarField><Named Name=\"x\"/><Other/></ScalarField>",
        "<ScalarField><Na",                 // breaks off before the name
        "<ScalarField>\xFF\xFE<Name Name=\"x\"/></ScalarField>", // invalid UTF-8 before the name
        "binary junk \x01\x02\x03\x80\x81",
    };
    for (const char* content : nameless)
        EXPECT_EQ("Wrong type of XML file", failureOf(content)) << content;
    static const char withNul[] = "<ScalarField>\0<Name Name=\"x\"/></ScalarField>";
    EXPECT_EQ("Wrong type of XML file", failureOf(std::string(withNul, sizeof withNul - 1)));
    // A scale element that is not a scale is a damaged head file.
    const std::string noFailure = "(no RTE::VerificationFailed)";
    EXPECT_NE(noFailure, failureOf("<ScalarField><Name Name=\"x\"/><ScaleI/></ScalarField>"));
    EXPECT_NE(noFailure, failureOf("<ScalarField><Name Name=\"x\"/><ScaleI factor=\"a\" offset=\"0\"/></ScalarField>"));
    // The failures leave the reader as it was.
    EXPECT_TRUE(reader.GetNameOfScalarField().isEmpty());

    TestSupport::WriteFile(head, "<ScalarField><Name Name=\"x\"/></ScalarField>");
    const QString missing = QString::fromStdString(dir / "ScalarField9");
    EXPECT_THROW(reader.Open(missing), RTE::VerificationFailed);
    EXPECT_EQ("Open file error for read-only mode for " + HeadOf(missing), MessageOf([&] { reader.Open(missing); }));

    // A head file without its image stream fails in the image reader.
    TestSupport::WriteFile(HeadOf(missing), "<ScalarField><Name Name=\"x\"/></ScalarField>");
    EXPECT_THROW(reader.Open(missing), RTE::Exception);
    EXPECT_TRUE(reader.GetNameOfScalarField().isEmpty());

    // A head file that cannot be created.
    ScalarFieldWriter writer(2, 2, 1, 1, C_ImageWriter::Float, "f", Speed);
    const QString nowhere = QString::fromStdString(dir / "no folder/ScalarField0");
    const std::string message = MessageOf([&] { writer.Open(nowhere); });
    EXPECT_EQ(0u, message.find("Opening file '" + HeadOf(nowhere) + "' for writing failed: ")) << message;
    EXPECT_GT(message.size(), ("Opening file '" + HeadOf(nowhere) + "' for writing failed: ").size()) << message;
    EXPECT_THROW(writer.Open(nowhere), RTE::VerificationFailed);
}

TEST(ScalarFieldStreamTest, LenientHeadFiles)
{
    LogCapture quiet;
    TempDir dir;
    const QString destination = WriteField<float>(dir, "ScalarField0", C_ImageWriter::Float, 2, 2, 1, 1);
    const std::string written = TestSupport::ReadFile(HeadOf(destination));
    const std::size_t scaleStart = written.find("<ScaleI");
    ASSERT_NE(std::string::npos, scaleStart) << written;
    const std::string scaleElement = written.substr(scaleStart, written.find("</ScalarField>") - scaleStart);

    const auto openWith = [&](const std::string& content) {
        TestSupport::WriteFile(HeadOf(destination), content);
        C_ScalarFieldReader reader;
        reader.Open(destination);
        return std::make_pair(reader.GetNameOfScalarField(), reader.GetIntensityScale());
    };

    // Another root, the scale before the name, unknown elements around them.
    auto result = openWith("<?xml version=\"1.0\"?><Field><Other/>" + scaleElement
                           + "<Extra><Name Name=\"inside\"/></Extra></Field>");
    EXPECT_EQ(QString("inside"), result.first);
    EXPECT_EQ(Speed, result.second);

    // A name alone: the scale stays the identity.
    result = openWith("<ScalarField><Name Name=\"bare\"/></ScalarField>");
    EXPECT_EQ(QString("bare"), result.first);
    EXPECT_EQ(RTE::S_Scale(), result.second);

    // A document that breaks off anywhere after the name is accepted with that name.
    const std::size_t nameEnd = written.find("/>", written.find("<Name")) + 2;
    for (std::size_t length = nameEnd; length <= written.size(); ++length) {
        result = openWith(written.substr(0, length));
        EXPECT_EQ(QString("Velocity magnitude"), result.first) << "cut at " << length;
    }
    EXPECT_EQ(Speed, result.second);
    // ... and anywhere before it is not.
    for (std::size_t length = 0; length < nameEnd - 2; ++length)
        EXPECT_THROW(openWith(written.substr(0, length)), RTE::VerificationFailed) << "cut at " << length;
}
