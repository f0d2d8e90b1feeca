#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

#include "support/TestSupport.h"

using SetApi::C_DataSetParameter;
using SetApi::C_SetUtilities;

namespace {

// Reads the bytes as a set file into fresh parameters.
C_DataSetParameter ReadBytes(const TestSupport::TempDir& dir, const std::string& bytes)
{
    const std::string file = dir / "bad.set";
    TestSupport::WriteFile(file, bytes);
    C_DataSetParameter parameters;
    EXPECT_TRUE(C_SetUtilities::ReadSetGroupVariables(file, parameters));
    return parameters;
}

void ExpectStandardKeysIntact(const C_DataSetParameter& parameters)
{
    int value = -1;
    EXPECT_TRUE(parameters.GetValue("SetStart", value));
    EXPECT_TRUE(parameters.IsString("SetComments"));
}

} // namespace

TEST(SetFileBadInput, BinaryJunkReadsWithoutHarm)
{
    TestSupport::TempDir dir;
    std::mt19937 random(4711);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 50; ++round) {
        std::string junk(static_cast<size_t>(200 + round * 100), '\0');
        for (char& c : junk)
            c = static_cast<char>(byte(random));
        if (round % 3 == 0)
            junk = "Set" + junk; // lines that pass the name rule
        ExpectStandardKeysIntact(ReadBytes(dir, junk));
    }
    // Junk that looks like parameter lines, with every byte in names and values.
    std::string lines;
    for (int c = 0; c < 256; ++c)
        lines += "SetK" + std::to_string(c) + std::string(1, static_cast<char>(c)) + " = \"" +
                 std::string(3, static_cast<char>(c)) + "\";\n";
    const C_DataSetParameter parameters = ReadBytes(dir, lines);
    EXPECT_GT(parameters.GetSize(), 200u);
}

TEST(SetFileBadInput, NulBytesEndTheValueText)
{
    TestSupport::TempDir dir;
    std::string bytes = "SetA = 5";
    bytes += '\0';
    bytes += ";\nSetB = \"x";
    bytes += '\0';
    bytes += "y\";\nSetC = 7;\n";
    const C_DataSetParameter parameters = ReadBytes(dir, bytes);
    EXPECT_FALSE(parameters.Has("SetA")); // the ';' lies behind the NUL
    EXPECT_FALSE(parameters.Has("SetB"));
    int value = 0;
    EXPECT_TRUE(parameters.GetValue("SetC", value));
    EXPECT_EQ(value, 7);
}

TEST(SetFileBadInput, HugeLinesAndNoLineEnds)
{
    TestSupport::TempDir dir;
    const std::string big(1 << 20, 'm');
    C_DataSetParameter parameters = ReadBytes(dir, "SetBig = \"" + big + "\";\nSetAfter = 1;\n");
    std::string text;
    EXPECT_TRUE(parameters.GetValue("SetBig", text));
    EXPECT_EQ(text, big);
    EXPECT_TRUE(parameters.Has("SetAfter"));

    parameters = ReadBytes(dir, std::string(1 << 20, 'S')); // one line, no end, no '='
    EXPECT_EQ(parameters.GetSize(), 9u);
    parameters = ReadBytes(dir, "Set" + std::string(1 << 20, ' ') + "= 4;"); // name "Set", megabyte of blanks
    int value = 0;
    EXPECT_TRUE(parameters.GetValue("Set", value));
    EXPECT_EQ(value, 4);
}

TEST(SetFileBadInput, InvalidUtf8SurvivesAReadAndAWrite)
{
    TestSupport::TempDir dir;
    const std::string content = "// set file <" + (dir / "bad.set") + "> created by Zarvo\n\n#GROUP Sets\n"
                                "SetType = 0;\nSetGroups = \"\";\nSetTime = \"\";\n"
                                "SetComments = \"caf\xe9 \xff\xfe \xc3\xa4 \xe2\x82 \xed\xa0\x80\";\n"
                                "SetStart = 1;\nSetInc = 1;\nSetSourceSet = \"\";\nSetViewCallback = \"\";\n"
                                "SetLoadCallback = \"\";\nSet\xe9\xff = 3;\n";
    const C_DataSetParameter parameters = ReadBytes(dir, content);
    std::string comment;
    EXPECT_TRUE(parameters.GetValue("SetComments", comment));
    EXPECT_EQ(comment, "caf\xe9 \xff\xfe \xc3\xa4 \xe2\x82 \xed\xa0\x80");
    ASSERT_TRUE(C_SetUtilities::WriteSettings(dir / "bad.set", parameters, ""));
    EXPECT_EQ(TestSupport::ReadFile(dir / "bad.set"), content);
}

TEST(SetFileBadInput, NumbersOutOfRangeSaturateOrAreRefused)
{
    TestSupport::TempDir dir;
    const std::string file = dir / "numbers.set";
    TestSupport::WriteFile(file, "SetHuge = 99999999999999999999999;\n"
                                 "SetType = -99999999999;\n"
                                 "SetRatio = 1e999;\n"
                                 "SetTiny = 1e-999;\n"
                                 "SetSmall = 1e-999;\n"
                                 "SetWord = twelve;\n"
                                 "SetSpaced =   -12abc  ;\n");
    C_DataSetParameter parameters;
    parameters.Add("SetRatio", 0.5);
    parameters.Add("SetSmall", 0.5);
    ASSERT_TRUE(C_SetUtilities::ReadSetGroupVariables(file, parameters));
    int value = 0;
    parameters.GetValue("SetHuge", value);
    EXPECT_EQ(value, INT_MAX);
    parameters.GetValue("SetType", value);
    EXPECT_EQ(value, INT_MIN);
    double ratio = 0;
    parameters.GetValue("SetRatio", ratio);
    EXPECT_EQ(ratio, 0.5); // infinity does not fit a parameter: dropped
    parameters.GetValue("SetSmall", ratio);
    EXPECT_EQ(ratio, 0.0);
    parameters.GetValue("SetTiny", value);
    EXPECT_EQ(value, 1); // a new key: an integer, read like atoi
    parameters.GetValue("SetWord", value);
    EXPECT_EQ(value, 0);
    parameters.GetValue("SetSpaced", value);
    EXPECT_EQ(value, -12);
}

TEST(SetFileBadInput, TenThousandKeysAndRepeatedKeys)
{
    TestSupport::TempDir dir;
    std::string bytes;
    for (int i = 0; i < 10000; ++i)
        bytes += "SetKey" + std::to_string(i) + " = " + std::to_string(i) + ";\n";
    for (int i = 0; i < 10000; ++i)
        bytes += "SetRepeated = \"" + std::to_string(i) + "\";\n";
    const C_DataSetParameter parameters = ReadBytes(dir, bytes);
    ASSERT_EQ(parameters.GetSize(), 9u + 10000u + 1u);
    EXPECT_EQ(parameters.GetName(9 + 1234), "SetKey1234");
    int value = 0;
    EXPECT_TRUE(parameters.GetValue("SetKey9999", value));
    EXPECT_EQ(value, 9999);
    std::string text;
    EXPECT_TRUE(parameters.GetValue("SetRepeated", text));
    EXPECT_EQ(text, "9999");
}
