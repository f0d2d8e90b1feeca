// Files opened for direct writing (RTE::WriteMode::Direct): whatever the mix of aligned and
// unaligned pieces, the file holds exactly the bytes appended when Close returns; room reserved
// ahead is given back; a full disk and a failing open reach direct files through the fault
// injecting backend; a file system that refuses O_DIRECT still gets the right bytes.

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <boost/filesystem.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <algorithm>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <sys/stat.h>
#endif

using RTE::FileSystem;
using RTE::WriteMode;

namespace {

constexpr std::size_t kBlock = 4096;

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

// Content of `bytes` bytes that differs in every block and every position in it.
std::string Content(std::size_t bytes)
{
    std::string content(bytes, '\0');
    for (std::size_t i = 0; i < bytes; ++i)
        content[i] = char(i * 31 + i / 4093 + 7);
    return content;
}

// Memory holding `bytes` at `offset` bytes behind a 4 KiB boundary.
class Placed {
public:
    Placed(const std::string& bytes, std::size_t offset)
        : m_block(static_cast<char*>(std::aligned_alloc(kBlock, (bytes.size() + offset + kBlock) / kBlock * kBlock))),
          m_offset(offset)
    {
        std::memcpy(m_block.get() + offset, bytes.data(), bytes.size());
    }
    const char* data() const { return m_block.get() + m_offset; }

private:
    std::unique_ptr<char, FreeDeleter> m_block;
    std::size_t m_offset;
};

// One Append: how many bytes, and how far behind a 4 KiB boundary they lie in memory.
struct Piece {
    std::size_t bytes;
    std::size_t misalignment;
};

// Writes the pieces of `content` in order and returns what the file holds after Close.
std::string WritePieces(const std::string& path, const std::string& content, const std::vector<Piece>& pieces)
{
    auto file = FileSystem::OpenForWriting(path, WriteMode::Direct);
    std::size_t at = 0;
    for (const Piece& piece : pieces) {
        const Placed memory(content.substr(at, piece.bytes), piece.misalignment);
        file->Append(memory.data(), piece.bytes);
        at += piece.bytes;
    }
    EXPECT_EQ(at, content.size()) << "the pieces do not cover the content";
    file->Close();
    return TestSupport::ReadFile(path);
}

std::size_t Total(const std::vector<Piece>& pieces)
{
    std::size_t total = 0;
    for (const Piece& piece : pieces)
        total += piece.bytes;
    return total;
}

const std::vector<std::pair<const char*, std::vector<Piece>>>& PiecePatterns()
{
    static const std::vector<std::pair<const char*, std::vector<Piece>>> patterns = {
        {"nothing", {}},
        {"one byte", {{1, 0}}},
        {"whole aligned blocks", {{3 * kBlock, 0}, {kBlock, 0}}},
        {"aligned with a partial last block", {{5 * kBlock + 100, 0}}},
        {"unaligned memory, larger than the stage", {{(std::size_t(5) << 20) / 2 + 17, 1}}},
        {"small pieces across block borders", {{100, 3}, {4000, 5}, {1000, 0}, {7, 9}, {8192, 11}}},
        // A partial block is staged; aligned memory behind it cannot go straight until the block
        // is complete, and then can again.
        {"aligned blocks behind a partial block", {{100, 0}, {2 * kBlock, 0}, {kBlock - 100, 0}, {4 * kBlock, 0}}},
        {"record-like: header block, planes, padding",
         {{kBlock, 0}, {10 * kBlock + 300, 0}, {kBlock - 300, 0}, {kBlock, 0}, {7 * kBlock, 64}, {kBlock, 0}}},
        {"a stage's worth of small pieces", std::vector<Piece>(300, Piece{4000, 1})},
    };
    return patterns;
}

} // namespace

TEST(DirectWriteTest, AnyMixOfPiecesGivesExactlyTheBytesAppended)
{
    TestSupport::TempDir dir;
    int index = 0;
    for (const auto& [name, pieces] : PiecePatterns()) {
        SCOPED_TRACE(name);
        const std::string content = Content(Total(pieces));
        const std::string path = dir / ("f" + std::to_string(index++) + ".bin");
        const std::string written = WritePieces(path, content, pieces);
        EXPECT_EQ(written.size(), content.size());
        EXPECT_TRUE(written == content);
    }
}

