#include <Storage/SettingsDocument.h>
#include <Storage/SettingsSerializer.h>

#include <RTE/Exception.h>

#include "SettingsTestData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>

using Storage::AutoSyncMode;
using Storage::SettingsDocument;
using Storage::SettingsNode;
using SettingsTestData::Q;

namespace {

std::unique_ptr<SettingsDocument> LoadFile(const std::string& path, AutoSyncMode mode = AutoSyncMode::ReadOnly)
{
    auto document = std::make_unique<SettingsDocument>(Q(path), mode);
    document->Load();
    return document;
}

void Save(const Storage::Settings& settings, const std::string& path)
{
    Storage::Private::SettingsSerializer(settings).SaveAs(Q(path));
}

// Loads the text as a document and returns the failure's message; empty if it loaded.
std::string LoadFailure(const TestSupport::TempDir& dir, const std::string& text)
{
    const std::string path = dir / "Settings_Test.xml";
    TestSupport::WriteFile(path, text);
    try {
        LoadFile(path);
    } catch (const RTE::Exception& e) {
        EXPECT_NE(e.message().indexOf(Q(path)), -1) << "message does not name the file: " << e.what();
        return e.what();
    }
    return {};
}

std::string Document(const std::string& body, const std::string& format = "1.0")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SettingsDocument formatVersion=\"" + format + "\">" +
           body + "</SettingsDocument>\n";
}

} // namespace

TEST(SettingsDocument, RichTreeRoundTripsExactly)
{
    TestSupport::TempDir dir;
    const SettingsNode tree = SettingsTestData::RichTree();
    Save(tree, dir / "rich.xml");
    const auto loaded = LoadFile(dir / "rich.xml");
    EXPECT_TRUE(Storage::AreEqual(tree, *loaded));
    EXPECT_EQ(loaded->GetPath(), Q(dir / "rich.xml"));

    // The loaded document saves to the same bytes: nothing drifts on a second round.
    Save(*loaded, dir / "again.xml");
    EXPECT_EQ(TestSupport::ReadFile(dir / "rich.xml"), TestSupport::ReadFile(dir / "again.xml"));
}

TEST(SettingsDocument, OnlyUnrepresentableTextIsEncoded)
{
    TestSupport::TempDir dir;
    SettingsNode node("top");
    node.SetValue("readable", "a<b & \"c\"\tline\nnext");
    node.SetValue("binary", QString(QChar(1)));
    Save(node, dir / "s.xml");
    const std::string text = TestSupport::ReadFile(dir / "s.xml");
    EXPECT_NE(text.find("formatVersion=\"1.0\""), std::string::npos);
    EXPECT_NE(text.find("value=\"a&lt;b &amp; &quot;c&quot;&#9;line&#10;next\""), std::string::npos) << text;
    EXPECT_NE(text.find("valueBase64=\"AQA=\""), std::string::npos) << text;
    EXPECT_EQ(text.find('\x01'), std::string::npos);
}

TEST(SettingsDocument, EmptySettingsRoundTrip)
{
    TestSupport::TempDir dir;
    Save(SettingsNode(), dir / "empty.xml");
    const auto loaded = LoadFile(dir / "empty.xml");
    EXPECT_TRUE(Storage::AreEqual(SettingsNode(), *loaded));

    // Absent attributes read as empty text and version 0.
    TestSupport::WriteFile(dir / "min.xml", Document("<Settings/>"));
    EXPECT_TRUE(Storage::AreEqual(SettingsNode(), *LoadFile(dir / "min.xml")));
}

TEST(SettingsDocument, ReaderAcceptsWhatTheFormatAllows)
{
    TestSupport::TempDir dir;
    // Interleaved values and children, comments, unknown elements of a later minor version,
    // text and content inside Value, which are all ignored.
    TestSupport::WriteFile(dir / "s.xml",
                           Document("<!-- c --><Future x='1'><Settings name='ignored'/></Future>"
                                    "<Settings name='top' version='-12'>"
                                    "  <Value name='a' value='1'>ignored<b/></Value>"
                                    "  <Settings name='child'/>"
                                    "  <Value name='b' valueBase64=''/>"
                                    "  <Unknown><Value name='c' value='3'/></Unknown>"
                                    "  stray text"
                                    "</Settings><?pi data?>",
                                    "1.7") +
                               "<!-- trailing comment -->");
    const auto loaded = LoadFile(dir / "s.xml");
    EXPECT_EQ(loaded->GetName(), "top");
    EXPECT_EQ(loaded->GetVersion(), -12);
    EXPECT_EQ(loaded->GetValueNames(), QStringList({"a", "b"}));
    EXPECT_EQ(loaded->GetValue("b", "x"), "");
    ASSERT_EQ(loaded->GetChildCount(), 1);
    EXPECT_EQ(loaded->GetChild(0).GetName(), "child");
}

