#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <support/TestSupport.h>

#include <QBuffer>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

using SetApi::C_ContentPurpose;
using SetApi::Private::C_ReaderConfiguration;
using SetApi::Private::C_ReaderInfo;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

// Three kinds of entry: a frame stream, the global attributes, and an entry that is not
// associated to frames but carries frame numbers, which the file does not keep.
C_ReaderConfiguration SampleConfiguration()
{
    C_ReaderConfiguration configuration;
    configuration.AddReader(C_ReaderInfo("FrameReaderV1", "Core.Set.Recording.FrameReader", "Frame0",
                                         "image stream", C_ContentPurpose::CreateFrameLink(0)));
    configuration.AddReader(C_ReaderInfo("Masks", "Core.Set.Recording.MaskFrameReader", "Mask3",
                                         "Qualmora mask stream format", C_ContentPurpose(true, false, false, 3, 5)));
    configuration.AddReader(C_ReaderInfo("AttributeReaderV1", "Core.Set.Recording.AttributeReader", "Camera1",
                                         "attributes", C_ContentPurpose::CreateGlobalAttributesLink()));
    configuration.AddReader(C_ReaderInfo(QString::fromUtf8("Sp\xC3\xA9zial <&> \"quoted\" 'x'"), "T", "P",
                                         "two\nlines\tand tab", C_ContentPurpose(false, false, true, 7, 9)));
    return configuration;
}

C_ReaderConfiguration ReadFrom(const QByteArray& bytes)
{
    QByteArray data = bytes;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    return SetApi::Private::ReadReaderConfiguration(buffer);
}

QByteArray WriteToBytes(const C_ReaderConfiguration& configuration)
{
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    SetApi::Private::WriteReaderConfiguration(configuration, buffer);
    return data;
}

C_ReaderConfiguration ReadWithPurpose(const std::string& purposeAttributes)
{
    return ReadFrom(QByteArray::fromStdString("<ReaderCfg><ReaderInfo Name=\"n\"><ContentPurpose " + purposeAttributes
                                              + "/></ReaderInfo></ReaderCfg>"));
}

void ExpectSameEntries(const C_ReaderConfiguration& expected, const C_ReaderConfiguration& actual)
{
    ASSERT_EQ(expected.GetReaderCount(), actual.GetReaderCount());
    for (unsigned i = 0; i < expected.GetReaderCount(); ++i)
        EXPECT_EQ(expected.GetReader(i), actual.GetReader(i)) << "entry " << i;
}

} // namespace

TEST(LoadSaveReaderConfigurationTest, ConfigurationNameIsFolderAndFixedFileName)
{
    EXPECT_EQ(QString("C:/data/Rec 1/ReaderConfiguration.xml"),
              SetApi::GetStreamSetConfigurationName(QString("C:/data/Rec 1")));
    EXPECT_EQ(std::string("/a/b/ReaderConfiguration.xml"), SetApi::GetStreamSetConfigurationName(std::string("/a/b")));
}

TEST(LoadSaveReaderConfigurationTest, SaveAndLoadKeepEntriesOrderAndRepair)
{
    LogCapture quiet;
    TempDir dir;
    const QString path = QString::fromStdString(dir / "ReaderConfiguration.xml");

    // Not repaired: the flag stays off through the file.
    const C_ReaderConfiguration plain = SampleConfiguration();
    SetApi::Private::SaveReaderConfiguration(plain, path);
    C_ReaderConfiguration loaded = SetApi::Private::LoadReaderConfiguration(path);
    ASSERT_EQ(4u, loaded.GetReaderCount());
    EXPECT_EQ(plain.GetReader(0), loaded.GetReader(0));
    EXPECT_EQ(plain.GetReader(1), loaded.GetReader(1));
    EXPECT_EQ(plain.GetReader(2), loaded.GetReader(2));
    // Frame numbers of an entry not associated to frames are not kept.
    EXPECT_EQ(C_ContentPurpose(false, false, true, 0, 0), loaded.GetReader(3).ContentPurpose);
    EXPECT_EQ(plain.GetReader(3).Name, loaded.GetReader(3).Name);
    EXPECT_EQ(plain.GetReader(3).FormatDescription, loaded.GetReader(3).FormatDescription);
    EXPECT_FALSE(loaded.HasBeenRepaired());

    // Repaired with an empty text: the element alone sets the flag. Saving over the larger file
    // leaves nothing of it behind.
    C_ReaderConfiguration repaired;
    repaired.AddReader(plain.GetReader(1));
    repaired.MarkAsRepaired("");
    SetApi::Private::SaveReaderConfiguration(repaired, path);
    loaded = SetApi::Private::LoadReaderConfiguration(path);
    ExpectSameEntries(repaired, loaded);
    EXPECT_TRUE(loaded.HasBeenRepaired());
    EXPECT_TRUE(loaded.GetDetailsOfRepair().isEmpty());

    // Repaired with a text of several lines and markup characters.
    repaired.MarkAsRepaired("Removed stream 'Frame1' & <Mask1>.\nImages: 10 -> 9");
    SetApi::Private::SaveReaderConfiguration(repaired, path);
    loaded = SetApi::Private::LoadReaderConfiguration(path);
    EXPECT_TRUE(loaded.HasBeenRepaired());
    EXPECT_EQ(repaired.GetDetailsOfRepair(), loaded.GetDetailsOfRepair());

    // An empty configuration is written and read without complaint.
    SetApi::Private::SaveReaderConfiguration(C_ReaderConfiguration(), path);
    loaded = SetApi::Private::LoadReaderConfiguration(path);
    EXPECT_EQ(0u, loaded.GetReaderCount());
    EXPECT_FALSE(loaded.HasBeenRepaired());

    // Nothing but the file itself is left in the folder.
    EXPECT_EQ(std::vector<std::string>{"ReaderConfiguration.xml"}, RTE::FileSystem::GetFiles(dir.path(), ".*", false, false));
}

