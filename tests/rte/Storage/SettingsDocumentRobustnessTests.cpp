// Damaged and hostile settings documents: every one either loads or raises RTE::Exception, and
// none may crash, hang or allocate without bound.

#include <Storage/SettingsDocument.h>
#include <Storage/SettingsSerializer.h>

#include <RTE/Exception.h>

#include "SettingsTestData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <set>

using Storage::AutoSyncMode;
using Storage::SettingsDocument;
using SettingsTestData::Q;

namespace {

enum class Outcome { Loaded, Refused };

// Writes the bytes and loads them; any failure other than RTE::Exception fails the test.
Outcome TryLoad(const std::string& path, const std::string& bytes)
{
    // A fresh file each time: truncating an existing one is slow on some file systems.
    std::remove(path.c_str());
    TestSupport::WriteFile(path, bytes);
    SettingsDocument document(Q(path), AutoSyncMode::ReadOnly);
    try {
        document.Load();
        return Outcome::Loaded;
    } catch (const RTE::Exception&) {
        return Outcome::Refused;
    }
}

class SettingsDocumentJunk : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Each refusal logs itself; keep the test output readable.
        m_log = std::make_unique<TestSupport::LogCapture>(RTE::LogLevel::Off);
        Storage::Private::SettingsSerializer(SettingsTestData::RichTree(m_levels)).SaveAs(Q(m_dir / "valid.xml"));
        m_valid = TestSupport::ReadFile(m_dir / "valid.xml");
        ASSERT_GT(m_valid.size(), 1000u);
    }

    // Small enough to parse a thousand times over, large enough to hold every construct.
    static constexpr int m_levels = 2;

    std::string Path() const { return m_dir / "junk.xml"; }

    TestSupport::TempDir m_dir;
    std::unique_ptr<TestSupport::LogCapture> m_log;
    std::string m_valid;
};

} // namespace

TEST_F(SettingsDocumentJunk, TruncatedDocumentsAreRefused)
{
    const std::size_t end = m_valid.rfind("</SettingsDocument>");
    ASSERT_NE(end, std::string::npos);
    const std::size_t complete = end + std::string("</SettingsDocument>").size();
    std::set<std::size_t> cuts;
    for (std::size_t i = 0; i < 300; ++i) {
        cuts.insert(i);
        cuts.insert(complete - i);
    }
    for (std::size_t i = 0; i < 400; ++i)
        cuts.insert(m_valid.size() * i / 400);
    for (std::size_t cut : cuts) {
        const Outcome outcome = TryLoad(Path(), m_valid.substr(0, cut));
        if (cut < complete)
            EXPECT_EQ(outcome, Outcome::Refused) << "cut at " << cut;
        else
            EXPECT_EQ(outcome, Outcome::Loaded) << "cut at " << cut;
    }
}

TEST_F(SettingsDocumentJunk, BinaryJunkAndMutatedDocumentsLoadOrRaise)
{
    std::mt19937 random(4711);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 100; ++round) {
        std::string junk(static_cast<std::size_t>(round * 37), '\0');
        for (char& c : junk)
            c = static_cast<char>(byte(random));
        EXPECT_EQ(TryLoad(Path(), junk), Outcome::Refused);
    }
    // Random damage to a valid document: a few bytes changed, deleted or set to NUL.
    int loaded = 0;
    for (int round = 0; round < 300; ++round) {
        std::string damaged = m_valid;
        std::uniform_int_distribution<std::size_t> position(0, damaged.size() - 1);
        for (int change = 0; change < 1 + round % 4; ++change) {
            const std::size_t at = position(random);
            switch (round % 3) {
            case 0: damaged[at] = static_cast<char>(byte(random)); break;
            case 1: damaged.erase(at, 1 + at % 7); break;
            default: damaged[at] = '\0'; break;
            }
        }
        loaded += TryLoad(Path(), damaged) == Outcome::Loaded ? 1 : 0;
    }
    // Most damage lands inside text and still loads; the point is that nothing crashed.
    SUCCEED() << loaded << " of 300 damaged documents loaded";
}