TEST(SettingsDocument, LoadFailuresNameTheFileAndTheProblem)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::string top = "<Settings name='t'/>";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "not well-formed"},
        {"<?xml version='1.0'?>", "not well-formed"},
        {"<SettingsDocument formatVersion='1.0'><Settings>", "not well-formed"},
        {Document(top) + "<extra/>", "not well-formed"},
        {"<Other formatVersion='1.0'>" + top + "</Other>", "root element 'Other'"},
        {"<SettingsDocument>" + top + "</SettingsDocument>", "no format version"},
        {Document(top, "2.0"), "newer than the supported version 1.x"},
        {Document(top, "0.9"), "unknown format version"},
        {Document(top, "1"), "invalid format version '1'"},
        {Document(top, "1.0.0"), "invalid format version"},
        {Document(top, " 1.0"), "invalid format version"},
        {Document(top, "99999999999.0"), "invalid format version"},
        {Document(""), "holds no 'Settings' element"},
        {Document(top + top), "more than one top-level"},
        {Document("<Settings version='abc'/>"), "invalid settings version 'abc'"},
        {Document("<Settings version='1.5'/>"), "invalid settings version"},
        {Document("<Settings version=''/>"), "invalid settings version"},
        {Document("<Settings version='+1'/>"), "invalid settings version"},
        {Document("<Settings version='2147483648'/>"), "invalid settings version"},
        {Document("<Settings><Value name='a'/><Value name='a'/></Settings>"), "value 'a' twice"},
        {Document("<Settings name='a' nameBase64='YQA='/>"), "both plain and in base64"},
        {Document("<Settings classBase64='YQ=='/>"), "invalid base64"},
        {Document("<Settings><Value valueBase64='!!!'/></Settings>"), "invalid base64"},
        {"<!DOCTYPE SettingsDocument []>" + Document(top), "document type declaration"},
    };
    for (const auto& [text, expected] : cases) {
        const std::string message = LoadFailure(dir, text);
        EXPECT_NE(message.find(expected), std::string::npos) << "document: " << text << "\nmessage: " << message;
    }
    EXPECT_TRUE(log.contains("Exception", "Settings_Test.xml"));
}

TEST(SettingsDocument, NestingIsLimitedTo256Levels)
{
    TestSupport::TempDir dir;
    auto nested = [](int levels) {
        std::string body;
        for (int i = 0; i < levels; ++i)
            body += "<Settings>";
        for (int i = 0; i < levels; ++i)
            body += "</Settings>";
        return Document(body);
    };
    TestSupport::WriteFile(dir / "ok.xml", nested(256));
    EXPECT_NO_THROW(LoadFile(dir / "ok.xml"));
    EXPECT_NE(LoadFailure(dir, nested(257)).find("deeper than 256"), std::string::npos);
    // Far deeper, and unknown elements: neither may exhaust the stack.
    EXPECT_NE(LoadFailure(dir, nested(100000)).find("deeper than 256"), std::string::npos);
    std::string unknown;
    for (int i = 0; i < 100000; ++i)
        unknown += "<u>";
    for (int i = 0; i < 100000; ++i)
        unknown += "</u>";
    TestSupport::WriteFile(dir / "unknown.xml", Document("<Settings>" + unknown + "</Settings>"));
    EXPECT_NO_THROW(LoadFile(dir / "unknown.xml"));

    // The writer refuses what the reader would refuse, and leaves nothing behind.
    SettingsNode deep;
    Storage::Settings* leaf = &deep;
    for (int i = 1; i < 256; ++i)
        leaf = &leaf->AddChild("");
    EXPECT_NO_THROW(Save(deep, dir / "deep.xml"));
    EXPECT_TRUE(Storage::AreEqual(deep, *LoadFile(dir / "deep.xml")));
    leaf->AddChild("");
    EXPECT_THROW(Save(deep, dir / "deeper.xml"), RTE::FileWriteError);
    EXPECT_FALSE(QFile::exists(Q(dir / "deeper.xml")));
}

