// Renaming whole sets within their folder: set file and folder together, the observers' view, a
// refused rename, and the deliberate lack of a roll-back.

#include "WholeSetTestSupport.h"

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

using namespace SetApi;
using namespace WholeSet;
using TestSupport::LogCapture;
using TestSupport::TempDir;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

class C_SetFactoryRename : public ::testing::Test {
protected:
    void SetUp() override
    {
        MakeSet(m_old, "source");
        m_source = ContentOf(m_old);
    }

    TempDir m_dir;
    const std::string m_old = m_dir / "Run";
    const std::string m_new = m_dir / "Renamed";
    Content m_source;
};

} // namespace

TEST_F(C_SetFactoryRename, RenamesFileAndFolderAndTellsTheNormalisedNames)
{
    ScopedObserver observer;
    EXPECT_TRUE(Factory().Rename(m_dir.path() + "\\Run.set ", "Renamed"));
    EXPECT_EQ(ContentOf(m_new), m_source);
    EXPECT_TRUE(ContentOf(m_old).empty());
    EXPECT_EQ(observer.Events(), std::vector<std::string>{"rename " + m_old + " " + m_new});
}

TEST_F(C_SetFactoryRename, OntoAnExistingSetNothingIsTouched)
{
    MakeSet(m_new, "other");
    const Content other = ContentOf(m_new);
    ScopedObserver observer;
    EXPECT_FALSE(Factory().Rename(m_old, "Renamed"));
    EXPECT_EQ(ContentOf(m_old), m_source);
    EXPECT_EQ(ContentOf(m_new), other);
    EXPECT_TRUE(observer.Events().empty());
}

TEST_F(C_SetFactoryRename, AFailureIsLoggedAndAFolderAlreadyRenamedStaysSo)
{
    ScopedObserver observer;
    LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);

    // The folder cannot be renamed: nothing has changed.
    faults->FailCall(Operation::Rename, 1);
    EXPECT_FALSE(Factory().Rename(m_old, "Renamed"));
    EXPECT_EQ(ContentOf(m_old), m_source);
    EXPECT_TRUE(log.contains("Set", "Injected fault: Rename " + m_old));

    // The set file cannot follow its folder: the folder keeps the new name.
    faults->ClearFaults();
    faults->ResetCounts();
    faults->FailCall(Operation::Rename, 2);
    EXPECT_FALSE(Factory().Rename(m_old, "Renamed"));
    EXPECT_EQ(ContentOf(m_old), (Content{{".set", m_source.at(".set")}}));
    Content movedFolder = m_source;
    movedFolder.erase(".set");
    EXPECT_EQ(ContentOf(m_new), movedFolder);
    EXPECT_TRUE(observer.Events().empty());
}
