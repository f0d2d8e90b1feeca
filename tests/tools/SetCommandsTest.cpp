// The whole-set commands as the tool runs them: what they leave on disk, what they refuse before
// touching anything, and how a copy ends when Ctrl-C arrives or the disk fails.

#include "Commands.h"
#include "DemoBuffers.h"
#include "ProgressLine.h"
#include "UnopenedSet.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/set/SetTypeIdentifiers.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <BufferApi/I_Buffer.h>

#include <boost/filesystem.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <sstream>
#include <thread>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace {

namespace fs = boost::filesystem;
using SetApi::C_SetFactory;
using TestSupport::MessageOf;

// Every file under a folder (or the one file) by its path relative to it, with its bytes.
std::map<std::string, std::string> Snapshot(const std::string& path)
{
    std::map<std::string, std::string> files;
    if (fs::is_regular_file(path)) {
        files[""] = TestSupport::ReadFile(path);
        return files;
    }
    if (!fs::is_directory(path))
        return files;
    for (fs::recursive_directory_iterator entry(path), end; entry != end; ++entry)
        if (fs::is_regular_file(entry->status()))
            files[fs::relative(entry->path(), path).generic_string()] = TestSupport::ReadFile(entry->path().string());
    return files;
}

bool Exists(const std::string& path) { return fs::exists(path); }

// An image set with `count` demo buffers of 64 x 48.
void MakeImageSet(const std::string& path, unsigned count)
{
    auto set = C_SetFactory::Instance().Create(QString::fromStdString(path), SetApi::TypeIdentifiers::Image);
    ASSERT_TRUE(set->IsOpen()) << path;
    for (unsigned i = 0; i < count; ++i) {
        const auto buffer = SetApiTool::MakeDemoBuffer(i, 64, 48);
        set->StoreBuffer(buffer.get(), i);
    }
}

// A project: Run (4 buffers) with the child set Run/Vectors (1 buffer).
struct Project {
    TestSupport::TempDir dir;
    std::string run = dir / "Run";
    std::string child = dir / "Run/Vectors";
    Project()
    {
        MakeImageSet(run, 4);
        MakeImageSet(child, 1);
    }
};

// Forwards to the default backend, but takes its time for each file copied, so that a copy of a
// small set is still running when the test's interrupt is seen.
class SlowCopies : public RTE::FaultInjectingFileSystem {
public:
    void CopyFile(const std::string& from, const std::string& to, bool overwrite) override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        RTE::FaultInjectingFileSystem::CopyFile(from, to, overwrite);
    }
};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::string List(const std::string& folder, bool recursive)
{
    std::ostringstream out;
    EXPECT_EQ(SetApiTool::RunList(folder, recursive, out), 0);
    return out.str();
}

TEST(ListCommand, ShowsTheSetsOfAFolderWithChildrenIndentedAndBrokenSetFilesMarked)
{
    const TestSupport::LogCapture log; // the refusals log themselves
    Project project;
    MakeImageSet(project.dir / "Another", 1);
    TestSupport::WriteFile(project.dir / "Broken.set", "#GROUP Sets\nSetIdentifier = \"NoSuchKind\";\n");
    fs::create_directories(project.dir / "NotASet"); // a folder without a set file is no set

    EXPECT_EQ(Lines(List(project.dir.path(), false)),
              (std::vector<std::string>{"Another  Image  1 buffer", "Broken   (does not open)",
                                        "Run      Image  4 buffers"}));
    EXPECT_EQ(Lines(List(project.dir.path(), true)),
              (std::vector<std::string>{"Another    Image  1 buffer", "Broken     (does not open)",
                                        "Run        Image  4 buffers", "  Vectors  Image  1 buffer"}));

    EXPECT_EQ(List(project.dir / "NotASet", true), "");
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunList(project.dir / "missing", true, std::cout); }),
              "there is no folder '" + project.dir / "missing" + "'");
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunList(project.run + ".set", false, std::cout); }),
              "'" + project.run + ".set' is no folder");
}

