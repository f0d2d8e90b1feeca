#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <support/TestSupport.h>

#include <boost/filesystem.hpp>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using RTE::FileSystem;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

namespace {

using Files = std::vector<std::string>;

std::string FileErrorText(const std::function<void()>& action)
{
    try {
        action();
    } catch (const RTE::FileError& e) {
        return e.what();
    }
    return "no RTE::FileError";
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(FileSystemPathTest, FixPath)
{
    EXPECT_EQ(FileSystem::FixPath("C:\\Data\\\\Set\\"), "C:/Data/Set/");
    EXPECT_EQ(FileSystem::FixPath("\\\\server\\share\\x"), "//server/share/x");
    EXPECT_EQ(FileSystem::FixPath("//server//share"), "//server/share");
    EXPECT_EQ(FileSystem::FixPath("a//b/\\/c"), "a/b/c");
    EXPECT_EQ(FileSystem::FixPath("/abs/x"), "/abs/x");
    EXPECT_EQ(FileSystem::FixPath("plain"), "plain");
    EXPECT_EQ(FileSystem::FixPath(""), "");
    EXPECT_EQ(FileSystem::FixPath(std::string("a\0\\b", 4)), std::string("a\0/b", 4));
}

TEST(FileSystemPathTest, ExtractExtension)
{
    EXPECT_EQ(FileSystem::ExtractExtension("a/B00001.im7", false), ".im7");
    EXPECT_EQ(FileSystem::ExtractExtension("a/B00001.im7", true), "im7");
    EXPECT_EQ(FileSystem::ExtractExtension("C:\\x\\Set.set", false), ".set");
    EXPECT_EQ(FileSystem::ExtractExtension("archive.tar.gz", false), ".gz");
    EXPECT_EQ(FileSystem::ExtractExtension("folder.d/name", false), "");
    EXPECT_EQ(FileSystem::ExtractExtension("folder.d\\name", true), "");
    EXPECT_EQ(FileSystem::ExtractExtension("noext", false), "");
    EXPECT_EQ(FileSystem::ExtractExtension("name.", false), ".");
    EXPECT_EQ(FileSystem::ExtractExtension("name.", true), "");
    EXPECT_EQ(FileSystem::ExtractExtension("", false), "");
}

TEST(FileSystemTest, CreateDirectoryWithParentsAndExistingOnes)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    FileSystem::CreateDirectory(dir / "a/b/c");
    EXPECT_TRUE(FileSystem::IsDirectory(dir / "a/b/c"));
    EXPECT_NO_THROW(FileSystem::CreateDirectory(dir / "a/b/c"));
    FileSystem::CreateDirectory(dir / "trailing/");
    EXPECT_TRUE(FileSystem::IsDirectory(dir / "trailing"));

    WriteFile(dir / "file", "x");
    EXPECT_TRUE(Contains(FileErrorText([&] { FileSystem::CreateDirectory(dir / "file"); }), "CreateDirectory"));
    EXPECT_THROW(FileSystem::CreateDirectory(dir / "file/below"), RTE::FileError);
    EXPECT_THROW(FileSystem::CreateDirectory(""), RTE::FileError);
}

TEST(FileSystemTest, ExistsInBothStringForms)
{
    TestSupport::TempDir dir;
    WriteFile(dir / "a.set", "SetType=1");
    EXPECT_TRUE(FileSystem::Exists(dir / "a.set"));
    EXPECT_TRUE(FileSystem::Exists(QString::fromStdString(dir / "a.set")));
    EXPECT_TRUE(FileSystem::Exists(dir.path()));
    EXPECT_FALSE(FileSystem::IsDirectory(dir / "a.set"));
    EXPECT_FALSE(FileSystem::Exists(dir / "b.set"));
    EXPECT_FALSE(FileSystem::Exists(std::string()));
    EXPECT_FALSE(FileSystem::Exists(QString()));
    // A NUL would cut the path short and name another file.
    EXPECT_FALSE(FileSystem::Exists(dir / std::string("a.set\0junk", 10)));
}

TEST(FileSystemTest, CopyFileWithAndWithoutOverwrite)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "src", std::string("image\0data", 10));
    FileSystem::CopyFile(dir / "src", dir / "dst", false);
    EXPECT_EQ(ReadFile(dir / "dst"), std::string("image\0data", 10));

    WriteFile(dir / "other", "other");
    const std::string text = FileErrorText([&] { FileSystem::CopyFile(dir / "other", dir / "dst", false); });
    EXPECT_TRUE(Contains(text, "CopyFile")) << text;
    EXPECT_TRUE(Contains(text, dir / "other")) << text;
    EXPECT_TRUE(Contains(text, dir / "dst")) << text;
    EXPECT_TRUE(Contains(text, "exists")) << text;
    EXPECT_EQ(ReadFile(dir / "dst"), std::string("image\0data", 10));

    FileSystem::CopyFile(dir / "other", dir / "dst", true);
    EXPECT_EQ(ReadFile(dir / "dst"), "other");

    EXPECT_THROW(FileSystem::CopyFile(dir / "missing", dir / "x", true), RTE::FileError);
    EXPECT_FALSE(FileSystem::Exists(dir / "x"));
    FileSystem::CreateDirectory(dir / "folder");
    EXPECT_THROW(FileSystem::CopyFile(dir / "folder", dir / "x", true), RTE::FileError);
    EXPECT_THROW(FileSystem::CopyFile(dir / "src", dir / "folder", true), RTE::FileError);
    EXPECT_THROW(FileSystem::CopyFile(dir / "src", dir / "no/such/folder/x", true), RTE::FileError);
}

