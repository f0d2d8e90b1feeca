// The plain set: creation and opening, parameters on disk, the file map and its numbering rules,
// removal and renumbering, file names, source mapping.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <memory>

using namespace SetApi;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

std::unique_ptr<C_Set> MakeSet(const std::string& name, I_Set::E_SetType type = I_Set::SET_TYPE_IMAGE)
{
    return std::unique_ptr<C_Set>(C_Set::Create(name, type, true));
}

// Puts buffer files into a set folder by hand (their content does not matter to the numbering).
void Touch(const std::string& folder, std::initializer_list<const char*> names)
{
    for (const char* name : names)
        WriteFile(folder + "/" + name, "x");
}

} // namespace

TEST(C_Set, CreateWritesTheSetFileWithTypeAndTime)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run.set ", I_Set::SET_TYPE_VECTOR);
    EXPECT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "Run");
    EXPECT_EQ(set->GetFullName(), dir / "Run.set");
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(dir / "Run"));
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_VECTOR);
    EXPECT_EQ(set->GetTypeIdentifier(), QStringLiteral("SET_TYPE_ID_VECTOR"));

    const std::string file = ReadFile(dir / "Run.set");
    EXPECT_EQ(file.rfind("// set file <" + dir / "Run.set" + "> created by Zarvo\n\n#GROUP Sets\nSetType = 512;\n", 0), 0u)
        << file;
    // "ddd mmm dd HH:MM:SS yy", e.g. "Sat Nov 21 10:57:59 26"
    EXPECT_EQ(set->GetTime().size(), 22u) << set->GetTime();
}

TEST(C_Set, CreateEmptiesTheFolderButKeepsSetFilesAndSubFolders)
{
    TempDir dir;
    RTE::FileSystem::CreateDirectory(dir / "Run/Child");
    Touch(dir / "Run", {"B00001.im7", "notes.txt", "Child.set"});
    const auto set = MakeSet(dir / "Run");
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Run/B00001.im7"));
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Run/notes.txt"));
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/Child.set"));
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(dir / "Run/Child"));
    EXPECT_EQ(set->GetSize(), 0u);
}

TEST(C_Set, EveryParameterChangeIsOnDiskWhenTheCallReturns)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    EXPECT_TRUE(set->SetParameter("SetComments", std::string("first \"quoted\"; comment")));
    EXPECT_TRUE(set->SetParameter("SetStart", 7));
    set->AddParameter("SetCamera", "Cam 1");
    EXPECT_FALSE(set->SetParameter("SetNoSuchKey", 1));
    EXPECT_FALSE(set->SetParameter("SetComments", 3)); // a string key takes no integer

    const std::unique_ptr<C_Set> reopened(C_Set::Open(dir / "Run"));
    std::string text;
    int number = 0;
    EXPECT_TRUE(reopened->GetParameter("SetComments", text));
    EXPECT_EQ(text, "first \"quoted\"; comment");
    EXPECT_TRUE(reopened->GetParameter("SetStart", number));
    EXPECT_EQ(number, 7);
    EXPECT_TRUE(reopened->GetParameter("SetCamera", text));
    EXPECT_EQ(text, "Cam 1");
    EXPECT_FALSE(reopened->GetParameter("SetNoSuchKey", number));
}

TEST(C_Set, OpeningASetWithoutSetFileGivesDefaults)
{
    TempDir dir;
    const std::unique_ptr<C_Set> set(C_Set::Open(dir / "Nothing"));
    EXPECT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_UNKNOWN);
    EXPECT_EQ(set->GetTypeIdentifier(), QStringLiteral("SET_TYPE_ID_IMAGE"));
    EXPECT_EQ(set->GetSize(), 0u);
}

TEST(C_Set, TheFileMapFollowsTheNumberingRules)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    EXPECT_EQ(set->GetSize(), 0u); // the folder is listed now, once
    Touch(dir / "Run", {"B00001.im7", "B00003_Pressure=3.5.vc7", "B00000.im7", "Bx12.im7", "B00002.set",
                        "AnalogData.im7", "C00004.im7"});
    EXPECT_EQ(set->GetSize(), 0u); // files added behind the set's back show after GetFileList
    set->GetFileList();

    unsigned count = 0, first = 0, last = 0;
    set->GetInfo(count, first, last);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(last, 2u);
    EXPECT_EQ(set->GetNumBuffers(), 2u);

    unsigned index = 1;
    std::string path;
    ASSERT_TRUE(set->GetNext(index, path, nullptr));
    EXPECT_EQ(index, 2u);
    EXPECT_EQ(path, dir / "Run/B00003_Pressure=3.5.vc7");
    index = 0;
    const std::string vc7 = ".vc7";
    EXPECT_FALSE(set->GetNext(index, path, &vc7));
    EXPECT_EQ(index, 0u);
    index = 3;
    EXPECT_FALSE(set->GetNext(index, path, nullptr));

    EXPECT_EQ(set->GetFileInfoForIndex(2).fileName(), QStringLiteral("B00003_Pressure=3.5.vc7"));
    EXPECT_EQ(MessageOf([&] { set->GetFileInfoForIndex(1); }), "Filename for index 1 not available.");
    EXPECT_EQ(set->GetBufferTitle(0), QString());
    EXPECT_EQ(set->GetBufferTitle(1), QString()); // a gap inside the size
    EXPECT_THROW(set->GetBufferTitle(2), RTE::VerificationFailed); // not below GetSize()
}

