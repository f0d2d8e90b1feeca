// Removing whole sets: set file and folder go together, and each failing step puts back what has
// been moved, so that the set stays as it was.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/set/C_Set.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <memory>
#include <vector>

using namespace SetApi;
using Operation = RTE::FaultInjectingFileSystem::Operation;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

struct RemovalObserver : I_SetFactoryObserver {
    std::vector<std::string> removed;
    void OnCreate(const std::string&) override {}
    void OnRemove(const std::string& path) override { removed.push_back(path); }
    void OnRename(const std::string&, const std::string&) override {}
};

class C_SetFactoryRemove : public ::testing::Test {
protected:
    void SetUp() override
    {
        C_SetFactory::Instance().Attach(&m_observer);
        std::unique_ptr<C_Set>(C_Set::Create(m_dir / "Run", I_Set::SET_TYPE_IMAGE, true));
        WriteFile(m_dir / "Run/B00001.im7", "buffer");
        RTE::FileSystem::CreateDirectory(m_dir / "Run/Child");
        WriteFile(m_dir / "Run/Child/B00001.im7", "child");
        m_setFile = ReadFile(m_dir / "Run.set");
    }
    void TearDown() override { C_SetFactory::Instance().Detach(&m_observer); }

    void ExpectSetAsItWas()
    {
        EXPECT_EQ(ReadFile(m_dir / "Run.set"), m_setFile);
        EXPECT_EQ(ReadFile(m_dir / "Run/B00001.im7"), "buffer");
        EXPECT_EQ(ReadFile(m_dir / "Run/Child/B00001.im7"), "child");
        EXPECT_EQ(RTE::FileSystem::GetFiles(m_dir.path(), "_Temp.*", false, false).size(), 0u);
        EXPECT_TRUE(m_observer.removed.empty());
    }

    std::string FailingRemove()
    {
        std::string error;
        EXPECT_FALSE(C_SetFactory::Instance().Remove(m_dir / "Run", error));
        return error;
    }

    TempDir m_dir;
    RemovalObserver m_observer;
    std::string m_setFile;
};

} // namespace

TEST_F(C_SetFactoryRemove, RemovesFileAndFolderAndTellsTheObservers)
{
    std::string error = "stale";
    EXPECT_TRUE(C_SetFactory::Instance().Remove(m_dir / "Run.set", error));
    EXPECT_EQ(error, "");
    EXPECT_FALSE(RTE::FileSystem::Exists(m_dir / "Run.set"));
    EXPECT_FALSE(RTE::FileSystem::Exists(m_dir / "Run"));
    EXPECT_EQ(RTE::FileSystem::GetFiles(m_dir.path(), ".*", true, false).size(), 0u);
    EXPECT_EQ(m_observer.removed, std::vector<std::string>{m_dir / "Run.set"}); // the caller's path

    EXPECT_FALSE(C_SetFactory::Instance().Remove(m_dir / "Run", error)); // no longer there
    EXPECT_EQ(error, "");
}

TEST_F(C_SetFactoryRemove, AFolderWithoutSetFileIsNoSetAndAPinnedSetIsUnpinned)
{
    RTE::FileSystem::CreateDirectory(m_dir / "Loose");
    EXPECT_FALSE(C_SetFactory::Instance().Remove(QString::fromStdString(m_dir / "Loose")));
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(m_dir / "Loose"));

    auto pinned = C_SetFactory::Instance().Open(m_dir / "Run");
    C_SetFactory::Instance().AddPersistant(pinned);
    EXPECT_TRUE(C_SetFactory::Instance().Remove(QString::fromStdString(m_dir / "Run")));
    EXPECT_FALSE(C_SetFactory::Instance().Exists(m_dir / "Run"));
}

TEST_F(C_SetFactoryRemove, EachFailingStepPutsBackWhatHasMoved)
{
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);

    faults->FailCall(Operation::Rename, 1);
    EXPECT_EQ(FailingRemove(), "SET folder may be used by other application");
    ExpectSetAsItWas();

    faults->ClearFaults();
    faults->ResetCounts();
    faults->FailCall(Operation::Rename, 2);
    EXPECT_EQ(FailingRemove(), "SET file may be used by other application");
    ExpectSetAsItWas();

    faults->ClearFaults();
    faults->ResetCounts();
    faults->FailCall(Operation::RemoveDirectory, 1);
    EXPECT_EQ(FailingRemove(), "SET directory can't be removed");
    ExpectSetAsItWas();

    // The folder is gone by then; the set file alone comes back.
    faults->ClearFaults();
    faults->ResetCounts();
    faults->FailCall(Operation::RemoveFile, 1);
    EXPECT_EQ(FailingRemove(), "SET file can't be removed");
    EXPECT_EQ(ReadFile(m_dir / "Run.set"), m_setFile);
    EXPECT_FALSE(RTE::FileSystem::Exists(m_dir / "Run"));
    EXPECT_TRUE(m_observer.removed.empty());
}

TEST(C_SetFactorySame, ComparesNamesInUpperCase)
{
    C_SetFactory& factory = C_SetFactory::Instance();
    EXPECT_TRUE(factory.Same("/data/Run01", "/DATA/run01"));
    EXPECT_FALSE(factory.Same("/data/Run01", "/data/Run01/"));
}
