#include <Storage/SettingsDocument.h>
#include <Storage/SettingsSerializer.h>

#include <RTE/Exception.h>

#include "SettingsTestData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <thread>
#include <vector>

using Storage::Private::SettingsSerializer;
using SettingsTestData::Q;

namespace {

QStringList Entries(const std::string& folder)
{
    return QDir(Q(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// Saves and expects FileWriteError naming the path.
void ExpectWriteError(const Storage::Settings& settings, const std::string& path)
{
    try {
        SettingsSerializer(settings).SaveAs(Q(path));
        ADD_FAILURE() << "saved to " << path;
    } catch (const RTE::FileWriteError& e) {
        EXPECT_NE(e.message().indexOf(Q(path)), -1) << e.what();
    }
}

} // namespace

TEST(SettingsSerializer, UnwritableTargetsRaiseAndLeaveNoTemporaryFile)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const Storage::SettingsNode tree = SettingsTestData::RichTree();

    ExpectWriteError(tree, dir / "missing/s.xml");
    TestSupport::WriteFile(dir / "plain-file", "x");
    ExpectWriteError(tree, dir / "plain-file/s.xml");
    QDir(Q(dir.path())).mkdir("folder");
    ExpectWriteError(tree, dir / "folder");
    EXPECT_EQ(Entries(dir.path()), QStringList({"folder", "plain-file"}));
    EXPECT_TRUE(Entries(dir / "folder").isEmpty());
    EXPECT_EQ(TestSupport::ReadFile(dir / "plain-file"), "x");
}

TEST(SettingsSerializer, ReadOnlyFolderRaisesAndLeavesNoTemporaryFile)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const std::string folder = dir / "ro";
    QDir(Q(dir.path())).mkdir("ro");
    QFile::setPermissions(Q(folder), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    QFile probe(Q(folder + "/probe"));
    if (probe.open(QIODevice::WriteOnly)) {
        probe.close();
        probe.remove();
        QFile::setPermissions(Q(folder), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        GTEST_SKIP() << "this user may write into read-only folders";
    }
    ExpectWriteError(Storage::SettingsNode("s"), folder + "/s.xml");
    EXPECT_TRUE(Entries(folder).isEmpty());
    QFile::setPermissions(Q(folder), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

TEST(SettingsSerializer, SaveReplacesAnExistingDocumentWhole)
{
    TestSupport::TempDir dir;
    const std::string path = dir / "s.xml";
    SettingsSerializer(SettingsTestData::RichTree()).SaveAs(Q(path));
    Storage::SettingsNode small("small");
    small.SetValue("k", "v");
    SettingsSerializer(small).SaveAs(Q(path));
    EXPECT_EQ(Entries(dir.path()), QStringList({"s.xml"}));
    Storage::SettingsDocument document(Q(path), Storage::AutoSyncMode::ReadOnly);
    document.Load();
    EXPECT_TRUE(Storage::AreEqual(small, document));
}

TEST(SettingsSerializer, ThreadsSaveAndLoadDifferentFilesAtOnce)
{
    TestSupport::TempDir dir;
    const Storage::SettingsNode shared = SettingsTestData::RichTree();
    std::vector<int> failures(4, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            const QString path = Q(dir / ("thread" + std::to_string(t) + ".xml"));
            for (int round = 0; round < 10; ++round) {
                Storage::SettingsNode own(shared);
                own.SetInt("round", round);
                SettingsSerializer(own).SaveAs(path);
                Storage::SettingsDocument document(path, Storage::AutoSyncMode::ReadOnly);
                document.Load();
                if (!Storage::AreEqual(own, document))
                    ++failures[static_cast<std::size_t>(t)];
                // The same tree, read by several serializers at once.
                SettingsSerializer(shared).SaveAs(path + ".shared");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
    EXPECT_EQ(Entries(dir.path()).size(), 8);
}
