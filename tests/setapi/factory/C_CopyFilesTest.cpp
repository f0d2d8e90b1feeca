// Copying the files of a folder on a thread: the name filter, recursion, replaced and read-only
// files, progress figures, failures and a pattern that does not compile.

#include <SetApi/factory/C_CopyFiles.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

using namespace SetApi;
using Operation = RTE::FaultInjectingFileSystem::Operation;
using TestSupport::LogCapture;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

namespace fs = boost::filesystem;

using Files = std::map<std::string, std::string>;

Files FilesOf(const std::string& folder)
{
    Files files;
    for (const std::string& file : RTE::FileSystem::GetFiles(folder, ".*", true, false))
        files[file] = ReadFile(folder + "/" + file);
    return files;
}

struct Progress {
    bool finished = false;
    int totalFiles = -1;
    int copiedFiles = -1;
    unsigned long long totalBytes = 1;
    unsigned long long copiedBytes = 1;
    std::string currentFile = "(unset)";
};

Progress ProgressOf(C_CopyFiles& copier)
{
    Progress p;
    p.finished = copier.GetProgress(p.totalFiles, p.copiedFiles, p.totalBytes, p.copiedBytes, p.currentFile);
    return p;
}

bool RunCopy(C_CopyFiles& copier, const std::string& source, const std::string& pattern, const std::string& target,
         bool recursive, bool withProgress)
{
    copier.SetParameters(source, pattern, target, recursive, withProgress);
    copier.Start();
    return copier.WaitUntilFinished();
}

class C_CopyFilesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RTE::FileSystem::CreateDirectory(m_source + "/Sub/Deeper");
        RTE::FileSystem::CreateDirectory(m_target);
        WriteFile(m_source + "/B00001.im7", std::string("\0\x01\x02\xff", 4));
        WriteFile(m_source + "/B00002.IM7", "second");
        WriteFile(m_source + "/notes.txt", "notes");
        WriteFile(m_source + "/Sub/B00003.im7", "in a sub-folder");
        WriteFile(m_source + "/Sub/Deeper/other.dat", "deeper");
    }

    TempDir m_dir;
    const std::string m_source = m_dir / "source";
    const std::string m_target = m_dir / "target";
};

} // namespace

TEST_F(C_CopyFilesTest, ThePatternFiltersFileNamesButNotFoldersAndRecursionIsOptional)
{
    C_CopyFiles copier;
    EXPECT_TRUE(RunCopy(copier, m_source, ".*", m_target, true, false));
    EXPECT_EQ(FilesOf(m_target), FilesOf(m_source));

    TempDir flat;
    EXPECT_TRUE(RunCopy(copier, m_source, ".*", flat.path(), false, false));
    EXPECT_EQ(FilesOf(flat.path()),
              (Files{{"B00001.im7", std::string("\0\x01\x02\xff", 4)},
                     {"B00002.IM7", "second"},
                     {"notes.txt", "notes"}}));

    // Case-insensitive, on the whole name; folders are entered whatever their names.
    TempDir filtered;
    EXPECT_TRUE(RunCopy(copier, m_source, "b\\d+\\.im7", filtered.path(), true, false));
    EXPECT_EQ(RTE::FileSystem::GetFiles(filtered.path(), ".*", true, false),
              (std::vector<std::string>{"B00001.im7", "B00002.IM7", "Sub/B00003.im7"}));
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(filtered / "Sub/Deeper"));
    EXPECT_EQ(copier.GetError(), "");

    RTE::FileSystem::CreateDirectory(m_target + "2");
    EXPECT_TRUE(C_SetUtilities::CopyFiles(m_source, m_target + "2", true));
    EXPECT_EQ(FilesOf(m_target + "2"), FilesOf(m_source));
}

TEST_F(C_CopyFilesTest, ReadOnlyFilesAreReplacedAndCopiedWritable)
{
    fs::permissions(m_source + "/notes.txt", fs::owner_read);
    WriteFile(m_target + "/notes.txt", "old and read-only");
    fs::permissions(m_target + "/notes.txt", fs::owner_read);

    C_CopyFiles copier;
    EXPECT_TRUE(RunCopy(copier, m_source, ".*", m_target, false, false));
    EXPECT_EQ(ReadFile(m_target + "/notes.txt"), "notes");
    EXPECT_NE(fs::status(m_target + "/notes.txt").permissions() & fs::owner_write, 0);
}

