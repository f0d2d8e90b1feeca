// Copying whole sets: what reaches the target under the two flags, what is refused, and that no
// failure at any step, nor an abort, changes a byte of the source.

#include "WholeSetTestSupport.h"

#include <SetApi/factory/C_CopyFiles.h>
#include <SetApi/factory/C_SetFactory.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <thread>

using namespace SetApi;
using namespace WholeSet;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

class C_SetFactoryCopy : public SourceSetTest {
protected:
    const std::string m_to = m_dir / "Copy";
};

// The source's content without the child set's folder.
Content WithoutChildFolder(Content content)
{
    for (auto it = content.begin(); it != content.end();)
        it = it->first.rfind("Child/", 0) == 0 ? content.erase(it) : std::next(it);
    return content;
}

} // namespace

TEST_F(C_SetFactoryCopy, CopiesEverythingWritableAndTellsTheObserversOnce)
{
    ScopedObserver observer;
    // Names in any of their forms: backslashes, an extension in any case.
    EXPECT_TRUE(Factory().Copy(m_dir.path() + "\\Run.SET", m_to + ".set", true, false));
    EXPECT_EQ(ContentOf(m_to), m_source);
    EXPECT_EQ(ContentOf(m_from), m_source);
    EXPECT_EQ(observer.Events(), std::vector<std::string>{"create " + m_to}); // the normalised name
    // The read-only buffer file gives a copy that its owner may change.
    const auto permissions = boost::filesystem::status(m_to + "/B00002.im7").permissions();
    EXPECT_NE(permissions & boost::filesystem::owner_write, 0);
}

TEST_F(C_SetFactoryCopy, WithoutRecursionChildFoldersStayBehindAndTheirSetFilesOnlyWhenKeeping)
{
    // Replacing: the child's set file comes along without its folder.
    EXPECT_TRUE(Factory().Copy(m_from, m_to, false, false));
    EXPECT_EQ(ContentOf(m_to), WithoutChildFolder(m_source));

    // Keeping: the target's other files are replaced, its set files cleaned out after the copy.
    WriteFile(m_to + "/B00009.im7", "stale");
    WriteFile(m_to + "/Other.set", "other");
    EXPECT_TRUE(Factory().Copy(m_from, m_to, false, true));
    Content expected = WithoutChildFolder(m_source);
    expected.erase("Child.set");
    EXPECT_EQ(ContentOf(m_to), expected);
}

TEST_F(C_SetFactoryCopy, AnExistingTargetIsRemovedOrCleanedOfAllButItsSetFiles)
{
    MakeSet(m_to, "old");
    WriteFile(m_to + "/B00009.im7", "stale");
    WriteFile(m_to + "/Other.set", "other");

    EXPECT_TRUE(Factory().Copy(m_from, m_to, true, true));
    Content expected = m_source;
    expected["Other.set"] = "other";
    EXPECT_EQ(ContentOf(m_to), expected);

    EXPECT_TRUE(Factory().Copy(m_from, m_to, true, false));
    EXPECT_EQ(ContentOf(m_to), m_source);
}

TEST_F(C_SetFactoryCopy, RefusesWithoutTouchingAnything)
{
    ScopedObserver observer;
    MakeSet(m_to, "old");
    const Content target = ContentOf(m_to);

    EXPECT_FALSE(Factory().Copy(m_dir / "Missing", m_to, true, false));
    EXPECT_FALSE(Factory().Copy(m_from, m_dir / "RUN.set", true, false)); // the same name in another case
    EXPECT_FALSE(Factory().Copy(m_from, "", true, false));
    EXPECT_FALSE(Factory().Copy(m_from, m_from + "/Inner", true, false)); // into its own folder
    EXPECT_FALSE(Factory().Copy(m_from + "/Child", m_from, true, false)); // a child onto its parent
    EXPECT_FALSE(RTE::FileSystem::Exists(m_dir / "Missing.set"));
    EXPECT_FALSE(RTE::FileSystem::Exists(m_from + "/Inner"));

    EXPECT_EQ(ContentOf(m_from), m_source);
    EXPECT_EQ(ContentOf(m_to), target);
    EXPECT_TRUE(observer.Events().empty());
}

