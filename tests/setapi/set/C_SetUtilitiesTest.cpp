#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <climits>

#include "support/TestSupport.h"

using SetApi::C_DataSetParameter;
using SetApi::C_SetUtilities;

namespace {

struct Parsed {
    bool ok;
    std::string value;
    bool isString;
};

Parsed Parse(const char* line)
{
    Parsed parsed{false, "untouched", true};
    parsed.ok = C_SetUtilities::ParseLine(line, parsed.value, parsed.isString);
    return parsed;
}

} // namespace

TEST(C_SetUtilities, ParseLineTakesTheValueBetweenFirstEqualsAndLastSemicolon)
{
    Parsed p = Parse("SetType = 12;");
    EXPECT_TRUE(p.ok);
    EXPECT_EQ(p.value, "12");
    EXPECT_FALSE(p.isString);

    p = Parse("SetComments = \"a \\\"quoted\\\"; b=c\";   note; behind");
    EXPECT_TRUE(p.ok);
    EXPECT_FALSE(p.isString); // the last ';' is behind the note: the value ends in 'note'
    EXPECT_EQ(p.value, "a \\\"quoted\\\"; b=c\";   note"); // the opening quote goes anyway

    p = Parse("SetComments = \"a \\\"quoted\\\"; b=c\"; note");
    EXPECT_TRUE(p.isString);
    EXPECT_EQ(p.value, "a \"quoted\"; b=c");

    p = Parse("SetX =    7   ; the note");
    EXPECT_EQ(p.value, "7");

    p = Parse("SetX = abc\";"); // only the closing quote decides
    EXPECT_TRUE(p.isString);
    EXPECT_EQ(p.value, "abc");
    p = Parse("SetX = \"abc;");
    EXPECT_FALSE(p.isString);
    EXPECT_EQ(p.value, "abc");
    p = Parse("SetX = \";");
    EXPECT_TRUE(p.isString);
    EXPECT_EQ(p.value, "");

    EXPECT_FALSE(Parse("SetX = 5").ok);
    EXPECT_FALSE(Parse("SetX 5;").ok);
    p = Parse(nullptr);
    EXPECT_FALSE(p.ok);
    EXPECT_FALSE(p.isString);
    EXPECT_EQ(p.value, "untouched");
}

TEST(C_SetUtilities, FileStringsEscapeExactlySixCharacters)
{
    std::string out;
    C_SetUtilities::ConvertToFileString("q\" b\\ r\r n\n t\t f\f v\v nul", out);
    EXPECT_EQ(out, "q\\\" b\\\\ r\\r n\\n t\\t f\\f v\v nul");

    C_SetUtilities::ConvertFromFileString("a\\\"b\\\\c\\rd\\ne\\tf\\fg\\xh\\", out);
    EXPECT_EQ(out, "a\"b\\c\rd\ne\tf\fgh"); // unknown escape and a final backslash are dropped

    std::string all;
    for (int c = 1; c < 256; ++c)
        all += static_cast<char>(c);
    std::string escaped, back;
    C_SetUtilities::ConvertToFileString(all, escaped);
    C_SetUtilities::ConvertFromFileString(escaped, back);
    EXPECT_EQ(back, all);
    C_SetUtilities::ConvertFromFileString(escaped, escaped); // in and out may be one string
    EXPECT_EQ(escaped, all);
}

TEST(C_SetUtilities, AddParameterMakesNewNumbersIntegers)
{
    C_DataSetParameter parameters;
    parameters.Add("SetRatio", 0.25);
    C_SetUtilities::AddParameter(parameters, "SetNew", "SetNew = 1.5;");
    C_SetUtilities::AddParameter(parameters, "SetRatio", "SetRatio = 1.5;");
    C_SetUtilities::AddParameter(parameters, "SetStart", "SetStart = 2.9;");
    C_SetUtilities::AddParameter(parameters, "SetType", "SetType = \"text\";"); // wrong kind: dropped
    C_SetUtilities::AddParameter(parameters, "SetTime", "SetTime = 5;");       // wrong kind: dropped
    C_SetUtilities::AddParameter(parameters, "SetText", "SetText = \"x\";");
    C_SetUtilities::AddParameter(parameters, "SetBad", "SetBad 5");             // unparseable

    int integer = 0;
    EXPECT_TRUE(parameters.GetValue("SetNew", integer));
    EXPECT_EQ(integer, 1);
    double ratio = 0;
    EXPECT_TRUE(parameters.GetValue("SetRatio", ratio));
    EXPECT_EQ(ratio, 1.5);
    EXPECT_TRUE(parameters.GetValue("SetStart", integer));
    EXPECT_EQ(integer, 2);
    EXPECT_TRUE(parameters.GetValue("SetType", integer));
    EXPECT_EQ(integer, 0);
    std::string text;
    EXPECT_TRUE(parameters.GetValue("SetTime", text));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(parameters.GetValue("SetText", text));
    EXPECT_EQ(text, "x");
    EXPECT_FALSE(parameters.Has("SetBad"));
}