TEST(FileSystemTest, CopyOntoItselfNeverTruncates)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "src", "keep me");
    EXPECT_THROW(FileSystem::CopyFile(dir / "src", dir / "src", true), RTE::FileError);
    EXPECT_THROW(FileSystem::CopyFile(dir / "src", dir.path() + "//./src", true), RTE::FileError);
    EXPECT_EQ(ReadFile(dir / "src"), "keep me");
}

TEST(FileSystemTest, ReplaceFilePutsAFileInPlaceOfAnotherInOneStep)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "new", "N");
    WriteFile(dir / "old", "O");
    FileSystem::ReplaceFile(dir / "new", dir / "old");
    EXPECT_FALSE(FileSystem::Exists(dir / "new"));
    EXPECT_EQ(ReadFile(dir / "old"), "N");

    WriteFile(dir / "next", "X");
    FileSystem::ReplaceFile(dir / "next", dir / "absent"); // no target yet
    EXPECT_EQ(ReadFile(dir / "absent"), "X");

    EXPECT_THROW(FileSystem::ReplaceFile(dir / "missing", dir / "old"), RTE::FileError);
    FileSystem::CreateDirectory(dir / "folder");
    const std::string text = FileErrorText([&] { FileSystem::ReplaceFile(dir / "old", dir / "folder"); });
    EXPECT_TRUE(Contains(text, "ReplaceFile")) << text;
    EXPECT_EQ(ReadFile(dir / "old"), "N");
}

TEST(FileSystemTest, RenameNeverReplaces)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "a", "A");
    WriteFile(dir / "b", "B");
    FileSystem::Rename(dir / "a", dir / "c");
    EXPECT_FALSE(FileSystem::Exists(dir / "a"));
    EXPECT_EQ(ReadFile(dir / "c"), "A");

    const std::string text = FileErrorText([&] { FileSystem::Rename(dir / "c", dir / "b"); });
    EXPECT_TRUE(Contains(text, "Rename")) << text;
    EXPECT_TRUE(Contains(text, dir / "b")) << text;
    EXPECT_EQ(ReadFile(dir / "c"), "A");
    EXPECT_EQ(ReadFile(dir / "b"), "B");

    EXPECT_THROW(FileSystem::Rename(dir / "missing", dir / "d"), RTE::FileError);
    EXPECT_NO_THROW(FileSystem::Rename(dir / "c", dir / "c")); // nothing to do

    FileSystem::CreateDirectory(dir / "set/sub");
    WriteFile(dir / "set/sub/B00001.im7", "1");
    FileSystem::CreateDirectory(dir / "empty");
    EXPECT_THROW(FileSystem::Rename(dir / "set", dir / "empty"), RTE::FileError);
    FileSystem::Rename(dir / "set", dir / "moved");
    EXPECT_EQ(ReadFile(dir / "moved/sub/B00001.im7"), "1");
}