// A recording that ended before its first image has its set file and folder but no configuration:
// it does not open, and the tool says what it is instead of "(does not open)".
TEST(ListCommand, NamesARecordingWithoutImages)
{
    const TestSupport::LogCapture log;
    TestSupport::TempDir dir;
    {
        SetApi::StreamSetWriter writer(2);
        writer.Create(QString::fromStdString(dir / "Empty"), BufferApi::BUFFER_PACK_NONE);
        writer.Close();
    }
    TestSupport::WriteFile(dir / "Broken.set", "#GROUP Sets\nSetIdentifier = \"NoSuchKind\";\n");
    ASSERT_FALSE(C_SetFactory::Instance().Open(dir / "Empty")->IsOpen());
    const std::string why = "a recording without images (it ended before its first image was written)";
    EXPECT_EQ(SetApiTool::DescribeUnopenedSet(dir / "Empty"), why);
    EXPECT_EQ(SetApiTool::DescribeUnopenedSet(dir / "Broken"), "");
    EXPECT_EQ(SetApiTool::DescribeUnopenedSet(dir / "Missing"), "");
    EXPECT_EQ(Lines(List(dir.path(), false)),
              (std::vector<std::string>{"Broken  (does not open)", "Empty   (" + why + ")"}));
}

#ifndef _WIN32
TEST(ListCommand, EndsOnAFolderLinkThatLeadsBackUp)
{
    TestSupport::TempDir dir;
    MakeImageSet(dir / "Loop", 0);
    fs::remove_all(dir / "Loop");
    fs::create_directory_symlink(dir.path(), dir / "Loop"); // Loop's folder is the root again
    EXPECT_EQ(Lines(List(dir.path(), true)), std::vector<std::string>{"Loop  Image  0 buffers"});
}
#endif

SetApiTool::S_CopyOptions Options(bool recursive = true, bool keepExisting = false)
{
    SetApiTool::S_CopyOptions options;
    options.recursive = recursive;
    options.keepExisting = keepExisting;
    return options;
}

TEST(CopyCommand, MakesABitIdenticalCopyWithChildSetsAndReplacesAnExistingTarget)
{
    Project project;
    const std::string target = project.dir / "Copy";
    MakeImageSet(target, 0);
    TestSupport::WriteFile(target + "/left-over.txt", "from the set that was there");

    std::atomic<bool> interrupted{false};
    std::ostringstream progress;
    SetApiTool::S_CopyProgress last;
    SetApiTool::CopyWatch watch{interrupted, &progress, [&](const SetApiTool::S_CopyProgress& p) { last = p; }};
    ASSERT_EQ(SetApiTool::RunCopy(project.run + ".set", target + "/", Options(), watch), 0);

    EXPECT_EQ(Snapshot(target), Snapshot(project.run)) << "buffer files and the child set, bit for bit";
    EXPECT_EQ(Snapshot(target + ".set"), Snapshot(project.run + ".set"));
    EXPECT_EQ(last.copiedFiles, last.totalFiles);
    EXPECT_EQ(last.copiedBytes, last.totalBytes);
    EXPECT_EQ(last.totalFiles, int(Snapshot(project.run).size()));
    // Not on a terminal here, but a given stream gets the line, ended once the copy is done.
    EXPECT_NE(progress.str().find(std::to_string(last.totalFiles) + "/" + std::to_string(last.totalFiles) + " files"),
              std::string::npos);
    EXPECT_EQ(progress.str().back(), '\n');

    const std::string flat = project.dir / "Flat";
    ASSERT_EQ(SetApiTool::RunCopy(project.run, flat, Options(false), watch), 0);
    EXPECT_FALSE(Exists(flat + "/Vectors"));
    EXPECT_EQ(Snapshot(flat + "/B00001.im7"), Snapshot(project.run + "/B00001.im7"));
}

