// A scale as one XML element: bit-exact numbers, texts of any kind, and clear failures for
// garbled elements.

#include "scales/NumberText.h"

#include <StreamIO/ScaleXml.h>

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <gtest/gtest.h>

#include <limits>
#include <random>

using SetApi::Private::FormatNumber;
using SetApi::Private::ParseNumber;
using SetApi::Private::ReadScale;
using SetApi::Private::WriteScale;
using TestSupport::BitsOf;
using TestSupport::DoubleFromBits;
using TestSupport::MessageOf;

namespace {

QString Document(const std::vector<RTE::S_Scale>& scales)
{
    QString text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement("Head");
    for (std::size_t i = 0; i < scales.size(); ++i)
        WriteScale(writer, "Scale" + QString::number(i), scales[i]);
    writer.writeEndElement();
    writer.writeEndDocument();
    return text;
}

// Reads every element below the root as a scale.
std::vector<RTE::S_Scale> ReadAll(const QString& text)
{
    QXmlStreamReader reader(text);
    std::vector<RTE::S_Scale> scales;
    reader.readNextStartElement(); // the root
    while (reader.readNextStartElement())
        scales.push_back(ReadScale(reader));
    return scales;
}

// ReadScale on the first child of a root element.
RTE::S_Scale ReadFirst(const QString& text)
{
    QXmlStreamReader reader(text);
    reader.readNextStartElement();
    reader.readNextStartElement();
    return ReadScale(reader);
}

} // namespace

TEST(ScaleXmlTest, OddNumbersAndTextsReadBackBitForBit)
{
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<RTE::S_Scale> scales{
        RTE::S_Scale(),
        RTE::S_Scale(std::numeric_limits<double>::quiet_NaN(), -0.0, QString::fromUtf8("µm"),
                     QString::fromUtf8("Länge")),
        RTE::S_Scale(DoubleFromBits(0xfff0000000000001ull), 1e-300, "a\nb\tc", "\"<&>'"),
        RTE::S_Scale(4.9e-324, -inf, "", "  spaces  "),
        RTE::S_Scale(inf, std::numeric_limits<double>::max(), "x", "y"),
        RTE::S_Scale(0.1, 1.0 / 3.0, QString::fromUtf8("\xe2\x84\x83"), ""),
    };
    const std::vector<RTE::S_Scale> back = ReadAll(Document(scales));
    ASSERT_EQ(back.size(), scales.size());
    for (std::size_t i = 0; i < scales.size(); ++i) {
        EXPECT_EQ(BitsOf(back[i].factor), BitsOf(scales[i].factor)) << i;
        EXPECT_EQ(BitsOf(back[i].offset), BitsOf(scales[i].offset)) << i;
        EXPECT_EQ(back[i].unit, scales[i].unit) << i;
        EXPECT_EQ(back[i].description, scales[i].description) << i;
    }
    EXPECT_EQ(FormatNumber(0.1), "0.1");
    EXPECT_EQ(FormatNumber(-0.0), "-0");
    EXPECT_EQ(FormatNumber(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(ScaleXmlTest, EveryDoubleSurvivesItsText)
{
    std::mt19937_64 random(11);
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t bits = random();
        double back = 0.0;
        const QString text = FormatNumber(DoubleFromBits(bits));
        ASSERT_TRUE(ParseNumber(text, back)) << text.toStdString();
        ASSERT_EQ(BitsOf(back), bits) << text.toStdString();
    }
}

TEST(ScaleXmlTest, ReadScaleConsumesTheElementWithItsChildren)
{
    const QString text = "<Head><Scale factor='2' offset='3' unit='mm'><Child><Deeper/></Child>text</Scale>"
                         "<Next factor='1' offset='0'/></Head>";
    QXmlStreamReader reader(text);
    reader.readNextStartElement();
    reader.readNextStartElement();
    const RTE::S_Scale scale = ReadScale(reader);
    EXPECT_EQ(scale, RTE::S_Scale(2, 3, "mm", "")); // an absent description reads as empty
    EXPECT_TRUE(reader.isEndElement());
    EXPECT_EQ(reader.name().toString(), "Scale");
    ASSERT_TRUE(reader.readNextStartElement());
    EXPECT_EQ(reader.name().toString(), "Next");
}

TEST(ScaleXmlTest, GarbledElementsRaiseVerificationFailedWithClearTexts)
{
    TestSupport::LogCapture log;
    EXPECT_EQ(MessageOf([] { ReadFirst("<H>\n<S offset='1'/></H>"); }),
              "Scale element 'S' in line 2 has no attribute 'factor'");
    EXPECT_EQ(MessageOf([] { ReadFirst("<H><S factor='1.5x' offset='1'/></H>"); }),
              "Scale element 'S' in line 1: attribute 'factor' is not a number: '1.5x'");
    EXPECT_EQ(MessageOf([] { ReadFirst("<H><S factor='1' offset='" + QString(100000, '9') + "'/></H>"); }),
              "Scale element 'S' in line 1: attribute 'offset' is not a number: '" + std::string(40, '9') + "...'");
    for (const char* garbled : {"", " ", "1,5", "0x10", "1e400", "NaN", "nan:0x0000000000000001", "nan:0x7ff8",
                                "nan:0xzzzzzzzzzzzzzzzz", "1 2", "inf inf", "\xc3\x28"}) {
        EXPECT_THROW(ReadFirst(QString("<H><S factor='%1' offset='0'/></H>").arg(QString::fromUtf8(garbled))),
                     RTE::VerificationFailed)
            << garbled;
    }
    // Not on a start element, and XML that breaks off inside the element.
    QXmlStreamReader notStarted("<H/>");
    EXPECT_THROW(ReadScale(notStarted), RTE::VerificationFailed);
    EXPECT_THROW(ReadFirst("<H><S factor='1' offset='0'><Child>"), RTE::VerificationFailed);
    static const char withNul[] = "<H><S factor='1' offset='0'>\0</S></H>";
    EXPECT_THROW(ReadFirst(QString::fromUtf8(withNul, sizeof(withNul) - 1)), RTE::VerificationFailed);
}