TEST(C_Set, BufferTitleIsTheParameterTextUpToItsDot)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    Touch(dir / "Run", {"B00001_Pressure=3.5.im7", "B00002_two_parts.im7"});
    set->GetFileList();
    EXPECT_EQ(set->GetBufferTitle(0), QStringLiteral("Pressure=3"));
    EXPECT_EQ(set->GetBufferTitle(1), QString()); // an underscore in the text: no title
}

TEST(C_Set, RemoveBufferTakesTheLastWhicheverIndexIsNamed)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    Touch(dir / "Run", {"B00001.im7", "B00002.im7", "B00003.im7"});
    set->GetFileList();
    set->RemoveBuffer(0);
    EXPECT_TRUE(RTE::FileSystem::Exists(dir / "Run/B00001.im7"));
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Run/B00003.im7"));
    EXPECT_EQ(set->GetSize(), 2u);
    EXPECT_EQ(MessageOf([&] { set->RemoveBuffer(2); }), "C_Set::RemoveBuffer: Can't remove buffer with index 2");

    set->RemoveBuffer(1);
    set->RemoveBuffer(0);
    EXPECT_EQ(set->GetSize(), 0u);
    EXPECT_EQ(set->GetIndexMax(), static_cast<unsigned>(-1)); // wraps below 0, as it always has
}

TEST(C_Set, RemoveBufferRangeChecksItsArgumentsInOrder)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    Touch(dir / "Run", {"B00002.im7", "B00003.im7", "B00004.im7"});
    set->GetFileList();
    EXPECT_EQ(MessageOf([&] { set->RemoveBufferRange(3, 2); }),
              "C_Set::RemoveBufferRange: Start index must not be smaller than end index.");
    EXPECT_EQ(MessageOf([&] { set->RemoveBufferRange(0, 2); }),
              "C_Set::RemoveBufferRange: Start index must not be smaller than minimum index.");
    EXPECT_EQ(MessageOf([&] { set->RemoveBufferRange(1, 4); }),
              "C_Set::RemoveBufferRange: End index must not be higher than maximum index.");
    EXPECT_EQ(set->GetSize(), 3u);
}

TEST(C_Set, RemovingFromTheMiddleRenumbersKeepingTexts)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    Touch(dir / "Run", {"B00001.im7", "B00002.im7", "B00003_p=1.im7", "B00004.vc7", "B00005.im7"});
    set->GetFileList();
    set->RemoveBufferRange(1, 1);
    EXPECT_EQ(set->GetSize(), 4u);
    EXPECT_EQ(set->GetIndexMax(), 3u);
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir / "Run", "B.*", false, false),
              (std::vector<std::string>{"B00001.im7", "B00002_p=1.im7", "B00003.vc7", "B00004.im7"}));

    set->RemoveBufferRange(2, 3); // to the end: no renumbering needed
    EXPECT_EQ(set->GetSize(), 2u);
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_IMAGE);

    set->RemoveBufferRange(0, 1); // the whole set: it becomes a folder
    EXPECT_EQ(set->GetSize(), 0u);
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_FOLDER);
}

TEST(C_Set, StorageNamesAndFileNameHelpers)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    EXPECT_EQ(set->GetStorageName(nullptr, 0, "", ""), "B00001.im7");
    EXPECT_EQ(set->GetStorageName(nullptr, 99999, "", ".vc7"), "B100000.vc7");
    EXPECT_EQ(set->GetStorageName(nullptr, 4, "T=3 K", "dat"), "B00005_T=3 K.dat");
    EXPECT_EQ(set->GetStorageName(nullptr, 4, "_a/b:c", ""), "B00005_a_b_c.im7");

    EXPECT_EQ(C_Set::MakeFileNameSafe("  a\tb\"c*d?e|f<g>h\\i  "), "a_b_c_d_e_f_g_h_i");
    EXPECT_EQ(C_Set::MakeFileNameSafe("   "), "   ");

    EXPECT_EQ(C_Set::GetParameterStrFromFileName("B00003_Pressure=3.5.im7"), "Pressure=3.5");
    EXPECT_EQ(C_Set::GetParameterStrFromFileName("B00003.im7"), "");
    EXPECT_EQ(C_Set::ExtractParameterNameFromFilename(QStringLiteral("B00001_Pressure=3.5")),
              QStringLiteral("Pressure"));
    EXPECT_EQ(C_Set::ExtractParameterNameFromFilename(QStringLiteral("B00001_Pressure")), QStringLiteral("Pressure"));
    EXPECT_EQ(C_Set::ExtractParameterNameFromFilename(QStringLiteral("B00001")), QString());
    EXPECT_EQ(C_Set::ExtractParameterValueFromFilename(QStringLiteral("B00001_Pressure=3.5"), QStringLiteral("Pressure")),
              QStringLiteral("3.5"));
    EXPECT_EQ(C_Set::ExtractParameterValueFromFilename(QStringLiteral("/d/T=20_x/B00001_P=2"), QStringLiteral("T")),
              QStringLiteral("20"));
    EXPECT_EQ(C_Set::ExtractParameterValueFromFilename(QStringLiteral("B00001_P=2"), QStringLiteral("Q")), QString());

    EXPECT_EQ(C_Set::BuildFileNameForBufferIndex("/s", 0, "im7", "P", "2").filePath(), QStringLiteral("/s/B00001_P=2.im7"));
    EXPECT_EQ(C_Set::BuildFileNameForBufferIndex("/s", 1, "im7", "", "2").filePath(), QStringLiteral("/s/B00002.im7"));
    EXPECT_EQ(C_Set::BuildFileNameForBufferIndex("/s", 2, "vc7", "P", "").filePath(), QStringLiteral("/s/B00003_P.vc7"));
}

