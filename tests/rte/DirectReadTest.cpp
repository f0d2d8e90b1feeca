// Files opened for direct reads (RTE::ReadMode::Direct): the same bytes as buffered reads, for
// aligned and unaligned reads alike, and a silent fallback where the file system refuses O_DIRECT.

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using RTE::FileSystem;
using RTE::ReadMode;

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

std::unique_ptr<char, FreeDeleter> AlignedBytes(std::size_t bytes)
{
    return std::unique_ptr<char, FreeDeleter>(static_cast<char*>(std::aligned_alloc(4096, bytes)));
}

std::string Content(std::size_t bytes)
{
    std::string content(bytes, '\0');
    for (std::size_t i = 0; i < bytes; ++i)
        content[i] = char(i * 13 + i / 4096);
    return content;
}

} // namespace

TEST(DirectReadTest, AlignedAndUnalignedReadsGiveTheFilesBytes)
{
    TestSupport::TempDir dir;
    const std::string content = Content(5 * 4096 + 100); // ends inside a block
    TestSupport::WriteFile(dir / "f.bin", content);

    auto buffered = FileSystem::OpenForReading(dir / "f.bin", ReadMode::Buffered);
    EXPECT_FALSE(buffered->IsDirect());
    auto file = FileSystem::OpenForReading(dir / "f.bin", ReadMode::Direct);
    EXPECT_EQ(file->Size(), content.size());
    if (!file->IsDirect())
        GTEST_SKIP() << "the file system of " << dir.path() << " refuses O_DIRECT";

    auto block = AlignedBytes(8 * 4096);
    // Aligned target, offset and size: a direct read; at the end of the file it is short.
    EXPECT_EQ(file->ReadAt(4096, block.get(), 2 * 4096), 2u * 4096);
    EXPECT_EQ(std::string(block.get(), 2 * 4096), content.substr(4096, 2 * 4096));
    EXPECT_EQ(file->ReadAt(4 * 4096, block.get(), 4 * 4096), 4096u + 100);
    EXPECT_EQ(std::string(block.get(), 4096 + 100), content.substr(4 * 4096));
    EXPECT_EQ(file->ReadAt(8 * 4096, block.get(), 4096), 0u);
    EXPECT_TRUE(file->IsDirect());

    // Anything unaligned goes buffered, with the same result.
    EXPECT_EQ(file->ReadAt(4096, block.get() + 1, 4096), 4096u);
    EXPECT_EQ(std::string(block.get() + 1, 4096), content.substr(4096, 4096));
    EXPECT_EQ(file->ReadAt(7, block.get(), 4096), 4096u);
    EXPECT_EQ(std::string(block.get(), 4096), content.substr(7, 4096));
    EXPECT_EQ(file->ReadAt(0, block.get(), 100), 100u);
    EXPECT_EQ(std::string(block.get(), 100), content.substr(0, 100));
}

TEST(DirectReadTest, TheFaultInjectingBackendForwardsTheMode)
{
    TestSupport::TempDir dir;
    TestSupport::WriteFile(dir / "f.bin", Content(4096));
    const bool direct = FileSystem::OpenForReading(dir / "f.bin", ReadMode::Direct)->IsDirect();
    RTE::ScopedFileSystemBackend installed(std::make_shared<RTE::FaultInjectingFileSystem>());
    EXPECT_EQ(FileSystem::OpenForReading(dir / "f.bin", ReadMode::Direct)->IsDirect(), direct);
    EXPECT_FALSE(FileSystem::OpenForReading(dir / "f.bin")->IsDirect());
    EXPECT_THROW(FileSystem::OpenForReading(dir / "missing", ReadMode::Direct), RTE::FileError);
}

#if defined(__linux__)
TEST(DirectReadTest, AFileSystemWithoutDirectIoReadsBuffered)
{
    // procfs refuses O_DIRECT at open.
    auto file = FileSystem::OpenForReading("/proc/self/status", ReadMode::Direct);
    EXPECT_FALSE(file->IsDirect());
    auto block = AlignedBytes(4096);
    const std::size_t got = file->ReadAt(0, block.get(), 4096);
    EXPECT_GT(got, 5u);
    EXPECT_EQ(std::string(block.get(), 5), "Name:");
}
#endif