TEST(CopyCommand, RefusesBeforeTouchingAnything)
{
    const TestSupport::LogCapture log; // the refusals log themselves
    Project project;
    MakeImageSet(project.dir / "Other", 1);
    const auto before = Snapshot(project.dir.path());
    std::atomic<bool> interrupted{false};
    const SetApiTool::CopyWatch watch{interrupted, nullptr, {}};
    const auto copy = [&](const std::string& from, const std::string& to) {
        return MessageOf([&] { SetApiTool::RunCopy(from, to, Options(), watch); });
    };
    const std::string run = project.run;
    EXPECT_EQ(copy(project.dir / "Nothing", project.dir / "New"),
              "'" + project.dir / "Nothing" + "' is no set: there is no file '" + project.dir / "Nothing.set'");
    EXPECT_EQ(copy(run, run + ".set"), "cannot copy '" + run + "' to '" + run + ".set': they are the same set");
    EXPECT_EQ(copy(run, project.dir / "./Run/../Run"),
              "cannot copy '" + run + "' to '" + project.dir / "./Run/../Run" + "': they are the same set");
    EXPECT_EQ(copy(run, run + "/Inside"),
              "cannot copy '" + run + "' to '" + run + "/Inside': one set lies inside the folder of the other");
    // Replacing the target would delete the source with it.
    EXPECT_EQ(copy(project.child, run),
              "cannot copy '" + project.child + "' to '" + run + "': one set lies inside the folder of the other");
    EXPECT_EQ(copy(run, project.dir / "missing/New"),
              "cannot make the set '" + project.dir / "missing/New" + "': there is no folder '" + project.dir / "missing'");
    EXPECT_EQ(Snapshot(project.dir.path()), before);
}

// Ctrl-C during the copy: the copier stops, a target the command began is removed again, the
// source is as it was; a target that existed before stays.
TEST(CopyCommand, StopsOnAnInterruptAndLeavesNoTargetBehind)
{
    Project project;
    for (unsigned i = 4; i < 40; ++i) {
        auto set = C_SetFactory::Instance().Open(project.run);
        const auto buffer = SetApiTool::MakeDemoBuffer(i, 64, 48);
        set->StoreBuffer(buffer.get(), i);
    }
    const auto source = Snapshot(project.dir.path());
    RTE::ScopedFileSystemBackend slow(std::make_shared<SlowCopies>());

    struct Case {
        const char* what;
        int raiseAfterFiles; // -1: before the copy starts
        bool targetExists;
    };
    for (const Case& c : {Case{"after two files", 2, false}, Case{"before the copy starts", -1, false},
                          Case{"into an existing target", 2, true}}) {
        SCOPED_TRACE(c.what);
        const std::string target = project.dir / "Copy";
        if (c.targetExists)
            MakeImageSet(target, 1);
        std::atomic<bool> interrupted{c.raiseAfterFiles < 0};
        int polls = 0;
        const SetApiTool::CopyWatch watch{interrupted, nullptr, [&](const SetApiTool::S_CopyProgress& p) {
                                              ++polls;
                                              if (p.copiedFiles >= c.raiseAfterFiles)
                                                  interrupted = true;
                                          }};
        EXPECT_EQ(SetApiTool::RunCopy(project.run, target, Options(true, true), watch), SetApiTool::InterruptedExitCode);
        EXPECT_GT(polls, 0);
        EXPECT_EQ(Exists(target + ".set"), c.targetExists);
        if (!c.targetExists) {
            EXPECT_FALSE(Exists(target));
        }
        fs::remove_all(target);
        fs::remove(target + ".set");
        EXPECT_EQ(Snapshot(project.dir.path()), source);
    }
}

TEST(CopyCommand, AFailedCopyRaisesAndRemovesTheTargetItBegan)
{
    const TestSupport::LogCapture log; // the refusals log themselves
    Project project;
    const auto source = Snapshot(project.dir.path());
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    faults->FailCall(RTE::FaultInjectingFileSystem::Operation::CopyFile, 3); // the set file is the first
    RTE::ScopedFileSystemBackend installed(faults);
    std::atomic<bool> interrupted{false};
    const SetApiTool::CopyWatch watch{interrupted, nullptr, {}};
    const std::string target = project.dir / "Copy";
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunCopy(project.run, target, Options(), watch); }),
              "could not copy '" + project.run + "' to '" + target + "'");
    EXPECT_FALSE(Exists(target + ".set"));
    EXPECT_FALSE(Exists(target));
    EXPECT_EQ(Snapshot(project.dir.path()), source);
}