TEST(FileSystemTest, RemoveFileAndDirectory)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "f", "x");
    FileSystem::RemoveFile(dir / "f");
    EXPECT_FALSE(FileSystem::Exists(dir / "f"));
    EXPECT_TRUE(Contains(FileErrorText([&] { FileSystem::RemoveFile(dir / "f"); }), "RemoveFile"));

    FileSystem::CreateDirectory(dir / "set/a/b");
    WriteFile(dir / "set/x.im7", "1");
    WriteFile(dir / "set/a/b/y.im7", "2");
    EXPECT_THROW(FileSystem::RemoveFile(dir / "set"), RTE::FileError);
    EXPECT_TRUE(FileSystem::Exists(dir / "set/x.im7"));
    FileSystem::RemoveDirectory(dir / "set");
    EXPECT_FALSE(FileSystem::Exists(dir / "set"));
    EXPECT_NO_THROW(FileSystem::RemoveDirectory(dir / "set")); // already gone

    WriteFile(dir / "plain", "x");
    EXPECT_THROW(FileSystem::RemoveDirectory(dir / "plain"), RTE::FileError);
    EXPECT_TRUE(FileSystem::Exists(dir / "plain"));
}

TEST(FileSystemTest, RemoveDirectoryLeavesTargetsOfLinksAlone)
{
    TestSupport::TempDir dir;
    FileSystem::CreateDirectory(dir / "keep");
    WriteFile(dir / "keep/precious", "p");
    FileSystem::CreateDirectory(dir / "doomed");
    boost::system::error_code ec;
    boost::filesystem::create_directory_symlink(dir / "keep", dir / "doomed/link", ec);
    if (ec)
        GTEST_SKIP() << "no symbolic links here";
    FileSystem::RemoveDirectory(dir / "doomed");
    EXPECT_FALSE(FileSystem::Exists(dir / "doomed"));
    EXPECT_EQ(ReadFile(dir / "keep/precious"), "p");
}

TEST(FileSystemTest, WriteAccess)
{
    namespace fs = boost::filesystem;
    TestSupport::TempDir dir;
    WriteFile(dir / "file", "x");
    EXPECT_TRUE(FileSystem::WriteAccess(dir / "file"));
    EXPECT_TRUE(FileSystem::WriteAccess(dir.path()));
    EXPECT_TRUE(FileSystem::WriteAccess(dir / "not-yet"));
    EXPECT_FALSE(FileSystem::WriteAccess(dir / "no/such/folder/file"));
    EXPECT_FALSE(FileSystem::WriteAccess(""));

    fs::permissions(dir / "file", fs::owner_read | fs::group_read | fs::others_read);
    EXPECT_FALSE(FileSystem::WriteAccess(dir / "file")); // read-only even for an administrator
    fs::permissions(dir / "file", fs::owner_all);
    EXPECT_TRUE(FileSystem::WriteAccess(dir / "file"));
}

TEST(FileSystemTest, GetFilesMatchesWholeNamesSorted)
{
    TestSupport::TempDir dir;
    for (const char* name : {"B00002.im7", "B00001.im7", "B00003.vc7", "a.set", "xB00004.im7"})
        WriteFile(dir / name, "x");
    FileSystem::CreateDirectory(dir / "B_folder.im7"); // folders are never listed
    FileSystem::CreateDirectory(dir / "sub/deeper");
    WriteFile(dir / "sub/B00010.im7", "x");
    WriteFile(dir / "sub/deeper/B00011.im7", "x");

    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B.*\\..*", false, false),
              (Files{"B00001.im7", "B00002.im7", "B00003.vc7"}));
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B.*\\.im7", false, false), (Files{"B00001.im7", "B00002.im7"}));
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B0000", false, false), Files{}); // no partial match
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "b.*", false, false), Files{});   // case-sensitive
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), ".*", false, false).size(), 5u);

    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B.*\\.im7", true, false),
              (Files{"B00001.im7", "B00002.im7", "sub/B00010.im7", "sub/deeper/B00011.im7"}));
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B.*\\.im7", false, true),
              (Files{dir / "B00001.im7", dir / "B00002.im7"}));
    EXPECT_EQ(FileSystem::GetFiles(dir.path() + "/", "B00010\\.im7", true, true), (Files{dir / "sub/B00010.im7"}));
    // The pattern sees the file name, not the relative path.
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "sub.*", true, false), Files{});
}