TEST_F(SettingsDocumentJunk, EncodingDamageLoadsOrRaises)
{
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SettingsDocument formatVersion=\"1.0\">"
                             "<Settings><Value name=\"v\" value=\"";
    const std::string tail = "\"/></Settings></SettingsDocument>";
    const std::vector<std::string> insertions = {
        std::string("\0", 1),      std::string("a\0b", 3), "\xFF\xFE",         "\xC3",    "\xC0\xAF",
        "\xED\xA0\x80",            "\xF4\x90\x80\x80",     "\xF0\x9F\x98",     "&#0;",    "&#xD800;",
        "&#x110000;",              "&#1;",                 "&undefined;",      "&#;",     "&#x;",
        std::string(1, '\x01'),    "<",                    "&",                "\"",      "]]>"};
    for (const std::string& insertion : insertions)
        TryLoad(Path(), head + insertion + tail); // either outcome is fine

    // Escaped XML-safe text loads exactly.
    ASSERT_EQ(TryLoad(Path(), head + "&#x1F600;&lt;&#9;" + tail), Outcome::Loaded);
    SettingsDocument document(Q(Path()), AutoSyncMode::ReadOnly);
    document.Load();
    EXPECT_EQ(document.GetValue("v"), QString::fromUtf8("\xF0\x9F\x98\x80<\t"));

    // Other encodings that XML allows, and a byte order mark.
    EXPECT_EQ(TryLoad(Path(), "\xEF\xBB\xBF" + m_valid), Outcome::Loaded);
    const QString utf16Text = QString::fromUtf8(m_valid).replace("UTF-8", "UTF-16");
    std::string utf16("\xFF\xFE");
    for (const QChar c : utf16Text) {
        utf16 += static_cast<char>(c.unicode() & 0xFF);
        utf16 += static_cast<char>(c.unicode() >> 8);
    }
    EXPECT_EQ(TryLoad(Path(), utf16), Outcome::Loaded);
    EXPECT_TRUE(Storage::AreEqual(SettingsTestData::RichTree(m_levels), [&] {
        SettingsDocument d(Q(Path()), AutoSyncMode::ReadOnly);
        d.Load();
        return Storage::SettingsNode(d);
    }()));
}

TEST_F(SettingsDocumentJunk, HugeAttributesAndLinesLoadOrRaise)
{
    const std::string big(8 * 1024 * 1024, 'x');
    ASSERT_EQ(TryLoad(Path(), "<SettingsDocument formatVersion='1.0'><Settings><Value name='v' value='" + big +
                                  "'/></Settings></SettingsDocument>"),
              Outcome::Loaded);
    // A huge base64 attribute that is not valid base64, an unterminated huge attribute, a huge
    // element name and a huge run of text without any markup.
    EXPECT_EQ(TryLoad(Path(), "<SettingsDocument formatVersion='1.0'><Settings><Value valueBase64='" + big +
                                  "!'/></Settings></SettingsDocument>"),
              Outcome::Refused);
    EXPECT_EQ(TryLoad(Path(), "<SettingsDocument formatVersion='1.0'><Settings name='" + big), Outcome::Refused);
    EXPECT_EQ(TryLoad(Path(), "<" + big + "/>"), Outcome::Refused);
    EXPECT_EQ(TryLoad(Path(), big), Outcome::Refused);
    // Many values and children: filling must stay linear.
    std::string many = "<SettingsDocument formatVersion='1.0'><Settings>";
    for (int i = 0; i < 200000; ++i)
        many += "<Value name='v" + std::to_string(i) + "'/><Settings/>";
    many += "</Settings></SettingsDocument>";
    ASSERT_EQ(TryLoad(Path(), many), Outcome::Loaded);
}

TEST_F(SettingsDocumentJunk, EntityExpansionIsRefused)
{
    // Ten levels of entities, each referring ten times to the one before: 10^10 characters.
    std::string laughs = "<?xml version='1.0'?><!DOCTYPE SettingsDocument [<!ENTITY a 'aaaaaaaaaa'>";
    for (char c = 'b'; c <= 'k'; ++c) {
        std::string references;
        for (int i = 0; i < 10; ++i)
            references += std::string("&") + static_cast<char>(c - 1) + ";";
        laughs += std::string("<!ENTITY ") + c + " '" + references + "'>";
    }
    laughs += "]><SettingsDocument formatVersion='1.0'><Settings name='&k;'/></SettingsDocument>";
    EXPECT_EQ(TryLoad(Path(), laughs), Outcome::Refused);
}