TEST(SettingsDocument, MissingOrUnreadableFilesRaiseFileError)
{
    TestSupport::TempDir dir;
    try {
        LoadFile(dir / "missing.xml");
        FAIL() << "loaded a missing file";
    } catch (const RTE::FileError& e) {
        EXPECT_NE(e.message().indexOf(Q(dir / "missing.xml")), -1);
        EXPECT_NE(e.message().indexOf("does not exist"), -1);
    }
    try {
        LoadFile(dir.path());
        FAIL() << "loaded a folder";
    } catch (const RTE::FileError& e) {
        EXPECT_NE(e.message().indexOf(Q(dir.path())), -1);
    }
}

TEST(SettingsDocument, FailedLoadKeepsTheContent)
{
    TestSupport::TempDir dir;
    SettingsNode original("original");
    original.SetValue("k", "v");
    Save(original, dir / "good.xml");
    SettingsDocument document(Q(dir / "good.xml"), AutoSyncMode::Manual);
    document.Load();
    TestSupport::WriteFile(dir / "good.xml", Document("<Settings name='new'><Value name='a'/><Value name='a'/></Settings>"));
    EXPECT_THROW(document.Load(), RTE::Exception);
    EXPECT_TRUE(Storage::AreEqual(original, document));
}

TEST(SettingsDocument, ReadOnlyModeRefusesSave)
{
    TestSupport::TempDir dir;
    Save(SettingsTestData::RichTree(), dir / "s.xml");
    const std::string before = TestSupport::ReadFile(dir / "s.xml");
    {
        SettingsDocument document(Q(dir / "s.xml"), AutoSyncMode(1));
        EXPECT_EQ(document.GetMode(), AutoSyncMode::ReadOnly);
        document.Load();
        document.SetValue("changed", "yes");
        EXPECT_THROW(document.Save(), RTE::VerificationFailed);
    }
    EXPECT_EQ(TestSupport::ReadFile(dir / "s.xml"), before);
}

TEST(SettingsDocument, ManualModeWritesOnlyOnSave)
{
    TestSupport::TempDir dir;
    {
        SettingsDocument document(Q(dir / "s.xml"), AutoSyncMode::Manual);
        document.SetValue("k", "v");
    }
    EXPECT_FALSE(QFile::exists(Q(dir / "s.xml")));
    {
        SettingsDocument document(Q(dir / "s.xml"), AutoSyncMode::Manual);
        document.SetValue("k", "v");
        document.Save();
        document.SetValue("k", "later");
    }
    EXPECT_EQ(LoadFile(dir / "s.xml")->GetValue("k"), "v");
}

TEST(SettingsDocument, WriteBackModeSavesChangedContentOnDestruction)
{
    TestSupport::TempDir dir;
    const std::string path = dir / "s.xml";
    {
        // Never loaded and never changed: nothing to write.
        SettingsDocument document(Q(path), AutoSyncMode::WriteBackOnDestruction);
    }
    EXPECT_FALSE(QFile::exists(Q(path)));
    {
        SettingsDocument document(Q(path), AutoSyncMode::WriteBackOnDestruction);
        document.AddChild("c").SetValue("k", "v");
    }
    EXPECT_EQ(LoadFile(path)->GetChild(0).GetValue("k"), "v");

    // Loaded and changed back and forth to the same content: the file is not rewritten.
    TestSupport::WriteFile(path, Document("<Settings><Value name='k' value='1'/></Settings>"));
    const std::string handWritten = TestSupport::ReadFile(path);
    {
        SettingsDocument document(Q(path), AutoSyncMode::WriteBackOnDestruction);
        document.Load();
        document.SetValue("k", "2");
        document.SetValue("k", "1");
    }
    EXPECT_EQ(TestSupport::ReadFile(path), handWritten);
    {
        SettingsDocument document(Q(path), AutoSyncMode::WriteBackOnDestruction);
        document.Load();
        document.SetValue("k", "2");
    }
    EXPECT_EQ(LoadFile(path)->GetValue("k"), "2");
}

TEST(SettingsDocument, WriteBackFailureIsLoggedNotThrown)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::string path = dir / "missing-folder/s.xml";
    {
        SettingsDocument document(Q(path), AutoSyncMode::WriteBackOnDestruction);
        document.SetValue("k", "v");
    }
    EXPECT_FALSE(QFile::exists(Q(path)));
    EXPECT_TRUE(log.contains("Storage", "could not be written back"));
}

TEST(SettingsDocument, InvalidModeIsRefused)
{
    EXPECT_THROW(SettingsDocument("x.xml", AutoSyncMode(3)), RTE::VerificationFailed);
    EXPECT_THROW(SettingsDocument("x.xml", AutoSyncMode(-1)), RTE::VerificationFailed);
}
