// Damaged and hostile reader configurations: every one gives RTE::VerificationFailed with the
// XML reader's words, or reads as far as it is well-formed; none crashes, hangs or allocates
// without bound.
#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <QBuffer>

#include <gtest/gtest.h>

#include <random>
#include <string>

using SetApi::C_ContentPurpose;
using SetApi::Private::C_ReaderConfiguration;
using SetApi::Private::C_ReaderInfo;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

const std::string XmlErrorPrefix = "Reading reader-configuration from XML-content failed:\nXML-error is:\n";

// Writes the bytes to a file and loads it.
struct FileLoader {
    TempDir dir;
    C_ReaderConfiguration operator()(const std::string& bytes) const
    {
        const std::string path = dir / "ReaderConfiguration.xml";
        TestSupport::WriteFile(path, bytes);
        return SetApi::Private::LoadReaderConfiguration(QString::fromStdString(path));
    }
};

C_ReaderConfiguration ReadFromMemory(const std::string& bytes)
{
    QByteArray data = QByteArray::fromStdString(bytes);
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    return SetApi::Private::ReadReaderConfiguration(buffer);
}

std::string ValidDocument()
{
    C_ReaderConfiguration configuration;
    configuration.AddReader(C_ReaderInfo("FrameReaderV1", "Core.Set.Recording.FrameReader", "Frame0", "image stream",
                                         C_ContentPurpose::CreateFrameLink(0)));
    configuration.AddReader(C_ReaderInfo("Masks", "Core.Set.Recording.MaskFrameReader", "Mask0", "masks",
                                         C_ContentPurpose::CreateFrameLink(0)));
    configuration.MarkAsRepaired("details");
    TempDir dir;
    const std::string path = dir / "c.xml";
    SetApi::Private::SaveReaderConfiguration(configuration, QString::fromStdString(path));
    return TestSupport::ReadFile(path);
}

} // namespace

TEST(ReaderConfigurationBadInputTest, XmlErrorsCarryTheReadersWords)
{
    LogCapture quiet;
    FileLoader load;
    const std::pair<std::string, std::string> cases[] = {
        {"", "Premature end of document."},
        {"  \n\t", "Premature end of document."},
        {"<?xml version=\"1.0\"?>", "Premature end of document."},
        {"<ReaderCfg><ReaderInfo Name=\"a\"><ContentPurpose/></ReaderInfo>", "Premature end of document."},
        {std::string("<ReaderCfg>\0</ReaderCfg>", 24), "Unexpected '"},
        {"<ReaderCfg><ReaderInfo Name=\"\xFF\xFE\"><ContentPurpose/></ReaderInfo></ReaderCfg>",
         "Encountered incorrectly encoded content."},
        {"this is no XML at all", ""},
        {"<ReaderCfg></ReaderConfiguration>", ""},
        {"<ReaderCfg><ReaderInfo Name=\"a\" Name=\"b\"><ContentPurpose/></ReaderInfo></ReaderCfg>", ""},
        {"<ReaderCfg/><ReaderCfg/>", ""},
    };
    for (const auto& entry : cases) {
        EXPECT_THROW(load(entry.first), RTE::VerificationFailed) << entry.first;
        const std::string message = MessageOf([&] { load(entry.first); });
        EXPECT_EQ(0u, message.find(XmlErrorPrefix)) << message;
        EXPECT_NE(std::string::npos, message.find(entry.second, XmlErrorPrefix.size())) << message;
        EXPECT_GT(message.size(), XmlErrorPrefix.size()) << message;
    }
}

TEST(ReaderConfigurationBadInputTest, EveryTruncationFailsCleanly)
{
    LogCapture quiet;
    const auto load = ReadFromMemory;
    const std::string document = ValidDocument();
    const std::size_t rootEnd = document.find("</ReaderCfg>") + std::string("</ReaderCfg>").size();
    ASSERT_NE(std::string::npos, document.find("</ReaderCfg>"));
    for (std::size_t length = 0; length < rootEnd; ++length)
        EXPECT_THROW(load(document.substr(0, length)), RTE::VerificationFailed) << "cut at " << length;
    for (std::size_t length = rootEnd; length <= document.size(); ++length) {
        const C_ReaderConfiguration configuration = load(document.substr(0, length));
        EXPECT_EQ(2u, configuration.GetReaderCount());
        EXPECT_TRUE(configuration.HasBeenRepaired());
    }
}

TEST(ReaderConfigurationBadInputTest, BinaryJunk)
{
    LogCapture quiet;
    FileLoader load;
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> byte(0, 255);
    const std::string valid = ValidDocument();
    for (int round = 0; round < 50; ++round) {
        std::string junk(1 + random() % 4096, '\0');
        for (char& c : junk)
            c = static_cast<char>(byte(random));
        EXPECT_THROW(load(junk), RTE::VerificationFailed);

        // A valid document with a few bytes overwritten: read or refused, never worse.
        std::string damaged = valid;
        for (int i = 0; i < 3; ++i)
            damaged[random() % damaged.size()] = static_cast<char>(byte(random));
        try {
            load(damaged);
        } catch (const RTE::VerificationFailed&) {
        }
    }
}

TEST(ReaderConfigurationBadInputTest, HugeDocuments)
{
    LogCapture quiet;
    FileLoader load;
    // A long attribute value is data like any other.
    const std::string longName(8 * 1024 * 1024, 'N');
    const C_ReaderConfiguration configuration =
        load("<ReaderCfg><ReaderInfo Name=\"" + longName + "\"><ContentPurpose/></ReaderInfo></ReaderCfg>");
    ASSERT_EQ(1u, configuration.GetReaderCount());
    EXPECT_EQ(longName.size(), static_cast<std::size_t>(configuration.GetReader(0).Name.size()));

    // A single huge line of text that never closes, and one of many unknown elements.
    EXPECT_THROW(load("<ReaderCfg>" + std::string(16 * 1024 * 1024, 'x')), RTE::VerificationFailed);
    std::string many = "<ReaderCfg>";
    for (int i = 0; i < 200000; ++i)
        many += "<Unknown a=\"1\"/>";
    many += "<ReaderInfo Name=\"last\"><ContentPurpose/></ReaderInfo></ReaderCfg>";
    const C_ReaderConfiguration last = load(many);
    ASSERT_EQ(1u, last.GetReaderCount());
    EXPECT_EQ(QString("last"), last.GetReader(0).Name);

    // Nested entity definitions that would expand to gigabytes are stopped by the XML reader.
    std::string laughs = "<?xml version=\"1.0\"?><!DOCTYPE ReaderCfg [<!ENTITY l0 \"llllllllll\">";
    for (int i = 1; i < 10; ++i) {
        laughs += "<!ENTITY l" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            laughs += "&l" + std::to_string(i - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><ReaderCfg><ReaderInfo Name=\"&l9;\"><ContentPurpose/></ReaderInfo></ReaderCfg>";
    EXPECT_THROW(load(laughs), RTE::VerificationFailed);
}