TEST(LoadSaveReaderConfigurationTest, WrittenDocumentForm)
{
    C_ReaderConfiguration configuration = SampleConfiguration();
    configuration.MarkAsRepaired("fixed");
    const QString text = QString::fromUtf8(WriteToBytes(configuration));

    EXPECT_TRUE(text.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>")) << text.toStdString();
    EXPECT_TRUE(text.contains("\n    <ReaderInfo ")) << "indented";
    // Attributes in their written order.
    EXPECT_TRUE(text.contains(QRegularExpression(
        "<ReaderInfo Name=\"FrameReaderV1\" Type=\"Core.Set.Recording.FrameReader\" FilePrefix=\"Frame0\" "
        "FormatDescription=\"image stream\">\\s*<ContentPurpose IsAssociatedToFrames=\"true\" "
        "IsAssociatedToEntireImage=\"false\" IsAssociatedToAllImages=\"true\" StartFrame=\"0\" EndFrame=\"0\"/>")))
        << text.toStdString();
    EXPECT_TRUE(text.contains("IsAssociatedToAllImages=\"false\" StartFrame=\"3\" EndFrame=\"5\"/>"));
    // Entries not associated to frames carry no frame numbers.
    EXPECT_TRUE(text.contains("<ContentPurpose IsAssociatedToFrames=\"false\" IsAssociatedToEntireImage=\"true\" "
                              "IsAssociatedToAllImages=\"true\"/>"));
    EXPECT_EQ(2, text.count("StartFrame="));
    // The repair note follows the last entry, inside the root.
    EXPECT_TRUE(text.contains(QRegularExpression("</ReaderInfo>\\s*<CorruptionRepaired Details=\"fixed\"/>\\s*"
                                                 "</ReaderCfg>\\s*$")))
        << text.toStdString();

    EXPECT_FALSE(QString::fromUtf8(WriteToBytes(SampleConfiguration())).contains("CorruptionRepaired"));
}

TEST(LoadSaveReaderConfigurationTest, ContentPurposeAttributeTexts)
{
    const auto purposeOf = [](const std::string& attributes) { return ReadWithPurpose(attributes).GetReader(0).ContentPurpose; };
    EXPECT_EQ(C_ContentPurpose(true, true, true, 4294967295u, 12),
              purposeOf("IsAssociatedToFrames=\"true\" IsAssociatedToEntireImage=\"true\" "
                        "IsAssociatedToAllImages=\"true\" StartFrame=\"4294967295\" EndFrame=\"12\""));
    // A flag is true only for the exact text "true".
    for (const char* text : {"True", "TRUE", "1", " true", ""}) {
        const std::string flags = std::string("IsAssociatedToFrames=\"") + text + "\" IsAssociatedToEntireImage=\""
                                  + text + "\" IsAssociatedToAllImages=\"" + text + "\"";
        EXPECT_EQ(C_ContentPurpose(), purposeOf(flags)) << "flag text '" << text << "'";
    }
    // A frame number that is missing, or no decimal unsigned 32-bit number, reads as 0.
    for (const char* text : {"", "abc", "-1", "4294967296", "0x10", "3.5"})
        EXPECT_EQ(C_ContentPurpose(true, false, false, 0, 2),
                  purposeOf(std::string("IsAssociatedToFrames=\"true\" StartFrame=\"") + text + "\" EndFrame=\"2\""))
            << "frame text '" << text << "'";
    EXPECT_EQ(C_ContentPurpose(true, false, false, 0, 0), purposeOf("IsAssociatedToFrames=\"true\""));
}

TEST(LoadSaveReaderConfigurationTest, LenientReading)
{
    // Another root, unknown elements around and between the entries, nested wrappers, comments,
    // missing attributes and an extra child after ContentPurpose.
    const C_ReaderConfiguration configuration = ReadFrom(
        "<?xml version=\"1.0\"?>\n<!-- written elsewhere -->\n<SomethingElse version=\"9\">\n"
        "  <Header><ReaderCfg/></Header>\n"
        "  <ReaderInfo Type=\"K\"><ContentPurpose IsAssociatedToFrames=\"true\" StartFrame=\"1\" EndFrame=\"2\"/>"
        "<Extra a=\"b\"><Deeper/></Extra></ReaderInfo>\n"
        "  <Wrapper><ReaderInfo Name=\"N\" FilePrefix=\"P\" FormatDescription=\"F\">\n"
        "    <ContentPurpose/></ReaderInfo></Wrapper>\n"
        "  <CorruptionRepaired/>\n"
        "</SomethingElse>\n");
    ASSERT_EQ(2u, configuration.GetReaderCount());
    EXPECT_EQ(C_ReaderInfo("", "K", "", "", C_ContentPurpose(true, false, false, 1, 2)), configuration.GetReader(0));
    EXPECT_EQ(C_ReaderInfo("N", "", "P", "F", C_ContentPurpose()), configuration.GetReader(1));
    EXPECT_TRUE(configuration.HasBeenRepaired());
    EXPECT_TRUE(configuration.GetDetailsOfRepair().isEmpty());

    // Windows line ends and a byte order mark.
    const C_ReaderConfiguration windows =
        ReadFrom("\xEF\xBB\xBF<ReaderCfg>\r\n<ReaderInfo Name=\"A\">\r\n<ContentPurpose/>\r\n</ReaderInfo>\r\n"
                 "<CorruptionRepaired Details=\"d\"/>\r\n</ReaderCfg>\r\n");
    ASSERT_EQ(1u, windows.GetReaderCount());
    EXPECT_EQ(QString("A"), windows.GetReader(0).Name);
    EXPECT_EQ(QString("d"), windows.GetDetailsOfRepair());
}

TEST(LoadSaveReaderConfigurationTest, EntryWithoutContentPurposeIsRefused)
{
    LogCapture quiet;
    const std::string expected = "Detected unexpected/invalid XML-content.";
    const char* documents[] = {
        // No child, end of the document.
        "<ReaderCfg><ReaderInfo Name=\"a\"/></ReaderCfg>",
        // No child, then another entry.
        "<ReaderCfg><ReaderInfo Name=\"a\"/><ReaderInfo Name=\"b\"><ContentPurpose/></ReaderInfo></ReaderCfg>",
        // First child of another name, even with a ContentPurpose after it.
        "<ReaderCfg><ReaderInfo Name=\"a\"><Other/><ContentPurpose/></ReaderInfo></ReaderCfg>",
        // The document breaks off inside the entry.
        "<ReaderCfg><ReaderInfo Name=\"a\">",
    };
    for (const char* document : documents) {
        EXPECT_THROW(ReadFrom(document), RTE::VerificationFailed) << document;
        EXPECT_EQ(expected, MessageOf([&] { ReadFrom(document); })) << document;
    }
}

TEST(LoadSaveReaderConfigurationTest, ContentPurposeParserRefusesOtherTokens)
{
    LogCapture quiet;
    QXmlStreamReader xml(QByteArray("<ContentPurposes IsAssociatedToFrames=\"true\"/>"));
    EXPECT_EQ("Current XML-element is no 'ContentPurpose'-node.",
              MessageOf([&] { SetApi::Private::ReadContentPurpose(xml); })); // before the first token
    xml.readNext();                                                          // start of document
    xml.readNext();                                                          // start element
    EXPECT_THROW(SetApi::Private::ReadContentPurpose(xml), RTE::VerificationFailed);

    QXmlStreamReader purpose(QByteArray("<ContentPurpose IsAssociatedToFrames=\"true\" StartFrame=\"2\" EndFrame=\"4\"/>"));
    purpose.readNext();
    purpose.readNext();
    EXPECT_EQ(C_ContentPurpose(true, false, false, 2, 4), SetApi::Private::ReadContentPurpose(purpose));
    purpose.readNext(); // its end element
    EXPECT_THROW(SetApi::Private::ReadContentPurpose(purpose), RTE::VerificationFailed);
}

TEST(LoadSaveReaderConfigurationTest, FailuresOfFilesAndDevices)
{
    LogCapture log;
    TempDir dir;

    // Missing file and a folder: a plain RTE::Exception naming the path.
    for (const std::string& path : {dir / "missing.xml", dir.path()}) {
        try {
            SetApi::Private::LoadReaderConfiguration(QString::fromStdString(path));
            ADD_FAILURE() << "no exception for " << path;
        } catch (const RTE::Exception& e) {
            EXPECT_EQ(typeid(RTE::Exception), typeid(e));
            EXPECT_EQ("Could not open file: " + path, e.message().toStdString());
        }
    }
    EXPECT_TRUE(log.contains("Exception", "Could not open file: " + dir / "missing.xml"));

    // Devices in the wrong mode.
    QByteArray data("<ReaderCfg/>");
    QBuffer writeOnly(&data);
    writeOnly.open(QIODevice::WriteOnly);
    EXPECT_THROW(SetApi::Private::ReadReaderConfiguration(writeOnly), RTE::VerificationFailed);
    EXPECT_EQ("Device is not readable.", MessageOf([&] { SetApi::Private::ReadReaderConfiguration(writeOnly); }));
    QBuffer closed(&data);
    EXPECT_THROW(SetApi::Private::ReadReaderConfiguration(closed), RTE::VerificationFailed);

    QBuffer readOnly(&data);
    readOnly.open(QIODevice::ReadOnly);
    EXPECT_THROW(SetApi::Private::WriteReaderConfiguration(SampleConfiguration(), readOnly), RTE::FileWriteError);
    const QString notWritable =
        QString::fromStdString(MessageOf([&] { SetApi::Private::WriteReaderConfiguration(SampleConfiguration(), readOnly); }));
    EXPECT_TRUE(notWritable.startsWith("Device is not writable.")) << notWritable.toStdString();
    EXPECT_EQ(QByteArray("<ReaderCfg/>"), data);

    // Files that cannot be written: the text is the path alone.
    for (const std::string& path : {dir / "no folder/ReaderConfiguration.xml", dir.path()}) {
        const QString target = QString::fromStdString(path);
        EXPECT_THROW(SetApi::Private::SaveReaderConfiguration(SampleConfiguration(), target), RTE::FileWriteError);
        EXPECT_EQ(path, MessageOf([&] { SetApi::Private::SaveReaderConfiguration(SampleConfiguration(), target); }));
    }
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(dir.path()));
    EXPECT_TRUE(RTE::FileSystem::GetFiles(dir.path(), ".*", true, false).empty());
}

