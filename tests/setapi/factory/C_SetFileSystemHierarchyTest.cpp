// The set hierarchy of a folder: listing, the factory's events as names relative to the root, and
// the whole-set operations by relative name and by set object.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/C_SetFileSystemHierarchy.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_Set.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <atomic>
#include <memory>
#include <vector>

using namespace SetApi;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }
QString Q(const std::string& text) { return QString::fromStdString(text); }

// The kind and text of what a call raises.
template <class Function>
std::string Failure(Function&& function)
{
    try {
        function();
    } catch (const RTE::VerificationFailed& e) {
        return "VerificationFailed: " + e.message().toStdString();
    } catch (const RTE::Exception& e) {
        return "Exception: " + e.message().toStdString();
    }
    return "(no exception)";
}

// Records the hierarchy's three signals as "created X", "removed X", "changed X".
struct Events {
    explicit Events(I_SetHierarchy& hierarchy)
    {
        Connect(hierarchy.m_setCreated, "created ", created);
        Connect(hierarchy.m_setRemoved, "removed ", removed);
        Connect(hierarchy.m_setDataChanged, "changed ", changed);
    }
    void Connect(boost::signals2::signal<void(const QString&)>& signal, std::string kind,
                 boost::signals2::scoped_connection& connection)
    {
        connection = signal.connect([this, kind](const QString& path) { seen.push_back(kind + path.toStdString()); });
    }
    std::vector<std::string> seen;
    boost::signals2::scoped_connection created, removed, changed;
};

std::vector<std::string> NamesOf(const I_SetHierarchy::SetList& sets)
{
    std::vector<std::string> names;
    for (const auto& set : sets)
        names.push_back(set->GetName());
    return names;
}

class C_SetFileSystemHierarchyTest : public ::testing::Test {
protected:
    std::shared_ptr<I_Set> Make(const std::string& relative, bool folder = true)
    {
        return Factory().Create(m_root / relative, "Set", I_Set::SET_TYPE_IMAGE, folder);
    }
    bool IsSet(const std::string& relative) { return RTE::FileSystem::Exists(m_root / (relative + ".set")); }

    TempDir m_root;
    TempDir m_outside;
    C_SetFileSystemHierarchy m_hierarchy{Q(m_root.path())};
};

std::atomic<int> probeOpens{0};

} // namespace

TEST_F(C_SetFileSystemHierarchyTest, ListsEverySetFileByNameAndOpensNoneToAnswerHasChildren)
{
    Make("B");
    Make("A", false); // a set file without folder
    WriteFile(m_root / "C.set", "#GROUP Sets\nSetIdentifier = \"NoSuchKind\";\n");
    RTE::FileSystem::CreateDirectory(m_root / "Loose"); // a folder alone is no set
    WriteFile(m_root / "notes.txt", "x");

    const auto sets = m_hierarchy.GetRootSets();
    EXPECT_EQ(NamesOf(sets), (std::vector<std::string>{m_root / "A", m_root / "B", m_root / "C"}));
    EXPECT_TRUE(sets[0]->IsOpen());
    EXPECT_TRUE(std::dynamic_pointer_cast<C_NullSet>(sets[2]) && !sets[2]->IsOpen());
    EXPECT_TRUE(m_hierarchy.GetChildrenOfSet(sets[0]).empty());
    EXPECT_FALSE(m_hierarchy.HasSetChildren(sets[0]));
    EXPECT_FALSE(m_hierarchy.HasSetChildren(sets[1]));

    static const bool registered = (Factory().Register("TestHierarchyProbe", [](const std::string& path) {
        ++probeOpens;
        return C_Set::Open(path);
    }, &C_Set::Create), true);
    (void)registered;
    WriteFile(m_root / "B/Probe.set", "#GROUP Sets\nSetIdentifier = \"TestHierarchyProbe\";\n");
    probeOpens = 0;
    EXPECT_TRUE(m_hierarchy.HasSetChildren(sets[1]));
    EXPECT_EQ(probeOpens, 0);
    EXPECT_EQ(NamesOf(m_hierarchy.GetChildrenOfSet(sets[1])), std::vector<std::string>{m_root / "B/Probe"});
    EXPECT_EQ(probeOpens, 1);
    EXPECT_EQ(m_hierarchy.GetSetFromPath("B/Probe")->GetName(), m_root / "B/Probe");

    EXPECT_EQ(Failure([&] { m_hierarchy.GetChildrenOfSet(nullptr); }), "VerificationFailed: Set is null.");
    EXPECT_EQ(Failure([&] { m_hierarchy.HasSetChildren(nullptr); }),
              "VerificationFailed: Parent set must not be null.");
    C_SetFileSystemHierarchy gone(Q(m_root / "Loose"));
    RTE::FileSystem::RemoveDirectory(m_root / "Loose");
    EXPECT_EQ(Failure([&] { gone.GetRootSets(); }), "VerificationFailed: Path does not exists: Loose");
}

TEST_F(C_SetFileSystemHierarchyTest, TellsTheFactoryEventsUnderTheRootAsRelativeNames)
{
    Events events(m_hierarchy);
    Make("Run");
    Make("Run/Child");
    Factory().Create(m_outside / "Far", "Set", I_Set::SET_TYPE_IMAGE, true);
    Factory().NotifyOnDataChanged(m_root / "Run");
    Factory().NotifyOnDataChanged(m_outside / "Far");
    std::string error;
    Factory().Remove(m_root / "Run/Child", error);
    Factory().Rename(m_root / "Run", "Renamed"); // renames are not passed on
    Factory().Copy(m_root / "Renamed", m_root / "Copy", true, true);
    EXPECT_EQ(events.seen, (std::vector<std::string>{"created Run", "created Run/Child", "changed Run",
                                                     "removed Run/Child", "created Copy"}));
}