TEST_F(C_CopyFilesTest, ProgressFiguresAreKeptOnlyWhenAskedForAndEndWithTheTotals)
{
    C_CopyFiles copier;
    EXPECT_TRUE(copier.WaitUntilFinished()); // never started: no waiting
    EXPECT_FALSE(ProgressOf(copier).finished);

    copier.SetParameters(m_source, ".*", m_target, true, true);
    EXPECT_FALSE(ProgressOf(copier).finished); // armed, not run
    copier.Start();
    EXPECT_TRUE(copier.WaitUntilFinished());
    Progress p = ProgressOf(copier);
    EXPECT_TRUE(p.finished);
    EXPECT_EQ(p.totalFiles, 5);
    EXPECT_EQ(p.copiedFiles, 5);
    EXPECT_EQ(p.totalBytes, 4u + 6u + 5u + 15u + 6u);
    EXPECT_EQ(p.copiedBytes, p.totalBytes);
    EXPECT_EQ(p.currentFile.rfind(m_source + "/", 0), 0u);

    // A second run without progress starts from zero and stays there.
    EXPECT_TRUE(RunCopy(copier, m_source, ".*", m_target, true, false));
    p = ProgressOf(copier);
    EXPECT_TRUE(p.finished);
    EXPECT_EQ(p.totalFiles, 0);
    EXPECT_EQ(p.copiedFiles, 0);
    EXPECT_EQ(p.totalBytes, 0u);
    EXPECT_EQ(p.copiedBytes, 0u);
    EXPECT_EQ(p.currentFile, "");
}

TEST_F(C_CopyFilesTest, AFailedFileEndsTheRunWithTheTextAndKeepsWhatWasCopied)
{
    LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    faults->FailCall(Operation::CopyFile, 2);
    C_CopyFiles copier;
    {
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_FALSE(RunCopy(copier, m_source, ".*", m_target, false, true));
    }
    EXPECT_EQ(copier.GetError().rfind("Injected fault: CopyFile " + m_source + "/", 0), 0u) << copier.GetError();
    EXPECT_TRUE(log.contains("Set", "Error during file move source: '" + m_source + "' dest:'" + m_target +
                                        "': Injected fault: CopyFile"));
    EXPECT_EQ(FilesOf(m_target).size(), 1u);
    EXPECT_TRUE(ProgressOf(copier).finished);

    // A failure in a sub-folder fails the run too; so does a failing removal of a target file.
    for (const Operation operation : {Operation::CreateDirectory, Operation::RemoveFile}) {
        faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        faults->FailCall(operation, 1);
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_FALSE(RunCopy(copier, m_source, ".*", m_target, true, false));
        EXPECT_EQ(copier.GetError().rfind("Injected fault", 0), 0u) << copier.GetError();
    }

    // A missing source folder is a failure of the walk.
    EXPECT_FALSE(RunCopy(copier, m_dir / "missing", ".*", m_target, true, false));
    EXPECT_NE(copier.GetError(), "");
    EXPECT_TRUE(log.contains("Set", "Error during file move source: '" + m_dir / "missing" + "' dest:'"));
}

TEST_F(C_CopyFilesTest, APatternThatDoesNotCompileEndsTheRunWithoutHanging)
{
    LogCapture log;
    C_CopyFiles copier;
    for (const bool withProgress : {false, true}) {
        EXPECT_FALSE(RunCopy(copier, m_source, "*.im7", m_target, true, withProgress));
        EXPECT_NE(copier.GetError(), "");
        EXPECT_TRUE(FilesOf(m_target).empty());
    }
    const std::string error = copier.GetError();

    // The object is usable again; starting it waits for the end of the failed thread.
    EXPECT_TRUE(RunCopy(copier, m_source, ".*", m_target, true, false));
    EXPECT_EQ(copier.GetError(), "");

    // The thread's exception handler heard of it; the counting walk reported it as well.
    EXPECT_TRUE(log.contains("Thread", error));
    EXPECT_TRUE(log.contains("Set", "UpdateNumberOfFiles " + m_source + " --> " + m_target + ": "));
}