TEST(DirectWriteTest, DirectAndBufferedModesWriteTheSameBytes)
{
    TestSupport::TempDir dir;
    const std::vector<Piece>& pieces = PiecePatterns().back().second;
    const std::string content = Content(Total(pieces));
    const std::string direct = WritePieces(dir / "direct.bin", content, pieces);

    auto file = FileSystem::OpenForWriting(dir / "buffered.bin", WriteMode::Buffered);
    EXPECT_FALSE(file->IsDirect());
    file->Append(content.data(), content.size());
    file->Close();
    EXPECT_TRUE(TestSupport::ReadFile(dir / "buffered.bin") == direct);
}

TEST(DirectWriteTest, WholeBlocksAreInTheFileWhenAppendReturns)
{
    // A process that dies leaves every block completed by an Append behind; only a partial last
    // block waits for the next Append or for Close.
    TestSupport::TempDir dir;
    const std::string path = dir / "f.bin";
    const std::string content = Content(3 * kBlock + 100);
    const Placed memory(content, 5);
    auto file = FileSystem::OpenForWriting(path, WriteMode::Direct);
    file->Append(memory.data(), 5000);
    EXPECT_TRUE(TestSupport::ReadFile(path) == content.substr(0, kBlock));
    file->Append(memory.data() + 5000, 2 * kBlock - 5000);
    EXPECT_TRUE(TestSupport::ReadFile(path) == content.substr(0, 2 * kBlock));
    file->Append(memory.data() + 2 * kBlock, kBlock + 100);
    EXPECT_TRUE(TestSupport::ReadFile(path) == content.substr(0, 3 * kBlock));
    file->Close();
    EXPECT_TRUE(TestSupport::ReadFile(path) == content);
}

TEST(DirectWriteTest, ASmallAlignedRunWaitsForTheRecordBehindIt)
{
    // A record's header block goes to the disk together with the planes behind it; a record
    // whose plane tail is partial still ends up whole once its padding completes the block.
    TestSupport::TempDir dir;
    const std::string path = dir / "f.bin";
    const std::size_t plane = 5 * kBlock + 300, record = kBlock + 6 * kBlock;
    const std::string content = Content(2 * record);
    const Placed memory(content, 0);
    const std::string zeros(kBlock, '\0');
    const Placed padding(zeros, 0);
    auto file = FileSystem::OpenForWriting(path, WriteMode::Direct);
    for (std::size_t r = 0; r < 2; ++r) {
        const char* at = memory.data() + r * record;
        file->Append(at, kBlock); // the header block
        EXPECT_EQ(TestSupport::ReadFile(path).size(), r * record);
        file->Append(at + kBlock, plane);
        file->Append(padding.data(), record - kBlock - plane);
        EXPECT_EQ(TestSupport::ReadFile(path).size(), (r + 1) * record);
    }
    file->Close();
    std::string expected = content;
    for (std::size_t r = 0; r < 2; ++r)
        std::fill_n(expected.begin() + std::ptrdiff_t(r * record + kBlock + plane), record - kBlock - plane, '\0');
    EXPECT_TRUE(TestSupport::ReadFile(path) == expected);

    // A run that is never followed goes out at Close.
    const std::string alone = dir / "g.bin";
    auto single = FileSystem::OpenForWriting(alone, WriteMode::Direct);
    single->Append(memory.data(), 2 * kBlock);
    single->Close();
    EXPECT_TRUE(TestSupport::ReadFile(alone) == content.substr(0, 2 * kBlock));
}

TEST(DirectWriteTest, ReservedRoomIsInvisibleWhileWritingAndGivenBackAtClose)
{
    TestSupport::TempDir dir;
    const std::string path = dir / "reserved.bin";
    const std::string content = Content(3 * kBlock + 5);
    auto file = FileSystem::OpenForWriting(path, WriteMode::Direct);
    file->Reserve(std::uint64_t(64) << 20);
    file->Append(content.data(), kBlock);
    file->Reserve(std::uint64_t(32) << 20); // smaller than before: nothing changes
    // The reservation does not change the size a reader sees.
    EXPECT_LE(boost::filesystem::file_size(path), kBlock);
    file->Append(content.data() + kBlock, content.size() - kBlock);
    file->Close();
    EXPECT_TRUE(TestSupport::ReadFile(path) == content);
#if defined(__linux__)
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_LT(std::uint64_t(info.st_blocks) * 512, std::uint64_t(1) << 20) << "the reserved room was kept";
#endif
}