TEST(C_Set, CopyBufferFromSetNamesTheTargetByTheSpec)
{
    TempDir dir;
    const auto source = MakeSet(dir / "Source");
    const auto target = MakeSet(dir / "Target");
    Touch(dir / "Source", {"B00001_Pressure=3.5.im7"});
    source->GetFileList();

    target->CopyBufferFromSet(*source, 0, 0, CopyParameterValueSpec());
    target->CopyBufferFromSet(*source, 0, 1, CopyParameterValueSpec(CopyParameterValueSpec::ParameterValueFromFilename));
    target->CopyBufferFromSet(*source, 0, 2,
                              CopyParameterValueSpec(CopyParameterValueSpec::SpecifiedParameterValue, "Pressure"));
    target->CopyBufferFromSet(*source, 0, 3,
                              CopyParameterValueSpec(CopyParameterValueSpec::SpecifiedParameterValue, "Missing"));
    EXPECT_EQ(RTE::FileSystem::GetFiles(dir / "Target", "B.*", false, false),
              (std::vector<std::string>{"B00001.im7", "B00002_Pressure=3.5.im7",
                                        // from the whole path, the value runs to its end, suffix and all
                                        "B00003_Pressure=3.5.im7.im7",
                                        "B00004.im7"}));
    EXPECT_EQ(target->GetSize(), 4u);
    EXPECT_THROW(target->CopyBufferFromSet(*source, 5, 0, CopyParameterValueSpec()), RTE::VerificationFailed);
}

TEST(CopyParameterValueSpec, ChecksNameAgainstModeWithItsSwappedTexts)
{
    EXPECT_NO_THROW(CopyParameterValueSpec(CopyParameterValueSpec::SpecifiedParameterValue, "P"));
    EXPECT_NO_THROW(CopyParameterValueSpec(CopyParameterValueSpec::ParameterValueFromFilename));
    EXPECT_EQ(MessageOf([] { CopyParameterValueSpec(CopyParameterValueSpec::NoParameterValue, "P"); }),
              "Parameter name is empty");
    EXPECT_EQ(MessageOf([] { CopyParameterValueSpec(CopyParameterValueSpec::SpecifiedParameterValue, ""); }),
              "Parameter name should be empty");
}

TEST(C_Set, SourceMappingAndSourceSet)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Result");
    EXPECT_EQ(set->GetSourceIndex(4), 4u); // a fresh set maps each index to itself
    set->SetSourceMapping(10, 3);
    EXPECT_EQ(set->GetSourceIndex(0), 10u);
    EXPECT_EQ(set->GetSourceIndex(2), 16u);

    EXPECT_EQ(set->GetSourceSet(), dir.path()); // none given: the parent folder
    set->SetSourceName(dir / "Missing");
    EXPECT_EQ(set->GetSourceSet(), dir.path()); // a source that does not exist counts as none
    const auto source = MakeSet(dir / "Raw");
    set->SetSourceName(dir / "Raw.set");
    EXPECT_EQ(set->GetSourceSet(), dir / "Raw");
    set->SetSourceName(dir / "Result");
    EXPECT_EQ(set->GetSourceSet(), dir.path()); // itself: the parent folder
}

TEST(C_Set, PackTypesAnswerDifferentlyOnPurpose)
{
    TempDir dir;
    const auto set = MakeSet(dir / "Run");
    EXPECT_TRUE(set->SetPackTypeWord(2));
    EXPECT_FALSE(set->SetPackTypeFloat(2));
    EXPECT_FALSE(set->IsVirtualDataSet());
    EXPECT_FALSE(set->GetParameterTree());
    EXPECT_FALSE(set->HasFullDataTraces());
    Touch(dir / "Run", {"AnalogData.im7"});
    EXPECT_TRUE(set->HasFullDataTraces());
}
