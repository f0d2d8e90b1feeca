// The common base, the null set and the type identifiers.

#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_SetBase.h>
#include <SetApi/set/I_SetObserver.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <Storage/SettingsNode.h>

#include "support/TestSupport.h"

#include <QFile>

#include <set>
#include <vector>

using namespace SetApi;
using TestSupport::MessageOf;

namespace {

// The smallest set class: a name and a size, everything else from the base.
class MinimalSet : public C_SetBase {
public:
    explicit MinimalSet(std::string name, unsigned size = 0) : m_name(std::move(name)), m_size(size) {}
    std::string GetName() const override { return m_name; }
    bool IsOpen() const override { return true; }
    unsigned GetSize() const override { return m_size; }
    void Store(unsigned index) { Notify_StoreBuffer(index); }

private:
    std::string m_name;
    unsigned m_size;
};

class RecordingObserver : public I_SetObserver {
public:
    RecordingObserver(std::vector<std::string>& log, std::string name) : m_log(log), m_name(std::move(name)) {}
    void OnBufferStored(unsigned index) override { m_log.push_back(m_name + ":" + std::to_string(index)); }

private:
    std::vector<std::string>& m_log;
    std::string m_name;
};

Storage::SettingsNode SampleSettings(const QString& value)
{
    Storage::SettingsNode settings(QStringLiteral("Acquisition"));
    settings.SetClass(QStringLiteral("Camera"));
    settings.SetVersion(3);
    settings.SetValue(QStringLiteral("Value"), value);
    settings.AddChild(QStringLiteral("Child")).SetInt(QStringLiteral("Width"), 640);
    return settings;
}

} // namespace

TEST(C_SetBase, AnswersWhatASetClassDoesNotOffer)
{
    MinimalSet set("/data/project/Run 1");
    EXPECT_EQ(set.GetTitle(), QStringLiteral("Run 1"));
    EXPECT_TRUE(set.GetTypeIdentifier().isEmpty());
    EXPECT_EQ(set.GetSetType(), I_Set::SET_TYPE_UNKNOWN);
    EXPECT_EQ(set.GetSourceIndex(7), 0u);
    EXPECT_TRUE(set.GetSourceSet().empty());
    EXPECT_FALSE(set.WriteSetFile());
    EXPECT_FALSE(set.IsVirtualDataSet());
    EXPECT_FALSE(set.SetPackTypeWord(2));
    EXPECT_FALSE(set.SetPackTypeFloat(2));
    EXPECT_FALSE(set.HasFullDataTraces());
    EXPECT_FALSE(set.GetParameterTree());
    int number = 5;
    std::string text = "kept";
    EXPECT_FALSE(set.GetParameter("SetType", number));
    EXPECT_FALSE(set.GetParameter("SetComments", text));
    EXPECT_FALSE(set.SetParameter("SetType", 1));
    EXPECT_FALSE(set.SetParameter("SetComments", std::string("x")));

    EXPECT_EQ(MessageOf([&] { set.LoadBuffer(0); }), "");
    EXPECT_EQ(MessageOf([&] { set.StoreBuffer(nullptr, 0); }), "");
    EXPECT_EQ(MessageOf([&] { set.AppendBuffer(nullptr); }), "");
    EXPECT_EQ(MessageOf([&] { set.GetBufferStructureInformation(0); }), "");
    EXPECT_EQ(MessageOf([&] { set.GetAttributes(0); }), "");
    EXPECT_EQ(MessageOf([&] { set.LoadFullDataTraces(); }), "Set has no analog data trace.");
    EXPECT_EQ(MessageOf([&] { set.StoreFullDataTraces(nullptr); }), "It is not possible to store the traces to the set.");
}

TEST(C_SetBase, BufferTitleIsEmptyInsideAndRaisesOutside)
{
    MinimalSet empty("/x/empty", 0);
    EXPECT_THROW(empty.GetBufferTitle(0), RTE::VerificationFailed);
    MinimalSet three("/x/three", 3);
    EXPECT_TRUE(three.GetBufferTitle(2).isEmpty());
    EXPECT_EQ(MessageOf([&] { three.GetBufferTitle(3); }), "Index out of range.");
}