TEST(FileSystemTest, GetFilesOnMissingFolderOrFileIsEmpty)
{
    TestSupport::TempDir dir;
    WriteFile(dir / "file", "x");
    EXPECT_TRUE(FileSystem::GetFiles(dir / "missing", ".*", false, false).empty());
    EXPECT_TRUE(FileSystem::GetFiles(dir / "missing", ".*", true, true).empty());
    EXPECT_TRUE(FileSystem::GetFiles(dir / "file", ".*", false, false).empty());
    EXPECT_TRUE(FileSystem::GetFiles("", ".*", false, false).empty());
    EXPECT_TRUE(FileSystem::GetFiles(dir.path() + std::string("\0/x", 3), ".*", false, false).empty());
}

TEST(FileSystemTest, BadPatternRaisesNamingThePattern)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "B00001.im7", "x");
    for (const std::string pattern : {"*.im7", "B(0", "[", "a{2,1}"}) {
        try {
            FileSystem::GetFiles(dir.path(), pattern, false, false);
            ADD_FAILURE() << "accepted " << pattern;
        } catch (const RTE::Exception& e) {
            EXPECT_TRUE(Contains(e.what(), "'" + pattern + "'")) << e.what();
        }
    }
    // Even when there is nothing to list.
    EXPECT_THROW(FileSystem::GetFiles(dir / "missing", "*.im7", false, false), RTE::Exception);
}

TEST(FileSystemTest, GetFilesSurvivesHostilePatterns)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / (std::string(200, 'a') + "!"), "x");
    EXPECT_TRUE(FileSystem::GetFiles(dir.path(), std::string(100000, 'a'), false, false).empty());
    EXPECT_TRUE(FileSystem::GetFiles(dir.path(), std::string("a\0", 2), false, false).empty());
    // Exponential backtracking either finishes or is given up with an exception; it never hangs.
    try {
        EXPECT_TRUE(FileSystem::GetFiles(dir.path(), "(a|aa|a*)*b", false, false).empty());
    } catch (const RTE::Exception& e) {
        EXPECT_TRUE(Contains(e.what(), "(a|aa|a*)*b")) << e.what();
    }
}

TEST(FileSystemTest, UnicodeAndNonUtf8Names)
{
    TestSupport::TempDir dir;
    const std::string umlaut = "\xC3\x9C" "berblick_\xC3\x9F.im7";   // Überblick_ß.im7
    const std::string cjk = "\xE6\x95\xB0\xE6\x8D\xAE.set";         // 数据.set
    const std::string notUtf8 = "bad\xFF\xFE.im7";
    WriteFile(dir / umlaut, "u");
    WriteFile(dir / cjk, "c");
    WriteFile(dir / notUtf8, "n");

    EXPECT_TRUE(FileSystem::Exists(QString::fromUtf8((dir / umlaut).c_str())));
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), ".*\\.im7", false, false), (Files{notUtf8, umlaut}));
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), ".*\\.set", false, false), Files{cjk});

    FileSystem::CopyFile(dir / umlaut, dir / ("copy_" + cjk), false);
    FileSystem::Rename(dir / cjk, dir / ("renamed_" + cjk));
    FileSystem::CreateDirectory(dir / "\xC3\xA4_folder");
    EXPECT_EQ(ReadFile(dir / ("copy_" + cjk)), "u");
    EXPECT_EQ(ReadFile(dir / ("renamed_" + cjk)), "c");
    EXPECT_TRUE(FileSystem::IsDirectory(dir / "\xC3\xA4_folder"));
    FileSystem::RemoveFile(dir / notUtf8);
    EXPECT_FALSE(FileSystem::Exists(dir / notUtf8));
}

TEST(FileSystemTest, PathsWithNulAreRefused)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    WriteFile(dir / "victim", "x");
    const std::string nul = dir / std::string("victim\0.tmp", 11);
    EXPECT_THROW(FileSystem::RemoveFile(nul), RTE::FileError);
    EXPECT_THROW(FileSystem::RemoveDirectory(nul), RTE::FileError);
    EXPECT_THROW(FileSystem::CopyFile(dir / "victim", nul, true), RTE::FileError);
    EXPECT_THROW(FileSystem::Rename(nul, dir / "other"), RTE::FileError);
    EXPECT_THROW(FileSystem::CreateDirectory(nul), RTE::FileError);
    EXPECT_FALSE(FileSystem::WriteAccess(nul));
    EXPECT_EQ(ReadFile(dir / "victim"), "x");
    EXPECT_TRUE(log.contains("Exception", "\\0"));
}

