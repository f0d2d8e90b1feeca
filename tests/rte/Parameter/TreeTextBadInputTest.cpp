#include "TreeTextTestSupport.h"

#include <RTE/Exception.h>

#include <random>
#include <sstream>

#include "support/TestSupport.h"

using namespace RTE::Parameter;
using namespace TreeTextTest;

namespace {

const std::string kHeader = "SetApiParameterTree 1\n";

// Reads the text; returns the failure text, or "" when it was read.
std::string ReadFailure(const std::string& text)
{
    try {
        FromText(text, "bad.tree");
        return std::string();
    } catch (const RTE::Exception& error) {
        return error.message().toStdString();
    }
}

} // namespace

TEST(ParameterTreeTextBadInput, MalformedTextsNameSourceLineAndProblem)
{
    TestSupport::LogCapture log;
    struct Case {
        std::string text;
        std::string expected; // beginning with "bad.tree:<line>: "
    };
    const Case cases[] = {
        {"", "bad.tree:0: empty input"},
        {"Something else\n", "bad.tree:1: not a parameter tree"},
        {"SetApiParameterTree 2\nend\n", "bad.tree:1: unsupported format version 2"},
        {kHeader, "bad.tree:1: unexpected end of input"},
        {kHeader + "category \"c\" {\nend\n", "bad.tree:3: 'end' inside an open block"},
        {kHeader + "category \"c\" {\n", "bad.tree:2: unexpected end of input"},
        {kHeader + "}\nend\n", "bad.tree:2: '}' without an open block"},
        {kHeader + "widget \"w\"\nend\n", "bad.tree:2: unknown node kind 'widget'"},
        {kHeader + "text \"t\" value=\"v\" colour=\"red\"\nend\n", "bad.tree:2: unknown attribute 'colour'"},
        {kHeader + "text \"t\" value=\"v\" value=\"w\"\nend\n", "bad.tree:2: attribute 'value' given twice"},
        {kHeader + "text \"t\"\nend\n", "bad.tree:2: text 't' has no value"},
        {kHeader + "text \"t\" value=5\nend\n", "bad.tree:2: attribute 'value' must be a quoted string"},
        {kHeader + "integer \"i\" value=\"5\"\nend\n", "bad.tree:2: attribute 'value' must be a number"},
        {kHeader + "integer \"i\" min=0 max=10 value=11\nend\n", "bad.tree:2: value 11 is outside the range"},
        {kHeader + "integer \"i\" min=5 max=4 value=4\nend\n", "bad.tree:2: empty range"},
        {kHeader + "integer \"i\" value=99999999999999999999\nend\n", "bad.tree:2: attribute 'value' is not an integer"},
        {kHeader + "integer \"i\" value=1.5\nend\n", "bad.tree:2: attribute 'value' is not an integer"},
        {kHeader + "double \"d\" value=1e999\nend\n", "bad.tree:2: attribute 'value' is not a number"},
        {kHeader + "double \"d\" value=inf\nend\n", "bad.tree:2: value inf is outside the range"},
        {kHeader + "double \"d\" min=nan max=1 value=0\nend\n", "bad.tree:2: invalid range"},
        {kHeader + "double \"d\" value=nan(0x0000000000000001)\nend\n", "bad.tree:2: attribute 'value' is not a number"},
        {kHeader + "text \"t\" value=\"a\\qb\"\nend\n", "bad.tree:2: unknown escape \\q"},
        {kHeader + "text \"t\" value=\"\\u12\"\nend\n", "bad.tree:2: a \\u escape needs four hex digits"},
        {kHeader + "text \"t\" value=\"open\nend\n", "bad.tree:2: unterminated string"},
        {kHeader + "text \"t\" value=\"\xff\"\nend\n", "bad.tree:2: invalid UTF-8"},
        {kHeader + "text \"t\" value=\"\xed\xa0\x80\"\nend\n", "bad.tree:2: invalid UTF-8"}, // encoded surrogate
        {kHeader + "text \"t\" value=\"\xc0\xaf\"\nend\n", "bad.tree:2: invalid UTF-8"},         // overlong
        {kHeader + "text t value=\"v\"\nend\n", "bad.tree:2: a quoted string was expected"},
        {kHeader + "text \"t\"value=\"v\"\nend\n", "bad.tree:2: expected a blank"},
        {kHeader + "text \"t\" value=\"v\" {\n}\nend\n", "bad.tree:2: text cannot open a block"},
        {kHeader + "category \"c\"\nend\n", "bad.tree:2: category must open a block"},
        {kHeader + "entry \"e\" value=1\nend\n", "bad.tree:2: an entry outside an enumeration"},
        {kHeader + "enumeration \"e\" {\n  text \"t\" value=\"v\"\n}\nend\n", "bad.tree:3: an enumeration holds entries only"},
        {kHeader + "enumeration \"e\" selected=2 {\n  entry \"a\" value=1\n}\nend\n", "bad.tree:4: selected entry 2"},
        {kHeader + "enumeration \"e\" {\n  entry \"a\" value=1\n  entry \"a\" value=2\n}\nend\n", "bad.tree:4: the entry name 'a' is used twice"},
        {kHeader + "enumeration \"e\" {\n  entry \"a\" value=3000000000\n}\nend\n", "bad.tree:3: entry value 3000000000 is not a 32-bit int"},
        {kHeader + "text \"t\" value=\"1\"\ntext \"t\" value=\"2\"\nend\n", "bad.tree:3: the name 't' is used twice"},
        {kHeader + "text \"\" value=\"1\"\nend\n", "bad.tree:2: a node in a category needs a name"},
        {kHeader + "text \"t\" access=3 value=\"1\"\nend\n", "bad.tree:2: access mode 3 is not 0, 1 or 2"},
        {kHeader + "text \"t\" editor=\"" + std::string(65, 'x') + "\" value=\"1\"\nend\n", "bad.tree:2: unusable editor name"},
        // A NUL would cut the name the node keeps, so that it writes out as another editor.
        {kHeader + "text \"t\" editor=\"LineEdit\\u0000x\" value=\"1\"\nend\n", "bad.tree:2: unusable editor name"},
        {kHeader + std::string("text \"t\" editor=\"a\0b\" value=\"1\"\nend\n", 36), "bad.tree:2: unusable editor name"},
        {kHeader + "end\ntext \"t\" value=\"1\"\n", "bad.tree:3: content after 'end'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const std::string failure = ReadFailure(c.text);
        EXPECT_EQ(failure.substr(0, c.expected.size()), c.expected) << failure;
    }
}

TEST(ParameterTreeTextBadInput, NestingDepthIsBounded)
{
    TestSupport::LogCapture log;
    std::string text = kHeader;
    for (int i = 0; i < 300; ++i)
        text += "category \"c\" {\n";
    EXPECT_NE(ReadFailure(text).find("nesting deeper than 256 levels"), std::string::npos);

    std::string fine = kHeader;
    for (int i = 0; i < 200; ++i)
        fine += "category \"c\" {\n";
    for (int i = 0; i < 200; ++i)
        fine += "}\n";
    EXPECT_EQ(ReadFailure(fine + "end\n"), "");
}

TEST(ParameterTreeTextBadInput, EveryTruncationBeforeTheEndLineFails)
{
    TestSupport::LogCapture log;
    const std::string text = ToText(*MakeRichTree());
    const size_t endLine = text.size() - 4; // "end\n"
    for (size_t cut = 0; cut < text.size(); ++cut) {
        const std::string failure = ReadFailure(text.substr(0, cut));
        if (cut < endLine + 3)
            EXPECT_NE(failure, "") << "cut at " << cut;
        else
            EXPECT_EQ(failure, "") << "cut at " << cut;
    }
}

TEST(ParameterTreeTextBadInput, ByteFlipsAndJunkEitherReadOrFailCleanly)
{
    TestSupport::LogCapture log;
    const std::string text = ToText(*MakeRichTree());
    std::mt19937 random(12345);
    std::uniform_int_distribution<size_t> position(0, text.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    int failures = 0;
    for (int round = 0; round < 1500; ++round) {
        std::string changed = text;
        const int flips = 1 + round % 4;
        for (int i = 0; i < flips; ++i)
            changed[position(random)] = static_cast<char>(byte(random));
        if (!ReadFailure(changed).empty()) // an RTE::Exception; anything else escapes and fails the test
            ++failures;
    }
    EXPECT_GT(failures, 0);

    for (int round = 0; round < 200; ++round) {
        std::string junk(static_cast<size_t>(round * 7), '\0');
        for (char& c : junk)
            c = static_cast<char>(byte(random));
        if (round % 2)
            junk = kHeader + junk;
        EXPECT_NE(ReadFailure(junk), "");
    }
    EXPECT_NE(ReadFailure(std::string(1000, '\0')), "");
    EXPECT_NE(ReadFailure(kHeader + std::string(1 << 20, 'x')), ""); // a megabyte without line end
}

TEST(ParameterTreeTextBadInput, LongValuesAndNulCharactersAreFine)
{
    auto tree = CreateTree();
    QString big(1 << 20, QChar('a'));
    big[7] = QChar(0);
    tree->Add(CreateText("big", big));
    const auto back = FromText(ToText(*tree));
    EXPECT_EQ(CastToText(back->Find("big"))->GetValue(), big);
}