TEST(WholeSetCommands, MoveRemoveAndRenameChangeTheDiskOrRefuseWithAReason)
{
    const TestSupport::LogCapture log; // the refusals log themselves
    Project project;
    MakeImageSet(project.dir / "Other", 1);
    fs::create_directories(project.dir / "Archive");
    const auto run = Snapshot(project.run);

    // rename: a bare name, within the folder; not onto an existing set.
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRename(project.run, "Archive/Run"); }),
              "the new name 'Archive/Run' must be a bare name, without '/' or '\\': rename stays within the set's "
              "folder (use mv to move a set)");
    EXPECT_NE(MessageOf([&] { SetApiTool::RunRename(project.run, "a\\b"); }).find("must be a bare name"),
              std::string::npos);
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRename(project.run, ".."); }), "'..' is no name for a set");
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRename(project.run, "Other.set"); }),
              "cannot rename '" + project.run + "' to 'Other.set': a set of that name exists");
    EXPECT_EQ(SetApiTool::RunRename(project.run, "Run2.set"), 0);
    EXPECT_FALSE(Exists(project.run + ".set"));
    EXPECT_EQ(Snapshot(project.dir / "Run2"), run);

    // mv: to another folder; not onto an existing set, not into itself.
    const std::string moved = project.dir / "Archive/Run";
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunMove(project.dir / "Run2", project.dir / "Other"); }),
              "cannot move '" + project.dir / "Run2" + "' to '" + project.dir / "Other" + "': a set of that name exists");
    EXPECT_NE(MessageOf([&] { SetApiTool::RunMove(project.dir / "Run2", project.dir / "Run2/Vectors/Deeper"); })
                  .find("one set lies inside the folder of the other"),
              std::string::npos);
    EXPECT_EQ(SetApiTool::RunMove(project.dir / "Run2", moved), 0);
    EXPECT_FALSE(Exists(project.dir / "Run2.set"));
    EXPECT_FALSE(Exists(project.dir / "Run2"));
    EXPECT_TRUE(Exists(moved + ".set"));
    EXPECT_EQ(Snapshot(moved), run);

    // rm: the factory's reason on failure.
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunRemove(project.dir / "Run2"); }),
              "'" + project.dir / "Run2" + "' is no set: there is no file '" + project.dir / "Run2.set'");
#ifndef _WIN32
    if (geteuid() != 0) { // root may write anyway
        fs::permissions(moved + ".set", fs::owner_read);
        EXPECT_EQ(MessageOf([&] { SetApiTool::RunRemove(moved); }),
                  "could not remove '" + moved + "': No write access to SET");
        fs::permissions(moved + ".set", fs::owner_read | fs::owner_write);
    }
#endif
    EXPECT_EQ(SetApiTool::RunRemove(moved + ".set"), 0);
    EXPECT_FALSE(Exists(moved + ".set"));
    EXPECT_FALSE(Exists(moved));
    EXPECT_EQ(MessageOf([&] { SetApiTool::RunMove(moved, project.dir / "Back"); }),
              "'" + moved + "' is no set: there is no file '" + moved + ".set'");
}

TEST(ProgressLine, SaysWhatIsLeftAndOverwritesItselfCompletely)
{
    SetApiTool::S_CopyProgress progress;
    progress.totalFiles = 1000;
    progress.totalBytes = 1000000000;
    EXPECT_EQ(SetApiTool::FormatCopyProgress(progress), "0/1000 files, 0.0/1000.0 MB, -- MB/s, -- left");
    progress.copiedFiles = 250;
    progress.copiedBytes = 250000000;
    progress.seconds = 2;
    EXPECT_EQ(SetApiTool::FormatCopyProgress(progress), "250/1000 files, 250.0/1000.0 MB, 125.0 MB/s, 0:06 left");
    progress.seconds = 1200; // 3600 s left
    EXPECT_EQ(SetApiTool::FormatCopyProgress(progress), "250/1000 files, 250.0/1000.0 MB, 0.2 MB/s, 1:00:00 left");
    progress.seconds = 1e9;
    EXPECT_NE(SetApiTool::FormatCopyProgress(progress).find(">99 h left"), std::string::npos);
    progress.copiedBytes = progress.totalBytes + 5; // a file grew after it was counted
    progress.seconds = 1;
    EXPECT_NE(SetApiTool::FormatCopyProgress(progress).find("0:00 left"), std::string::npos);

    std::ostringstream out;
    {
        SetApiTool::ProgressLine line(out);
        line.Show("a longer text");
        line.Show("short");
        line.Show("tiny");
    }
    EXPECT_EQ(out.str(), "\ra longer text\rshort        \rtiny \n");
    std::ostringstream unused;
    SetApiTool::ProgressLine(unused).Finish();
    EXPECT_EQ(unused.str(), "") << "no line shown, no line ended";
}

} // namespace
