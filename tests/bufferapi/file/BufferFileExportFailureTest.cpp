// A failed export raises RTE::FileWriteError naming the path, leaves an earlier file of the name
// as it was and no temporary file behind.

#include "BufferFileTestData.h"

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

using namespace BufferApi;
using namespace BufferFileTest;
using Operation = RTE::FaultInjectingFileSystem::Operation;

namespace {

class BufferFileExportFailureTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_old = SmallBuffer(4, 3);
        m_new = SmallBuffer(600, 10); // two 4 KiB blocks of plane data
        ExportBuffer(m_old.get(), Target(), nullptr);
        m_oldBytes = TestSupport::ReadFile(Target());
    }

    std::string Target() const { return m_dir / "B00001.im7"; }

    std::vector<std::string> Files() const { return RTE::FileSystem::GetFiles(m_dir.path(), ".*", false, false); }

    // Exports the new buffer, expecting a FileWriteError that names the target; returns its text.
    std::string FailingExport()
    {
        try {
            ExportBuffer(m_new.get(), Target(), PackOptions(0));
        } catch (const RTE::FileWriteError& e) {
            const std::string text = e.what();
            EXPECT_NE(text.find("'" + Target() + "'"), std::string::npos) << text;
            return text;
        }
        ADD_FAILURE() << "the export went through";
        return std::string();
    }

    void ExpectOldFileAlone()
    {
        EXPECT_EQ(TestSupport::ReadFile(Target()), m_oldBytes);
        EXPECT_EQ(Files(), std::vector<std::string>{"B00001.im7"});
    }

    TestSupport::TempDir m_dir;
    TestSupport::LogCapture m_log;
    BufferPtr m_old;
    BufferPtr m_new;
    std::string m_oldBytes;
};

} // namespace

TEST_F(BufferFileExportFailureTest, AFullDiskAtAnyPointKeepsTheOldFile)
{
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);

    ExportBuffer(m_new.get(), m_dir / "probe.im7", PackOptions(0));
    const std::uint64_t fileBytes = faults->WrittenBytes();
    RTE::FileSystem::RemoveFile(m_dir / "probe.im7");
    ASSERT_GT(fileBytes, 8192u);

    for (const std::uint64_t room : {std::uint64_t(0), std::uint64_t(1), std::uint64_t(47), std::uint64_t(48),
                                     std::uint64_t(300), std::uint64_t(4095), std::uint64_t(4096),
                                     std::uint64_t(5000), fileBytes - 1}) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bytes");
        faults->FailWritesAfter(room);
        const std::string text = FailingExport();
        EXPECT_NE(text.find("No space left on device"), std::string::npos) << text;
        ExpectOldFileAlone();
    }

    // Without an earlier file nothing at all is left.
    RTE::FileSystem::RemoveFile(Target());
    faults->FailWritesAfter(5000);
    FailingExport();
    EXPECT_TRUE(Files().empty());

    faults->ClearFaults();
    ExportBuffer(m_new.get(), Target(), PackOptions(0));
    BufferPtr back = Import(Target());
    ASSERT_TRUE(back);
    ExpectSameBuffer(*m_new, *back);
}

TEST_F(BufferFileExportFailureTest, ATemporaryFileThatCannotBeMadeKeepsTheOldFile)
{
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(Operation::OpenForWriting, 1);
    const std::string text = FailingExport();
    EXPECT_NE(text.find("Injected fault: OpenForWriting"), std::string::npos) << text;
    EXPECT_NE(text.find(".~B00001.im7"), std::string::npos) << text;
    ExpectOldFileAlone();
}

TEST_F(BufferFileExportFailureTest, AFailingReplaceKeepsTheOldFile)
{
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(Operation::ReplaceFile, 1);
    const std::string text = FailingExport();
    EXPECT_NE(text.find("Injected fault: ReplaceFile"), std::string::npos) << text;
    ExpectOldFileAlone();
    EXPECT_EQ(faults->CallCount(Operation::Rename), 0u);
}