TEST_F(C_SetFactoryCopy, AFailureAtAnyStepLeavesTheSourceAsItWas)
{
    // Onto no target, onto a target that is removed first, and onto one that is kept: each call
    // of each changing operation is made to fail in turn.
    struct Case {
        bool targetExists;
        bool keepExisting;
    };
    for (const Case& c : {Case{false, false}, Case{true, false}, Case{true, true}}) {
        unsigned failedRuns = 0;
        for (const Operation operation : ChangingOperations()) {
            for (unsigned call = 1; call <= 10; ++call) {
                RTE::FileSystem::RemoveDirectory(m_to);
                if (RTE::FileSystem::Exists(m_to + ".set"))
                    RTE::FileSystem::RemoveFile(m_to + ".set");
                if (c.targetExists)
                    MakeSet(m_to, "old");
                const Content target = ContentOf(m_to);

                auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
                faults->FailCall(operation, call);
                bool copied = false;
                {
                    RTE::ScopedFileSystemBackend installed(faults);
                    ScopedObserver observer;
                    copied = Factory().Copy(m_from, m_to, true, c.keepExisting);
                    const std::vector<std::string> events = observer.Events();
                    EXPECT_EQ(std::count(events.begin(), events.end(), "create " + m_to), copied ? 1 : 0);
                }
                const bool failed = faults->FailureCount(operation) > 0;
                failedRuns += failed ? 1 : 0;
                SCOPED_TRACE(std::string(RTE::FaultInjectingFileSystem::OperationName(operation)) + " call " +
                             std::to_string(call) + (c.targetExists ? " onto a set" : "") +
                             (c.keepExisting ? " keeping" : ""));
                EXPECT_EQ(ContentOf(m_from), m_source);
                if (!failed) {
                    EXPECT_TRUE(copied);
                }
                if (copied) {
                    EXPECT_EQ(ContentOf(m_to), m_source);
                }
                // Only the cleaning of a kept target tolerates a failure.
                if (failed && !c.keepExisting) {
                    EXPECT_FALSE(copied);
                }
                // A target that could not be removed is still whole.
                if (failed && c.targetExists && !c.keepExisting &&
                    (operation == Operation::Rename || operation == Operation::RemoveDirectory)) {
                    EXPECT_EQ(ContentOf(m_to), target);
                }
            }
        }
        EXPECT_GE(failedRuns, 6u);
    }
}

TEST_F(C_SetFactoryCopy, TheWatchedCopyShowsProgressOnTheCallingThread)
{
    ScopedObserver observer;
    const std::thread::id caller = std::this_thread::get_id();
    int calls = 0;
    bool ok = Factory().Copy(m_from, m_to, true, false, [&](C_CopyFiles& copier) {
        ++calls;
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_TRUE(copier.WaitUntilFinished());
        int totalFiles = 0, copiedFiles = 0;
        unsigned long long totalBytes = 0, copiedBytes = 0;
        std::string current;
        EXPECT_TRUE(copier.GetProgress(totalFiles, copiedFiles, totalBytes, copiedBytes, current));
        EXPECT_EQ(totalFiles, 5); // three files, the child's set file and the child's buffer
        EXPECT_EQ(copiedFiles, totalFiles);
        EXPECT_EQ(copiedBytes, totalBytes);
    });
    EXPECT_TRUE(ok);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(ContentOf(m_to), m_source);
    EXPECT_EQ(observer.Events(), std::vector<std::string>{"create " + m_to});
}

TEST(C_SetFactoryCopyAbort, AnAbortedCopyOfManyFilesReportsFalseWithoutTextAndLeavesTheSource)
{
    TempDir dir;
    const std::string from = dir / "Many";
    std::unique_ptr<C_Set>(C_Set::Create(from, I_Set::SET_TYPE_IMAGE, true));
    for (int i = 1; i <= 10000; ++i)
        WriteFile(from + "/B" + std::to_string(100000 + i) + ".im7", std::to_string(i));
    const Content source = ContentOf(from);

    ScopedObserver observer;
    std::string error = "(not read)";
    int copiedWhenAborted = 0;
    const bool ok = Factory().Copy(from, dir / "Target", true, false, [&](C_CopyFiles& copier) {
        int totalFiles = 0, copiedFiles = 0;
        unsigned long long totalBytes = 0, copiedBytes = 0;
        std::string current;
        while (!copier.GetProgress(totalFiles, copiedFiles, totalBytes, copiedBytes, current) && copiedFiles <= 100)
            std::this_thread::yield();
        copier.Abort();
        copiedWhenAborted = copiedFiles;
        EXPECT_FALSE(copier.WaitUntilFinished());
        error = copier.GetError();
    });
    EXPECT_FALSE(ok);
    EXPECT_GT(copiedWhenAborted, 100);
    EXPECT_EQ(error, "");
    EXPECT_LT(RTE::FileSystem::GetFiles(dir / "Target", ".*", true, false).size(), 10000u);
    EXPECT_EQ(ContentOf(from), source);
    EXPECT_TRUE(observer.Events().empty());
}
