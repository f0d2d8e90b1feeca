// Moving whole sets: the fast way by renaming, the slow way by copying when renaming fails, the
// observers' view of both, what is refused, and that no failure loses a byte of the set.

#include "WholeSetTestSupport.h"

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

using namespace SetApi;
using namespace WholeSet;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

class C_SetFactoryMove : public SourceSetTest {
protected:
    const std::string m_to = m_dir / "Moved";
};

} // namespace

TEST_F(C_SetFactoryMove, TheFastWayRenamesAndTellsOfRemovalThenCreation)
{
    ScopedObserver observer;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    {
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_TRUE(Factory().Move(m_from + ".set", m_to));
    }
    EXPECT_EQ(faults->CallCount(Operation::CopyFile), 1u); // the set file only
    EXPECT_EQ(ContentOf(m_to), m_source);
    EXPECT_TRUE(ContentOf(m_from).empty());
    EXPECT_EQ(observer.Events(), (std::vector<std::string>{"remove " + m_from, "create " + m_to}));
}

TEST_F(C_SetFactoryMove, WhenRenamingFailsTheSlowWayCopiesAndRemovesTheSource)
{
    ScopedObserver observer;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    faults->FailCall(Operation::Rename, 1);
    {
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_TRUE(Factory().Move(m_from, m_to));
    }
    EXPECT_GT(faults->CallCount(Operation::CopyFile), 1u); // file by file
    EXPECT_EQ(ContentOf(m_to), m_source);
    EXPECT_TRUE(ContentOf(m_from).empty());
    EXPECT_EQ(RTE::FileSystem::GetFiles(m_dir.path(), "_Temp.*", false, false).size(), 0u);
    // The removal is told by Remove, with the source's normalised name.
    EXPECT_EQ(observer.Events(), (std::vector<std::string>{"remove " + m_from, "create " + m_to}));
}

TEST_F(C_SetFactoryMove, ASetAtTheTargetIsReplaced)
{
    MakeSet(m_to, "old");
    WriteFile(m_to + "/B00009.im7", "stale");
    EXPECT_TRUE(Factory().Move(m_from, m_to));
    EXPECT_EQ(ContentOf(m_to), m_source);
    EXPECT_TRUE(ContentOf(m_from).empty());
}

TEST_F(C_SetFactoryMove, RefusesWithoutTouchingAnything)
{
    ScopedObserver observer;
    EXPECT_FALSE(Factory().Move(m_dir / "Missing", m_to));
    EXPECT_FALSE(Factory().Move(m_from, m_dir / "RUN")); // differs only in case
    EXPECT_FALSE(Factory().Move(m_from, ""));
    EXPECT_FALSE(Factory().Move(m_from, m_from + "/Inner"));  // into its own folder
    EXPECT_FALSE(Factory().Move(m_from + "/Child", m_from)); // a child onto its parent
    EXPECT_EQ(ContentOf(m_from), m_source);
    EXPECT_FALSE(RTE::FileSystem::Exists(m_dir / "RUN.set"));
    EXPECT_FALSE(RTE::FileSystem::Exists(m_from + "/Inner"));
    EXPECT_TRUE(observer.Events().empty());
}

// Every file that is left of the source is as it was.
bool IsPartOf(const Content& part, const Content& whole)
{
    for (const auto& file : part) {
        const auto it = whole.find(file.first);
        if (it == whole.end() || it->second != file.second)
            return false;
    }
    return true;
}

TEST_F(C_SetFactoryMove, NoFailureAtAnyStepLosesTheSet)
{
    // Each call of each changing operation is made to fail in turn: with and without a set at the
    // target, and with the fast way blocked so that the slow way's steps fail too. Either the move
    // succeeded and the target is the whole set (of the source, what could not be removed is
    // left unchanged), or the source is as it was.
    struct Case {
        bool targetExists;
        bool slowWay;
    };
    for (const Case& c : {Case{false, false}, Case{true, false}, Case{false, true}}) {
        unsigned failedRuns = 0;
        for (const Operation operation : ChangingOperations()) {
            for (unsigned call = 1; call <= 12; ++call) {
                RTE::FileSystem::RemoveDirectory(m_from);
                RTE::FileSystem::RemoveDirectory(m_to);
                for (const std::string& file : RTE::FileSystem::GetFiles(m_dir.path(), ".*", false, true))
                    RTE::FileSystem::RemoveFile(file);
                MakeSet(m_from, "source");
                if (c.targetExists)
                    MakeSet(m_to, "old");
                const Content original = ContentOf(m_from); // a new time stamp in the set file

                auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
                if (c.slowWay)
                    faults->FailCall(Operation::Rename, 1);
                faults->FailCall(operation, call);
                bool moved = false;
                std::vector<std::string> events;
                {
                    RTE::ScopedFileSystemBackend installed(faults);
                    ScopedObserver observer;
                    moved = Factory().Move(m_from, m_to);
                    events = observer.Events();
                }
                unsigned failures = 0;
                for (const Operation any : ChangingOperations())
                    failures += faults->FailureCount(any);
                const bool failed = failures > (c.slowWay ? 1u : 0u); // beyond the blocked fast way
                failedRuns += failed ? 1 : 0;
                SCOPED_TRACE(std::string(RTE::FaultInjectingFileSystem::OperationName(operation)) + " call " +
                             std::to_string(call) + (c.targetExists ? " onto a set" : "") +
                             (c.slowWay ? " the slow way" : ""));
                const Content source = ContentOf(m_from);
                if (!failed) {
                    EXPECT_TRUE(moved);
                }
                if (moved) {
                    EXPECT_EQ(ContentOf(m_to), original);
                    EXPECT_TRUE(IsPartOf(source, original));
                    ASSERT_FALSE(events.empty());
                    EXPECT_EQ(events.back(), "create " + m_to);
                } else {
                    EXPECT_EQ(source, original);
                }
            }
        }
        EXPECT_GE(failedRuns, 3u);
    }
}
