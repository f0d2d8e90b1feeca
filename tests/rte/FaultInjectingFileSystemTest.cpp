#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <support/TestSupport.h>

using RTE::FileSystem;
using Operation = RTE::FaultInjectingFileSystem::Operation;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

TEST(FaultInjectingFileSystemTest, TheNthCallFailsWithoutTouchingTheDisk)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(Operation::Rename, 2);

    WriteFile(dir / "a", "A");
    FileSystem::Rename(dir / "a", dir / "b");
    try {
        FileSystem::Rename(dir / "b", dir / "c");
        FAIL() << "the second rename went through";
    } catch (const RTE::FileError& e) {
        EXPECT_EQ(std::string(e.what()), "Injected fault: Rename " + (dir / "b"));
    }
    EXPECT_TRUE(FileSystem::Exists(dir / "b"));
    EXPECT_FALSE(FileSystem::Exists(dir / "c"));
    FileSystem::Rename(dir / "b", dir / "c");
    EXPECT_EQ(ReadFile(dir / "c"), "A");

    EXPECT_EQ(faults->CallCount(Operation::Rename), 3u);
    EXPECT_EQ(faults->FailureCount(Operation::Rename), 1u);
    EXPECT_EQ(faults->CallCount(Operation::CopyFile), 0u);
    EXPECT_TRUE(log.contains("Exception", "Injected fault: Rename"));
}

TEST(FaultInjectingFileSystemTest, EveryChangingOperationCanBeMadeToFail)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    WriteFile(dir / "f", "x");
    FileSystem::CreateDirectory(dir / "d");
    for (Operation op : {Operation::Rename, Operation::RemoveFile, Operation::RemoveDirectory, Operation::CopyFile,
                         Operation::CreateDirectory})
        faults->FailCallsFrom(op, 1);

    EXPECT_THROW(FileSystem::Rename(dir / "f", dir / "g"), RTE::FileError);
    EXPECT_THROW(FileSystem::RemoveFile(dir / "f"), RTE::FileError);
    EXPECT_THROW(FileSystem::RemoveDirectory(dir / "d"), RTE::FileError);
    EXPECT_THROW(FileSystem::CopyFile(dir / "f", dir / "g", true), RTE::FileError);
    EXPECT_THROW(FileSystem::CreateDirectory(dir / "e"), RTE::FileError);
    EXPECT_THROW(FileSystem::CreateDirectory(dir / "e"), RTE::FileError); // and it stays failing
    EXPECT_TRUE(FileSystem::Exists(dir / "f"));
    EXPECT_TRUE(FileSystem::Exists(dir / "d"));
    EXPECT_FALSE(FileSystem::Exists(dir / "g"));
    EXPECT_FALSE(FileSystem::Exists(dir / "e"));
    EXPECT_EQ(faults->FailureCount(Operation::CreateDirectory), 2u);

    faults->ClearFaults();
    FileSystem::CopyFile(dir / "f", dir / "g", false);
    FileSystem::RemoveFile(dir / "g");
    EXPECT_FALSE(FileSystem::Exists(dir / "g"));
    EXPECT_EQ(faults->CallCount(Operation::CopyFile), 2u);
    EXPECT_EQ(faults->FailureCount(Operation::CopyFile), 1u);
}

TEST(FaultInjectingFileSystemTest, RealFailuresPassThroughAndAreCounted)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    RTE::FaultInjectingFileSystem faults;
    try {
        faults.RemoveFile(dir / "missing");
        FAIL() << "removed a missing file";
    } catch (const RTE::FileError& e) {
        EXPECT_EQ(std::string(e.what()).find("Injected"), std::string::npos);
    }
    EXPECT_EQ(faults.CallCount(Operation::RemoveFile), 1u);
    EXPECT_EQ(faults.FailureCount(Operation::RemoveFile), 0u);
    WriteFile(dir / "B00001.im7", "x");
    EXPECT_TRUE(faults.Exists(dir / "B00001.im7"));
    EXPECT_EQ(faults.ListFiles(dir.path(), false), std::vector<std::string>{"B00001.im7"});
}

TEST(FaultInjectingFileSystemTest, CountsResetAndFaultsReferToTheNewCount)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    RTE::FaultInjectingFileSystem faults;
    faults.CreateDirectory(dir / "a");
    faults.CreateDirectory(dir / "b");
    faults.ResetCounts();
    faults.FailCall(Operation::CreateDirectory, 1);
    EXPECT_THROW(faults.CreateDirectory(dir / "c"), RTE::FileError);
    EXPECT_NO_THROW(faults.CreateDirectory(dir / "c"));
    EXPECT_EQ(faults.CallCount(Operation::CreateDirectory), 2u);
}

TEST(FaultInjectingFileSystemTest, ScopeRestoresThePreviousBackend)
{
    const auto before = FileSystem::GetBackend();
    {
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        RTE::ScopedFileSystemBackend installed(faults);
        EXPECT_EQ(FileSystem::GetBackend(), faults);
    }
    EXPECT_EQ(FileSystem::GetBackend(), before);
}

TEST(FaultInjectingFileSystemTest, AFullDiskTakesSoManyBytesAcrossFiles)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    auto first = FileSystem::OpenForWriting(dir / "a");
    first->Append("12345", 5);
    faults->FailWritesAfter(7);
    auto second = FileSystem::OpenForWriting(dir / "b");
    second->Append("abcd", 4);
    try {
        first->Append("67890", 5);
        FAIL() << "the disk took more than it had";
    } catch (const RTE::FileWriteError& e) {
        EXPECT_EQ(std::string(e.what()), "Injected fault: Write " + (dir / "a") + ": No space left on device");
    }
    EXPECT_THROW(second->Append("e", 1), RTE::FileWriteError);
    first->Close();
    second->Close();
    EXPECT_EQ(ReadFile(dir / "a"), "12345678"); // what fitted went to the file
    EXPECT_EQ(ReadFile(dir / "b"), "abcd");
    EXPECT_EQ(faults->WrittenBytes(), 12u);

    faults->ClearFaults();
    auto third = FileSystem::OpenForWriting(dir / "c");
    third->Append("free again", 10);
    third->Close();
    EXPECT_EQ(ReadFile(dir / "c"), "free again");
    faults->ResetCounts();
    EXPECT_EQ(faults->WrittenBytes(), 0u);
    EXPECT_EQ(faults->CallCount(Operation::OpenForWriting), 0u);
}

TEST(FaultInjectingFileSystemTest, OpeningForWritingCanFailAndReadingIsForwarded)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    faults->FailCall(Operation::OpenForWriting, 2);
    FileSystem::OpenForWriting(dir / "a")->Append("A", 1);
    try {
        FileSystem::OpenForWriting(dir / "b");
        FAIL() << "the second open went through";
    } catch (const RTE::FileWriteError& e) {
        EXPECT_EQ(std::string(e.what()), "Injected fault: OpenForWriting " + (dir / "b"));
    }
    EXPECT_FALSE(FileSystem::Exists(dir / "b"));
    EXPECT_EQ(faults->CallCount(Operation::OpenForWriting), 2u);
    EXPECT_EQ(faults->FailureCount(Operation::OpenForWriting), 1u);
    char byte = 0;
    EXPECT_EQ(FileSystem::OpenForReading(dir / "a")->ReadAt(0, &byte, 1), 1u);
    EXPECT_EQ(byte, 'A');
    EXPECT_STREQ(RTE::FaultInjectingFileSystem::OperationName(Operation::OpenForWriting), "OpenForWriting");
}