TEST(C_SetBase, ObserversRunInOrderOfAttachmentAndDuplicatesCount)
{
    MinimalSet set("/x/observed");
    std::vector<std::string> log;
    RecordingObserver first(log, "first"), second(log, "second");
    set.AttachObserver(&first);
    set.AttachObserver(&second);
    set.AttachObserver(&first);
    set.Store(4);
    EXPECT_EQ(log, (std::vector<std::string>{"first:4", "second:4", "first:4"}));

    log.clear();
    set.RemoveObserver(&first); // removes both entries
    set.Store(5);
    EXPECT_EQ(log, (std::vector<std::string>{"second:5"}));
}

TEST(C_SetBase, SettingsContextMustBeAPlainName)
{
    TestSupport::TempDir dir;
    MinimalSet set(dir.path());
    EXPECT_FALSE(set.HasSettings(I_Set::SETTINGS_ACQUISITION, QStringLiteral("a.b_c-d{1}")));
    EXPECT_FALSE(set.HasSettings(I_Set::SETTINGS_ACQUISITION, QString()));
    EXPECT_EQ(MessageOf([&] { set.HasSettings(I_Set::SETTINGS_ACQUISITION, QStringLiteral("with blank")); }),
              "Invalid context 'with blank'");
    EXPECT_THROW(set.HasSettings(I_Set::SETTINGS_APPLICATION, QStringLiteral("../escape")), RTE::Exception);
    EXPECT_EQ(MessageOf([&] { set.HasSettings(static_cast<I_Set::E_SettingsType>(3), QString()); }),
              "unknown settings type");
}

TEST(C_SetBase, SettingsAreWrittenOnceAndReadBack)
{
    TestSupport::TempDir dir;
    MinimalSet set(dir.path());
    const Storage::SettingsNode written = SampleSettings(QStringLiteral("plain"));
    set.WriteSettings(I_Set::SETTINGS_PROCESSING_HISTORY, written, QString());
    EXPECT_TRUE(QFile::exists(QString::fromStdString(dir / "Settings_ProcessingHistory.xml")));
    EXPECT_TRUE(set.HasSettings(I_Set::SETTINGS_PROCESSING_HISTORY, QString()));

    const std::unique_ptr<Storage::Settings> read = set.ReadSettings(I_Set::SETTINGS_PROCESSING_HISTORY, QString());
    ASSERT_TRUE(read);
    EXPECT_TRUE(Storage::AreEqual(*read, written));

    EXPECT_EQ(MessageOf([&] { set.WriteSettings(I_Set::SETTINGS_PROCESSING_HISTORY, written, QString()); }),
              "It is not possible to overwrite settings");
    // Also with a context: the test looks at the plain document.
    EXPECT_THROW(set.WriteSettings(I_Set::SETTINGS_PROCESSING_HISTORY, written, QStringLiteral("ctx")),
                 RTE::VerificationFailed);
}

TEST(C_SetBase, ContextDocumentsDependOnThePlainDocument)
{
    TestSupport::TempDir dir;
    MinimalSet set(dir.path());
    // Written where no plain document exists, and overwritten as often as asked.
    set.WriteSettings(I_Set::SETTINGS_APPLICATION, SampleSettings(QStringLiteral("one")), QStringLiteral("view"));
    set.WriteSettings(I_Set::SETTINGS_APPLICATION, SampleSettings(QStringLiteral("two")), QStringLiteral("view"));
    EXPECT_TRUE(QFile::exists(QString::fromStdString(dir / "Settings_Application_view.xml")));
    EXPECT_TRUE(set.HasSettings(I_Set::SETTINGS_APPLICATION, QStringLiteral("view")));
    // ... but not readable while the plain document is missing.
    EXPECT_EQ(MessageOf([&] { set.ReadSettings(I_Set::SETTINGS_APPLICATION, QStringLiteral("view")); }),
              "Settings not available");

    set.WriteSettings(I_Set::SETTINGS_APPLICATION, SampleSettings(QStringLiteral("plain")), QString());
    const auto read = set.ReadSettings(I_Set::SETTINGS_APPLICATION, QStringLiteral("view"));
    EXPECT_EQ(read->GetValue(QStringLiteral("Value")), QStringLiteral("two"));
}