TEST(DirectWriteTest, ClosedFilesRefuseAppendsAndCloseTwiceQuietly)
{
    TestSupport::TempDir dir;
    auto file = FileSystem::OpenForWriting(dir / "a.bin", WriteMode::Direct);
    file->Append("abc", 3);
    file->Close();
    file->Close();
    EXPECT_THROW(file->Append("d", 1), RTE::FileWriteError);
    EXPECT_EQ(TestSupport::ReadFile(dir / "a.bin"), "abc");

    // An existing file is emptied; a destroyed file without Close keeps its bytes.
    {
        auto again = FileSystem::OpenForWriting(dir / "a.bin", WriteMode::Direct);
        again->Append("xy", 2);
    }
    EXPECT_EQ(TestSupport::ReadFile(dir / "a.bin"), "xy");
}

TEST(DirectWriteTest, OpenFailuresNameThePath)
{
    TestSupport::TempDir dir;
    const std::string missing = dir / "no/such/folder/f.bin";
    const std::string message = TestSupport::MessageOf([&] { FileSystem::OpenForWriting(missing, WriteMode::Direct); });
    EXPECT_NE(message.find(missing), std::string::npos) << message;
    EXPECT_THROW(FileSystem::OpenForWriting(dir.path(), WriteMode::Direct), RTE::FileWriteError);
    EXPECT_THROW(FileSystem::OpenForWriting("", WriteMode::Direct), RTE::FileWriteError);
    EXPECT_THROW(FileSystem::OpenForWriting(std::string("a\0b", 3), WriteMode::Direct), RTE::FileWriteError);
}

TEST(DirectWriteTest, InjectedFaultsReachDirectFiles)
{
    TestSupport::TempDir dir;
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);

    faults->FailCall(RTE::FaultInjectingFileSystem::Operation::OpenForWriting, 1);
    EXPECT_THROW(FileSystem::OpenForWriting(dir / "refused.bin", WriteMode::Direct), RTE::FileWriteError);
    EXPECT_FALSE(FileSystem::Exists(dir / "refused.bin"));

    // A full disk in the middle of an aligned block run: what fit stays, exactly.
    const std::string content = Content(6 * kBlock);
    const Placed memory(content, 0);
    auto file = FileSystem::OpenForWriting(dir / "full.bin", WriteMode::Direct);
    file->Reserve(std::uint64_t(16) << 20);
    file->Append(memory.data(), kBlock);
    faults->FailWritesAfter(2 * kBlock + 10);
    const std::string message = TestSupport::MessageOf([&] { file->Append(memory.data() + kBlock, 5 * kBlock); });
    EXPECT_NE(message.find("No space left on device"), std::string::npos) << message;
    file->Close();
    EXPECT_TRUE(TestSupport::ReadFile(dir / "full.bin") == content.substr(0, 3 * kBlock + 10));
    EXPECT_EQ(faults->WrittenBytes(), 3 * kBlock + 10);

    // The folder sync is forwarded; a missing folder is a failure.
    EXPECT_NO_THROW(FileSystem::SyncFolder(dir.path()));
    EXPECT_THROW(FileSystem::SyncFolder(dir / "missing"), RTE::FileError);
}

TEST(DirectWriteTest, MemoryFileSystemGetsTheSameBytes)
{
    // tmpfs refuses O_DIRECT on older kernels: the file then writes buffered, silently.
    if (!boost::filesystem::is_directory("/dev/shm"))
        GTEST_SKIP() << "no /dev/shm";
    const std::string path = boost::filesystem::unique_path("/dev/shm/setapi-direct-write-%%%%-%%%%.bin").string();
    const std::vector<Piece>& pieces = PiecePatterns()[7].second;
    const std::string content = Content(Total(pieces) + 3 * (std::size_t(8) << 20));
    std::vector<Piece> all = pieces;
    all.push_back({3 * (std::size_t(8) << 20), 0}); // beyond the writeback step of buffered writing
    const std::string written = WritePieces(path, content, all);
    boost::system::error_code ec;
    boost::filesystem::remove(path, ec);
    EXPECT_TRUE(written == content);
}