namespace {

// Answers every existence question with yes and counts the questions.
class AlwaysThereBackend : public RTE::I_FileSystemBackend {
public:
    bool Exists(const std::string&) override { ++questions; return true; }
    bool IsDirectory(const std::string&) override { return false; }
    bool WriteAccess(const std::string&) override { return false; }
    void CreateDirectory(const std::string&) override {}
    void RemoveDirectory(const std::string&) override {}
    void RemoveFile(const std::string&) override {}
    void Rename(const std::string&, const std::string&) override {}
    void ReplaceFile(const std::string&, const std::string&) override {}
    void CopyFile(const std::string&, const std::string&, bool) override {}
    std::vector<std::string> ListFiles(const std::string&, bool) override { return {"z.im7", "a.im7", "b.txt"}; }
    std::unique_ptr<RTE::I_WritableFile> OpenForWriting(const std::string&) override { return nullptr; }
    std::unique_ptr<RTE::I_ReadableFile> OpenForReading(const std::string&) override { return nullptr; }
    std::atomic<int> questions{0};
};

} // namespace

TEST(FileSystemBackendTest, EveryCallGoesThroughTheInstalledBackend)
{
    const auto original = FileSystem::GetBackend();
    EXPECT_EQ(original, FileSystem::GetDefaultBackend());
    const auto stub = std::make_shared<AlwaysThereBackend>();
    EXPECT_EQ(FileSystem::SetBackend(stub), original);
    EXPECT_TRUE(FileSystem::Exists(std::string("/no/such/path")));
    EXPECT_TRUE(FileSystem::Exists(QStringLiteral("/no/such/path")));
    EXPECT_EQ(FileSystem::GetFiles("/anywhere", ".*\\.im7", false, true), (Files{"/anywhere/a.im7", "/anywhere/z.im7"}));
    EXPECT_EQ(FileSystem::SetBackend(nullptr), stub);
    EXPECT_EQ(FileSystem::GetBackend(), original);
    EXPECT_EQ(stub->questions.load(), 2);
    EXPECT_FALSE(FileSystem::Exists(std::string("/no/such/path")));
}

TEST(FileSystemBackendTest, SwappingWhileOtherThreadsUseItIsSafe)
{
    const auto stub = std::make_shared<AlwaysThereBackend>();
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            while (!stop.load())
                FileSystem::Exists(std::string("/no/such/path"));
        });
    for (int i = 0; i < 500; ++i) {
        FileSystem::SetBackend(stub);
        FileSystem::SetBackend(nullptr);
    }
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(FileSystem::GetBackend(), FileSystem::GetDefaultBackend());
}

TEST(FileStreamTest, WrittenBytesReadBackAtAnyOffset)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    std::string content(70000, '\0');
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = char(i * 7 + i / 256);
    WriteFile(dir / "f.bin", "an older and longer content that the new one must replace entirely ...");
    {
        auto file = FileSystem::OpenForWriting(dir / "f.bin");
        file->Append(content.data(), 10);
        file->Append(content.data(), 0);
        file->Append(content.data() + 10, content.size() - 10);
        file->Close();
        file->Close(); // a second close does nothing
        EXPECT_THROW(file->Append("x", 1), RTE::FileWriteError);
    }
    EXPECT_EQ(ReadFile(dir / "f.bin"), content);

    auto file = FileSystem::OpenForReading(dir / "f.bin");
    EXPECT_EQ(file->Size(), content.size());
    std::string part(5000, '?');
    EXPECT_EQ(file->ReadAt(12345, &part[0], part.size()), part.size());
    EXPECT_EQ(part, content.substr(12345, 5000));
    EXPECT_EQ(file->ReadAt(0, &part[0], 3), 3u);
    EXPECT_EQ(part.substr(0, 3), content.substr(0, 3));
    // At the end of the file a read is short, and beyond it empty.
    EXPECT_EQ(file->ReadAt(content.size() - 100, &part[0], part.size()), 100u);
    EXPECT_EQ(part.substr(0, 100), content.substr(content.size() - 100));
    EXPECT_EQ(file->ReadAt(content.size(), &part[0], part.size()), 0u);
    EXPECT_EQ(file->ReadAt(std::uint64_t(1) << 40, &part[0], part.size()), 0u);
    EXPECT_EQ(file->ReadAt(10, &part[0], 2), 2u); // and reading goes on after the end was met
    EXPECT_EQ(part.substr(0, 2), content.substr(10, 2));
}

