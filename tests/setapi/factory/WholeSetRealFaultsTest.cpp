// The whole-set operations against real faults of the machine, where it allows them: a folder the
// process may not write to, and a small file system that fills up (which also makes renames
// across file systems fail, as they do between drives). The injected faults of the other tests
// cover every step; these prove that the real failures take the same ways.

#include "WholeSetTestSupport.h"
#include "setapi/stream/StreamSetBuilder.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <SetApi/factory/Tools.h>
#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <boost/filesystem/operations.hpp>

#include <QFileInfo>

#include <cstdlib>
#include <sys/statvfs.h>
#include <exception>
#include <memory>
#include <string>

using namespace SetApi;
using namespace WholeSet;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

namespace fs = boost::filesystem;

// Whether the process can create a file in the folder.
bool CanWriteIn(const std::string& folder)
{
    const std::string probe = folder + "/probe";
    try {
        RTE::FileSystem::OpenForWriting(probe)->Close();
    } catch (const std::exception&) {
        return false;
    }
    RTE::FileSystem::RemoveFile(probe);
    return true;
}

// Whether a file copies from one folder to the other through the file-system backend. Some
// versions of the backend's library cannot copy between two file systems at all.
bool CanCopyBetween(const std::string& from, const std::string& to)
{
    bool copied = false;
    try {
        WriteFile(from + "/probe", "probe");
        RTE::FileSystem::CopyFile(from + "/probe", to + "/probe", true);
        copied = TestSupport::ReadFile(to + "/probe") == "probe";
        RTE::FileSystem::RemoveFile(to + "/probe");
    } catch (const std::exception&) {
    }
    if (RTE::FileSystem::Exists(from + "/probe"))
        RTE::FileSystem::RemoveFile(from + "/probe");
    if (RTE::FileSystem::Exists(to + "/probe"))
        RTE::FileSystem::RemoveFile(to + "/probe");
    return copied;
}

#define SKIP_UNLESS_COPIES_BETWEEN(from, to)                                                        \
    if (!CanCopyBetween(from, to))                                                                 \
    GTEST_SKIP() << "the file-system backend cannot copy from " << (from) << " to " << (to)

// A file system mounted on a folder for the life of the object, on Linux when the process may
// mount; otherwise Mounted() is false. Either a small memory file system, or another view of a
// folder of the same file system (a bind mount): renames into it fail as they do between drives,
// while files still copy.
class ScopedMount {
public:
    static std::unique_ptr<ScopedMount> Tmpfs(const std::string& folder, const std::string& size)
    {
        return std::unique_ptr<ScopedMount>(new ScopedMount(folder, "-t tmpfs -o size=" + size + " tmpfs"));
    }
    static std::unique_ptr<ScopedMount> Bind(const std::string& folder)
    {
        return std::unique_ptr<ScopedMount>(new ScopedMount(folder, "--bind '" + folder + "'"));
    }
    ~ScopedMount()
    {
        if (m_mounted)
            Command("umount '" + m_folder + "'");
    }
    ScopedMount(const ScopedMount&) = delete;
    ScopedMount& operator=(const ScopedMount&) = delete;

    bool Mounted() const { return m_mounted; }
    bool MakeReadOnly() { return m_mounted && Command("mount -o remount,bind,ro '" + m_folder + "'"); }

private:
    ScopedMount(const std::string& folder, const std::string& what) : m_folder(folder)
    {
        RTE::FileSystem::CreateDirectory(folder);
#if defined(__linux__)
        m_mounted = Command("mount " + what + " '" + folder + "'");
#else
        (void)what;
#endif
    }
    static bool Command(const std::string& command) { return std::system((command + " 2>/dev/null").c_str()) == 0; }
    std::string m_folder;
    bool m_mounted = false;
};

class WholeSetRealFaults : public SourceSetTest {};

} // namespace