TEST(C_SetUtilities, WriteSettingsWritesHeaderParametersAndTrailer)
{
    TestSupport::TempDir dir;
    const std::string file = dir / "run.set";
    C_DataSetParameter parameters;
    parameters.SetValue("SetType", 4);
    parameters.SetValue("SetComments", std::string("say \"hi\";\tnow\n"));
    parameters.Add("SetPi", 3.14159265);
    parameters.Add("SetMega", 1e6);
    parameters.Add("SetIdentifier", std::string("Set"));
    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, parameters, "TRAILER"));
    EXPECT_EQ(TestSupport::ReadFile(file), "// set file <" + file + "> created by Zarvo\n"
                                           "\n"
                                           "#GROUP Sets\n"
                                           "SetType = 4;\n"
                                           "SetGroups = \"\";\n"
                                           "SetTime = \"\";\n"
                                           "SetComments = \"say \\\"hi\\\";\\tnow\\n\";\n"
                                           "SetStart = 1;\n"
                                           "SetInc = 1;\n"
                                           "SetSourceSet = \"\";\n"
                                           "SetViewCallback = \"\";\n"
                                           "SetLoadCallback = \"\";\n"
                                           "SetPi = 3.14159;\n"
                                           "SetMega = 1e+06;\n"
                                           "SetIdentifier = \"Set\";\n"
                                           "\n"
                                           "TRAILER");
    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, parameters, ""));
    const std::string noTrailer = TestSupport::ReadFile(file);
    const std::string lastLine = "\nSetIdentifier = \"Set\";\n";
    EXPECT_EQ(noTrailer.substr(noTrailer.size() - lastLine.size()), lastLine);
    EXPECT_FALSE(C_SetUtilities::WriteSettings(dir / "missing/run.set", parameters, ""));
}

// A set file is replaced whole or not at all: a full disk or a refused replacement leaves the old
// file byte for byte, no hidden temporary file behind, and WriteSettings says false.
TEST(C_SetUtilities, WriteSettingsThatFailsLeavesTheOldFileWhole)
{
    using Operation = RTE::FaultInjectingFileSystem::Operation;
    TestSupport::TempDir dir;
    const std::string file = dir / "run.set";
    C_DataSetParameter parameters;
    parameters.SetValue("SetType", 4);
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, parameters, ""));
    const std::string before = TestSupport::ReadFile(file);
    parameters.SetValue("SetType", 5);

    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    for (const std::uint64_t room : {std::uint64_t(0), std::uint64_t(100)}) {
        SCOPED_TRACE(room);
        faults->ClearFaults();
        faults->FailWritesAfter(room);
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_FALSE(C_SetUtilities::WriteSettings(file, parameters, ""));
    }
    faults->ClearFaults();
    faults->ResetCounts();
    faults->FailCall(Operation::ReplaceFile, 1);
    {
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_FALSE(C_SetUtilities::WriteSettings(file, parameters, ""));
    }
    EXPECT_EQ(TestSupport::ReadFile(file), before);
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), ".*", false, false), std::vector<std::string>{"run.set"});

    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, parameters, ""));
    EXPECT_NE(TestSupport::ReadFile(file).find("SetType = 5;"), std::string::npos);
}

TEST(C_SetUtilities, WrittenFilesReadBack)
{
    TestSupport::TempDir dir;
    const std::string file = dir / "run.set";
    C_DataSetParameter written;
    written.SetValue("SetComments", std::string("a \"quote\" and a ; and \\ and\r\nlines\f"));
    written.SetValue("SetStart", -5);
    written.Add("SetRatio", 0.125);
    written.Add("SetSourceFolder", std::string("C:\\data\\run 1"));
    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, written, ""));

    C_DataSetParameter read;
    read.Add("SetRatio", 0.0); // known as a double before reading
    ASSERT_TRUE(C_SetUtilities::ReadSetGroupVariables(file, read));
    ASSERT_EQ(read.GetSize(), written.GetSize());
    for (std::uint64_t i = 0; i < written.GetSize(); ++i)
        EXPECT_EQ(read.GetName(i), written.GetName(i));
    std::string text;
    read.GetValue("SetComments", text);
    EXPECT_EQ(text, "a \"quote\" and a ; and \\ and\r\nlines\f");
    read.GetValue("SetSourceFolder", text);
    EXPECT_EQ(text, "C:\\data\\run 1");
    int start = 0;
    read.GetValue("SetStart", start);
    EXPECT_EQ(start, -5);
    double ratio = 0;
    EXPECT_TRUE(read.GetValue("SetRatio", ratio));
    EXPECT_EQ(ratio, 0.125);
}