TEST(C_NullSet, IsAnEmptyPlaceholderThatDropsStores)
{
    C_NullSet unnamed;
    EXPECT_TRUE(unnamed.GetName().empty());
    C_NullSet set("/data/missing");
    EXPECT_EQ(set.GetName(), "/data/missing");
    EXPECT_EQ(set.GetTitle(), QStringLiteral("missing"));
    EXPECT_FALSE(set.IsOpen());
    EXPECT_EQ(set.GetSize(), 0u);
    EXPECT_EQ(set.GetSetType(), I_Set::SET_TYPE_UNKNOWN);
    EXPECT_EQ(set.GetSourceIndex(0), 1u);
    EXPECT_EQ(set.GetSourceIndex(5), 1u);
    EXPECT_FALSE(set.LoadBuffer(3));
    unsigned count = 9, first = 9, last = 9;
    set.GetInfo(count, first, last);
    EXPECT_EQ(count + first + last, 0u);
    set.StoreBuffer(nullptr, 0);
    set.AppendBuffer(nullptr);
    set.RemoveBuffer(0);
    set.SetSourceMapping(3, 4);
    EXPECT_EQ(set.GetSize(), 0u);
    EXPECT_EQ(MessageOf([&] { set.GetBufferStructureInformation(0); }), "No buffer found in the set.");
    EXPECT_EQ(MessageOf([&] { set.GetAttributes(0); }), "No buffer found in the set.");
    EXPECT_EQ(MessageOf([&] { set.RemoveBufferRange(0, 1); }), "The method is not implemented.");
}

TEST(SetTypeIdentifiers, TwentyFourDistinctIdentifiers)
{
    unsigned count = 0;
    const QString* all = TypeIdentifiers::All(count);
    ASSERT_EQ(count, 24u);
    std::set<QString> distinct(all, all + count);
    EXPECT_EQ(distinct.size(), 24u);
    EXPECT_EQ(TypeIdentifiers::FuelSenorEngineParameter, QStringLiteral("FuelSenorEngineParameter"));
    EXPECT_EQ(TypeIdentifiers::MultiCycleRecording, QStringLiteral("SET_TYPE_ID_MULTI_CYCLE_RECORDING"));
}

TEST(SetTypeIdentifiers, IdentifierAndDisplayNameTestBitsInTheirOwnOrder)
{
    EXPECT_EQ(GetTypeIdentifierForSetType(0), QStringLiteral("SET_TYPE_ID_IMAGE"));
    EXPECT_EQ(GetSetTypeDisplayName(0), QStringLiteral("?"));
    EXPECT_EQ(GetTypeIdentifierForSetType(0x800), QStringLiteral("SET_TYPE_ID_IMAGE")); // scalar has none
    EXPECT_EQ(GetSetTypeDisplayName(0x800), QStringLiteral("Scalar"));
    // Vector and recording: the two chains disagree, on purpose.
    EXPECT_EQ(GetTypeIdentifierForSetType(0x1200), QStringLiteral("SET_TYPE_ID_RECORDING"));
    EXPECT_EQ(GetSetTypeDisplayName(0x1200), QStringLiteral("Vector"));
    EXPECT_EQ(GetTypeIdentifierForSetType(0x400000), QStringLiteral("SET_TYPE_ID_MULTI_CYCLE_RECORDING"));
    EXPECT_EQ(GetTypeIdentifierForSetType(0x800000), QStringLiteral("SET_TYPE_ID_MULTI_CYCLE_RECORDING"));
    EXPECT_EQ(GetTypeIdentifierForSetType(0x1000000), QStringLiteral("ParticleField"));
    EXPECT_EQ(GetTypeIdentifierForSetType(0x4000 | 0x2000), QStringLiteral("SET_TYPE_ID_FOLDER"));
    EXPECT_EQ(GetSetTypeDisplayName(0x1 | 0x20000), QStringLiteral("Calibration"));
    EXPECT_EQ(GetSetTypeDisplayName(0x400000), QStringLiteral("Recording loop"));
    EXPECT_EQ(GetSetTypeDisplayName(0x80000000u), QStringLiteral("?"));
}

TEST(SetTypeIdentifiers, TypeNameOfAMissingPathIsEmpty)
{
    TestSupport::TempDir dir;
    EXPECT_TRUE(GetTypeNameOfSet(QString::fromStdString(dir / "nothing")).isEmpty());
}