TEST_F(C_SetFileSystemHierarchyTest, ANewRootReplacesTheOldOneAndAMissingOneKeepsIt)
{
    Events events(m_hierarchy);
    m_hierarchy.SetRootFolder(Q(m_root.path())); // no second attachment
    EXPECT_EQ(Failure([&] { m_hierarchy.SetRootFolder(Q(m_root / "Missing")); }),
              "VerificationFailed: Set hierarchy root folder does not exists: " + m_root / "Missing");
    m_hierarchy.SetRootFolder(""); // does nothing
    Make("A");
    Factory().NotifyOnDataChanged(m_root / "A");
    EXPECT_EQ(events.seen, (std::vector<std::string>{"created A", "changed A"}));

    m_hierarchy.SetRootFolder(Q(m_root / "A"));
    events.seen.clear();
    Make("A/Inner");
    Make("Top");
    EXPECT_EQ(events.seen, std::vector<std::string>{"created Inner"});
    EXPECT_EQ(NamesOf(m_hierarchy.GetRootSets()), std::vector<std::string>{m_root / "A/Inner"});
}

TEST_F(C_SetFileSystemHierarchyTest, WithoutRootOrWhenDestroyedItHearsNothing)
{
    auto unrooted = std::make_unique<C_SetFileSystemHierarchy>("");
    auto destroyed = std::make_unique<C_SetFileSystemHierarchy>(Q(m_root.path()));
    Events unrootedEvents(*unrooted);
    destroyed.reset(); // a factory call into it now would touch freed memory
    Make("Run");
    Factory().NotifyOnDataChanged(m_root / "Run");
    EXPECT_TRUE(unrootedEvents.seen.empty());

    // Without root the current folder is listed.
    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(Q(m_root.path())));
    const auto sets = unrooted->GetRootSets();
    QDir::setCurrent(previous);
    EXPECT_EQ(NamesOf(sets), std::vector<std::string>{m_root / "Run"});
}

TEST_F(C_SetFileSystemHierarchyTest, RenamesWithinTheFolderAndSilentlyNotOntoAnExistingSet)
{
    auto run = Make("Run");
    Make("Other");
    const std::string refused = "VerificationFailed: The new name must not contain a hierarchy path!";
    EXPECT_EQ(Failure([&] { m_hierarchy.RenameSet("Run", "Sub/Name"); }), refused);
    EXPECT_EQ(Failure([&] { m_hierarchy.RenameSet(run, "Sub\\Name"); }), refused);
    EXPECT_EQ(Failure([&] { m_hierarchy.RenameSet("Run", "Other"); }), "(no exception)");
    EXPECT_TRUE(IsSet("Run") && IsSet("Other"));

    m_hierarchy.RenameSet("Run", "Moved");
    EXPECT_TRUE(IsSet("Moved") && !IsSet("Run"));
    m_hierarchy.RenameSet(m_hierarchy.GetSetFromPath("Other"), "Else");
    EXPECT_TRUE(IsSet("Else") && !IsSet("Other"));
}

TEST_F(C_SetFileSystemHierarchyTest, DeletesQuietlyWhenAbsentAndReportsTheFactorysReason)
{
    EXPECT_EQ(Failure([&] { m_hierarchy.DeleteSet("Nothing"); }), "(no exception)");
    Make("Run");
    m_hierarchy.DeleteSet("Run");
    EXPECT_FALSE(IsSet("Run") || RTE::FileSystem::Exists(m_root / "Run"));

    auto kept = Make("Kept");
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(RTE::FaultInjectingFileSystem::Operation::Rename, 1);
    EXPECT_EQ(Failure([&] { m_hierarchy.DeleteSet(kept); }),
              "Exception: Could not remove set" + m_root / "Kept" + ". Error: SET folder may be used by other application");
    EXPECT_TRUE(IsSet("Kept"));
}

TEST_F(C_SetFileSystemHierarchyTest, CopiesAndMovesByNameAndIntoAParentSet)
{
    auto run = Make("Run");
    WriteFile(m_root / "Run/B00001.im7", "buffer");
    auto child = Make("Run/Child");
    auto parent = Make("Parent");

    m_hierarchy.CopySet("Run", "Copy");
    EXPECT_EQ(ReadFile(m_root / "Copy/B00001.im7"), "buffer");
    EXPECT_TRUE(IsSet("Copy/Child")); // child sets come along
    const auto copy = m_hierarchy.CopySet(run, parent);
    EXPECT_EQ(copy->GetName(), m_root / "Parent/Run");
    EXPECT_TRUE(copy->IsOpen());
    EXPECT_EQ(m_hierarchy.CopySet(child, run), child); // already there: the very object

    m_hierarchy.MoveSet("Copy", "Moved");
    EXPECT_TRUE(IsSet("Moved") && !IsSet("Copy"));
    m_hierarchy.MoveSet(m_hierarchy.GetSetFromPath("Moved"), parent);
    EXPECT_EQ(ReadFile(m_root / "Parent/Moved/B00001.im7"), "buffer");
    m_hierarchy.MoveSet(child, run); // already there: nothing happens
    EXPECT_TRUE(IsSet("Run/Child"));

    // A failed move shares the copy's text.
    EXPECT_EQ(Failure([&] { m_hierarchy.CopySet("Missing", "X"); }), "VerificationFailed: CopySet failed");
    EXPECT_EQ(Failure([&] { m_hierarchy.MoveSet("Missing", "X"); }), "VerificationFailed: CopySet failed");
}