TEST_F(WholeSetRealFaults, AReadOnlyFolderRefusesCopiesMovesAndRenamesWithoutLoss)
{
    // Permissions first; a process that ignores them (an administrator) gets a read-only mount.
    const std::string folder = m_dir / "ReadOnly";
    RTE::FileSystem::CreateDirectory(folder);
    MakeSet(folder + "/Kept", "kept");
    std::unique_ptr<ScopedMount> mount;
    fs::permissions(folder, fs::owner_read | fs::owner_exe);
    if (CanWriteIn(folder)) {
        fs::permissions(folder, fs::owner_all);
        mount = ScopedMount::Bind(folder);
        if (!mount->Mounted())
            GTEST_SKIP() << "this process may write to read-only folders and cannot mount a file system";
        SKIP_UNLESS_COPIES_BETWEEN(folder, m_dir.path());
        if (!mount->MakeReadOnly() || CanWriteIn(folder))
            GTEST_SKIP() << "no read-only folder can be had here";
    }
    const Content kept = ContentOf(folder + "/Kept");

    EXPECT_FALSE(Factory().Copy(m_from, folder + "/Copy", true, false));
    EXPECT_FALSE(Factory().Move(m_from, folder + "/Moved"));
    EXPECT_EQ(ContentOf(m_from), m_source);

    EXPECT_FALSE(Factory().Rename(folder + "/Kept", "Renamed"));
    EXPECT_EQ(ContentOf(folder + "/Kept"), kept);

    // Out of the folder a move ends as a copy: the source cannot go, and stays whole.
    EXPECT_TRUE(Factory().Move(folder + "/Kept", m_dir / "Out"));
    EXPECT_EQ(ContentOf(m_dir / "Out"), kept);
    EXPECT_EQ(ContentOf(folder + "/Kept"), kept);

    if (!mount)
        fs::permissions(folder, fs::owner_all);
}

TEST_F(WholeSetRealFaults, AFullDiskFailsTheCopyAndTheMoveAndLeavesTheSource)
{
    // The set fits on the small disk once, not twice.
    const std::string small = m_dir / "Small";
    const auto disk = ScopedMount::Tmpfs(small, "2m");
    if (!disk->Mounted())
        GTEST_SKIP() << "cannot mount a small file system here";
    const std::string from = small + "/Run";
    MakeSet(from, "source");
    for (int i = 3; i <= 5; ++i)
        WriteFile(from + "/B0000" + std::to_string(i) + ".im7", std::string(400 * 1024, char('a' + i)));
    const Content source = ContentOf(from);

    EXPECT_FALSE(Factory().Copy(from, small + "/Copy", true, false));
    EXPECT_EQ(ContentOf(from), source);
    EXPECT_TRUE(Factory().Remove(QString::fromStdString(small + "/Copy")));

    // Renaming into another mount fails, the slow way then fills the disk.
    const auto view = ScopedMount::Bind(small + "/View");
    if (view->Mounted()) {
        ScopedObserver observer;
        EXPECT_FALSE(Factory().Move(from, small + "/View/Moved"));
        EXPECT_EQ(ContentOf(from), source);
        EXPECT_EQ(observer.Events(), std::vector<std::string>{"create " + small + "/View/Moved"});
    }

    // A set file that does not fit leaves no half copy behind.
    WriteFile(m_dir / "Big.set", std::string(2 << 20, 'b'));
    EXPECT_FALSE(CopySetFileWithoutSetIdentifier(QFileInfo(QString::fromStdString(m_dir / "Big.set")),
                                                 QFileInfo(QString::fromStdString(small + "/Big.set"))));
    EXPECT_FALSE(RTE::FileSystem::Exists(small + "/Big.set"));
}