TEST(FileStreamTest, PathsAreTakenByteForByte)
{
    TestSupport::TempDir dir;
    const std::string unicode = dir / "B\xC3\xA4ume \xE2\x80\x93 1.im7";
    FileSystem::OpenForWriting(unicode)->Append("abc", 3);
    EXPECT_EQ(ReadFile(unicode), "abc");
#if !defined(_WIN32)
    const std::string notUtf8 = dir / "raw\xFF\xFEname";
    FileSystem::OpenForWriting(notUtf8)->Append("xyz", 3);
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "raw.*", false, false), Files{"raw\xFF\xFEname"});
    char back[3];
    EXPECT_EQ(FileSystem::OpenForReading(notUtf8)->ReadAt(0, back, 3), 3u);
    EXPECT_EQ(std::string(back, 3), "xyz");
#endif
}

TEST(FileStreamTest, FailuresNameThePathAndTheReason)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::string missing = dir / "missing.bin";
    const std::string readText = FileErrorText([&] { FileSystem::OpenForReading(missing); });
    EXPECT_TRUE(Contains(readText, "'" + missing + "'")) << readText;
    EXPECT_TRUE(Contains(readText, "No such file")) << readText;
    EXPECT_TRUE(Contains(FileErrorText([&] { FileSystem::OpenForReading(dir.path()); }), "is a directory"));
    EXPECT_THROW(FileSystem::OpenForReading(""), RTE::FileError);
    EXPECT_THROW(FileSystem::OpenForReading(dir / std::string("a\0b", 3)), RTE::FileError);

    const std::string noFolder = dir / "no/such/folder/f.bin";
    try {
        FileSystem::OpenForWriting(noFolder);
        FAIL() << "opened a file in a missing folder";
    } catch (const RTE::FileWriteError& e) {
        EXPECT_TRUE(Contains(e.what(), "'" + noFolder + "'")) << e.what();
        EXPECT_TRUE(Contains(e.what(), "No such file")) << e.what();
    }
    EXPECT_THROW(FileSystem::OpenForWriting(dir.path()), RTE::FileWriteError);
    EXPECT_THROW(FileSystem::OpenForWriting(dir / std::string("a\0b", 3)), RTE::FileWriteError);
}

#if defined(__linux__)
TEST(FileStreamTest, AFullDeviceReportsNoSpace)
{
    if (!FileSystem::Exists(std::string("/dev/full")))
        GTEST_SKIP() << "no /dev/full";
    TestSupport::LogCapture log;
    auto file = FileSystem::OpenForWriting("/dev/full");
    const std::string block(8192, 'x');
    try {
        file->Append(block.data(), block.size());
        FAIL() << "wrote to a full device";
    } catch (const RTE::FileWriteError& e) {
        EXPECT_TRUE(Contains(e.what(), "'/dev/full'")) << e.what();
        EXPECT_TRUE(Contains(e.what(), "No space left on device")) << e.what();
    }
}
#endif

TEST(FileSystemTest, GetFilesCountsLinksToFilesAndNothingElse)
{
    TestSupport::TempDir dir;
    WriteFile(dir / "B00001.im7", "1");
    FileSystem::CreateDirectory(dir / "B00002.folder");
    boost::system::error_code ec;
    boost::filesystem::create_symlink(dir / "B00001.im7", dir / "B00003.im7", ec);
    boost::filesystem::create_directory_symlink(dir / "B00002.folder", dir / "B00004.im7", ec);
    boost::filesystem::create_symlink(dir / "missing", dir / "B00005.im7", ec);
    if (ec)
        GTEST_SKIP() << "no symbolic links here: " << ec.message();
    EXPECT_EQ(FileSystem::GetFiles(dir.path(), "B.*", false, false),
              (std::vector<std::string>{"B00001.im7", "B00003.im7"}));
}