TEST(C_SetUtilities, ReaderIgnoresGroupsCommentsAndForeignNames)
{
    TestSupport::TempDir dir;
    const std::string file = dir / "odd.set";
    TestSupport::WriteFile(file, "SetEarly = 1;\r\n"             // before any group
                                 "// set file <x> created by Zarvo\r\n"
                                 "#GROUP Sets\r\n"
                                 "SetType = 7;\r\n"
                                 "Se = 1;\r\n"                   // too short
                                 "Other = 2;\r\n"                // not "Set..."
                                 "#GROUP Camera\r\n"
                                 "SetCamera = \"cam\";\r\n"      // other group, same list
                                 "SetOdd=5;\r\n"                 // no blank before '='
                                 "/SetSlash = 3;\r\n"
                                 "\r\n");
    C_DataSetParameter parameters;
    ASSERT_TRUE(C_SetUtilities::ReadSetGroupVariables(file, parameters));
    int value = 0;
    EXPECT_TRUE(parameters.GetValue("SetEarly", value));
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(parameters.GetValue("SetType", value));
    EXPECT_EQ(value, 7);
    std::string text;
    EXPECT_TRUE(parameters.GetValue("SetCamera", text));
    EXPECT_EQ(text, "cam");
    EXPECT_TRUE(parameters.GetValue("SetOdd=5;", value)); // kept under its odd name
    EXPECT_EQ(value, 5);
    EXPECT_FALSE(parameters.Has("Se"));
    EXPECT_FALSE(parameters.Has("Other"));
    EXPECT_FALSE(parameters.Has("/SetSlash"));
    EXPECT_EQ(parameters.GetSize(), 12u);

    C_DataSetParameter untouched;
    untouched.SetValue("SetType", 3);
    EXPECT_FALSE(C_SetUtilities::ReadSetGroupVariables(dir / "missing.set", untouched));
    untouched.GetValue("SetType", value);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(untouched.GetSize(), 9u);
}

TEST(C_SetUtilities, PrepareSetNameGivesTheHeldForm)
{
    EXPECT_EQ(C_SetUtilities::PrepareSetName("C:\\data\\Run1.SeT  "), "C:/data/Run1");
    EXPECT_EQ(C_SetUtilities::PrepareSetName(".set"), ".set");
    EXPECT_EQ(C_SetUtilities::PrepareSetName("a.set"), "a");
    EXPECT_EQ(C_SetUtilities::PrepareSetName("name..."), "name");
    EXPECT_EQ(C_SetUtilities::PrepareSetName("..."), "...");
    EXPECT_EQ(C_SetUtilities::PrepareSetName("run.set. ."), "run.set. "); // blanks first, then dots
    EXPECT_EQ(C_SetUtilities::PrepareSetName(""), "");
}

TEST(C_SetUtilities, PrepareNameCutsByTheUntrimmedLength)
{
    bool experiment = true;
    EXPECT_EQ(C_SetUtilities::PrepareName("trial.exp", &experiment), "trial");
    EXPECT_TRUE(experiment);
    EXPECT_EQ(C_SetUtilities::PrepareName("trial.SET", &experiment), "trial");
    EXPECT_FALSE(experiment);
    EXPECT_EQ(C_SetUtilities::PrepareName("trial.set  ", &experiment), "trial.s");
    EXPECT_EQ(C_SetUtilities::PrepareName("trial.txt", &experiment), "trial.txt");
    EXPECT_FALSE(experiment);
    EXPECT_EQ(C_SetUtilities::PrepareName("trial. .", nullptr), "trial. "); // blanks first, then dots
    EXPECT_EQ(C_SetUtilities::PrepareName(".exp", &experiment), ".exp");
    EXPECT_FALSE(experiment);
}

TEST(C_SetUtilities, TrimRightAndIndexFromFileName)
{
    std::string text = "abc   ";
    C_SetUtilities::TrimRight(text, ' ');
    EXPECT_EQ(text, "abc");
    text = "....";
    C_SetUtilities::TrimRight(text, '.');
    EXPECT_EQ(text, "....");
    text.clear();
    C_SetUtilities::TrimRight(text, '.');
    EXPECT_EQ(text, "");

    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("B00001.im7"), 0u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("B00000.im7"), 0u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("B00042.vc7"), 41u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("x12y34"), 11u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("-7"), 6u); // from the first digit on: no sign
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("nodigits"), 0u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName(""), 0u);
    EXPECT_EQ(C_SetUtilities::GetIndexFromFileName("B99999999999999999999999"), UINT_MAX);
}

TEST(C_SetUtilities, ClearSetDirectoryKeepsSetFilesAndFolders)
{
    TestSupport::TempDir dir;
    for (const char* name : {"B00001.im7", "AnalogData.im7", "child.set", "Other.SET", "noextension", "x.settings"})
        TestSupport::WriteFile(dir / name, "x");
    boost::filesystem::create_directories(dir / "child");
    TestSupport::WriteFile(dir / "child/B00001.im7", "x");

    C_SetUtilities::ClearSetDirectory(dir.path());
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir.path(), ".*", true, false),
              (std::vector<std::string>{"Other.SET", "child.set", "child/B00001.im7"}));
}