TEST_F(WholeSetRealFaults, ASetFileRewrittenOnAFullDiskStaysWhole)
{
    const std::string small = m_dir / "Full";
    const auto disk = ScopedMount::Tmpfs(small, "1m");
    if (!disk->Mounted())
        GTEST_SKIP() << "cannot mount a small file system here";
    const std::string file = small + "/Run.set";
    C_DataSetParameter parameters;
    parameters.SetValue("SetType", 0x1000);
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    ASSERT_TRUE(C_SetUtilities::WriteSettings(file, parameters, ""));
    const std::string before = TestSupport::ReadFile(file);
    {
        const std::unique_ptr<RTE::I_WritableFile> filler = RTE::FileSystem::OpenForWriting(small + "/Filler");
        const std::string block(64 * 1024, 'f');
        try {
            for (int i = 0; i < 64; ++i)
                filler->Append(block.data(), block.size());
        } catch (const RTE::FileWriteError&) {
        }
    }
    parameters.SetValue("SetComments", std::string(16 * 1024, 'c'));
    EXPECT_FALSE(C_SetUtilities::WriteSettings(file, parameters, ""));
    EXPECT_EQ(TestSupport::ReadFile(file), before);
    EXPECT_EQ(RTE::FileSystem::GetFiles(small, "\\..*", false, false), std::vector<std::string>{});
}

TEST_F(WholeSetRealFaults, AMoveThatCannotRenameTakesTheSlowWay)
{
    const std::string other = m_dir / "Other";
    const auto mount = ScopedMount::Bind(other);
    if (!mount->Mounted())
        GTEST_SKIP() << "cannot mount a second view of a folder here";
    SKIP_UNLESS_COPIES_BETWEEN(m_dir.path(), other);
    ScopedObserver observer;
    EXPECT_TRUE(Factory().Move(m_from, other + "/Moved"));
    EXPECT_EQ(ContentOf(other + "/Moved"), m_source);
    EXPECT_TRUE(ContentOf(m_from).empty());
    EXPECT_EQ(observer.Events(), (std::vector<std::string>{"remove " + m_from, "create " + other + "/Moved"}));
}

// A recording on a small disk that is nearly full: its conversion runs out of room half-way,
// fails with the disk's words, and leaves the recording whole and no work set behind.
TEST_F(WholeSetRealFaults, AFullDiskFailsTheConversionAndLeavesTheRecording)
{
    const std::string small = m_dir / "SmallForConversion";
    const auto disk = ScopedMount::Tmpfs(small, "1200k");
    if (!disk->Mounted())
        GTEST_SKIP() << "cannot mount a small file system here";
    const std::string name = small + "/Run";
    const unsigned images = 12;
    {
        StreamSetTesting::StreamSetBuilder builder(name);
        builder.AddCamera(128, 128, images);
        builder.AddCamera(128, 128, images);
        builder.Finish();
    }
    // The disk is filled up to 64 KB, less than one converted buffer.
    struct statvfs room {};
    ASSERT_EQ(::statvfs(small.c_str(), &room), 0);
    const std::uint64_t free = std::uint64_t(room.f_bavail) * room.f_frsize;
    ASSERT_GT(free, 64u * 1024);
    WriteFile(small + "/Filler", std::string(free - 64 * 1024, 'f'));
    struct : RTE::I_ActivityControl {
        bool IsCancelled() const override { return false; }
    } control;
    struct : RTE::I_ActivityFeedback {
        void SetProgress(double) override {}
        void SetStatusText(const std::string& text) override { last = text; }
        std::string last;
    } feedback;
    const TestSupport::LogCapture log;
    std::string failure;
    try {
        ConvertStreamSetToNativeSet(name, control, feedback);
    } catch (const std::exception& e) {
        failure = e.what();
    }
    EXPECT_NE(failure.find("No space left on device"), std::string::npos) << failure;
    EXPECT_EQ(feedback.last, "Error during conversion");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(small + "/Run_temp_Conversion.set")));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(small + "/Run_temp_Conversion")));
    const std::shared_ptr<I_Set> set = Factory().Open(name);
    ASSERT_NE(Private::CastToStreamSet(set), nullptr);
    ASSERT_EQ(set->GetSize(), images);
    for (unsigned image = 0; image < images; ++image) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(image);
        const auto* pixels = static_cast<const std::uint16_t*>(
            static_cast<const BufferApi::I_FrameImage*>(buffer->GetFrame(1))->GetPixelPlane(0)->GetData());
        ASSERT_EQ(pixels[128 * 77 + 99], StreamSetTesting::PixelValue(1, image, 0, 99, 77));
    }
}