TEST(LoadSaveReaderConfigurationTest, FailedSaveLeavesTheFormerFile)
{
    LogCapture quiet;
    TempDir dir;
    const std::string path = dir / "ReaderConfiguration.xml";
    C_ReaderConfiguration former;
    former.AddReader(SampleConfiguration().GetReader(0));
    SetApi::Private::SaveReaderConfiguration(former, QString::fromStdString(path));
    const std::string formerBytes = TestSupport::ReadFile(path);

    using Operation = RTE::FaultInjectingFileSystem::Operation;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    const auto expectFailureLeavesFormerFile = [&](const char* what) {
        EXPECT_EQ(path, MessageOf([&] {
                      SetApi::Private::SaveReaderConfiguration(SampleConfiguration(), QString::fromStdString(path));
                  })) << what;
        EXPECT_EQ(formerBytes, TestSupport::ReadFile(path)) << what;
        EXPECT_EQ(std::vector<std::string>{"ReaderConfiguration.xml"},
                  RTE::FileSystem::GetFiles(dir.path(), ".*", false, false))
            << what;
        faults->ClearFaults();
    };

    faults->FailWritesAfter(40); // the disk fills up in the middle of the document
    expectFailureLeavesFormerFile("disk full");
    faults->FailCall(Operation::OpenForWriting, faults->CallCount(Operation::OpenForWriting) + 1);
    expectFailureLeavesFormerFile("open");
    faults->FailCall(Operation::ReplaceFile, faults->CallCount(Operation::ReplaceFile) + 1);
    expectFailureLeavesFormerFile("replace");

    // With the faults gone the next save goes through.
    C_ReaderConfiguration next = former;
    next.AddReader(SampleConfiguration().GetReader(1));
    SetApi::Private::SaveReaderConfiguration(next, QString::fromStdString(path));
    ExpectSameEntries(next, SetApi::Private::LoadReaderConfiguration(QString::fromStdString(path)));
}
