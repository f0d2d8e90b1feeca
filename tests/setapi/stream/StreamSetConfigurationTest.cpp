// The stream set configuration: the folder and set file a recording starts with, the prefixes and
// destinations it hands to registering writers, and the table of contents it saves.

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSetConfiguration.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Parameter/Tree.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <QLocale>
#include <QRegularExpression>

#include <string>
#include <vector>

using SetApi::C_ContentPurpose;
using SetApi::I_RecordingWriter;
using SetApi::I_Set;
using SetApi::StreamSetConfiguration;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;

namespace {

const QString FrameReaderType = QStringLiteral("Core.Set.Recording.FrameReader");
const QString AttributeReaderType = QStringLiteral("Core.Set.Recording.AttributeReader");

// A writer that only remembers the destination it was given.
class FakeWriter : public I_RecordingWriter {
public:
    explicit FakeWriter(QString type, QString name = QStringLiteral("FakeReader"))
        : m_type(std::move(type)), m_name(std::move(name))
    {
    }
    void SetDestination(const QString& destination) override { this->destination = destination; }
    QString GetCorrespondingReaderType() const override { return m_type; }
    QString GetCorrespondingReaderName() const override { return m_name; }
    QString GetFormatDescription() const override { return QStringLiteral("fake format of ") + m_name; }

    QString destination;

private:
    QString m_type;
    QString m_name;
};

SetApi::C_DataSetParameter ReadSetFile(const std::string& file)
{
    SetApi::C_DataSetParameter parameters;
    EXPECT_TRUE(SetApi::C_SetUtilities::ReadSetGroupVariables(file, parameters));
    return parameters;
}

std::string StringOf(const SetApi::C_DataSetParameter& parameters, const std::string& name)
{
    std::string value;
    EXPECT_TRUE(parameters.GetValue(name, value)) << name;
    return value;
}

} // namespace

TEST(StreamSetConfiguration, CreateSetMakesTheFolderAndASetFileOfARecording)
{
    TempDir dir;
    const std::string name = dir / "Run";
    // Day and month names must not follow the system's language.
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    StreamSetConfiguration configuration;
    configuration.CreateSet(QString::fromStdString(name), I_Set::SET_TYPE_IMAGE, QStringLiteral("first run"),
                            QStringLiteral("#trailer line"), nullptr);
    QLocale::setDefault(previous);

    EXPECT_TRUE(RTE::FileSystem::IsDirectory(name));
    EXPECT_EQ(configuration.GetDestination(), QString::fromStdString(name));
    const SetApi::C_DataSetParameter parameters = ReadSetFile(name + ".set");
    EXPECT_EQ(StringOf(parameters, "SetIdentifier"), "StreamSet");
    int type = 0;
    EXPECT_TRUE(parameters.GetValue("SetType", type));
    EXPECT_EQ(type, 0x100);
    EXPECT_EQ(StringOf(parameters, "SetComments"), "first run");
    const QString time = QString::fromStdString(StringOf(parameters, "SetTime"));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^(Mon|Tue|Wed|Thu|Fri|Sat|Sun) "
                                                  "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) "
                                                  "\\d\\d \\d\\d:\\d\\d:\\d\\d \\d{4}$"))
                    .match(time)
                    .hasMatch())
        << time.toStdString();
    const std::string text = ReadFile(name + ".set");
    EXPECT_NE(text.find("#trailer line"), std::string::npos);
    EXPECT_GT(text.find("#trailer line"), text.find("SetComments"));
    // Nothing but the folder and the set file: the configuration comes with Save.
    EXPECT_FALSE(RTE::FileSystem::Exists(name + "/ReaderConfiguration.xml"));
}

TEST(StreamSetConfiguration, CreateRecordingSetIsARecordingOfImages)
{
    TempDir dir;
    const std::string name = dir / "Recording";
    SetApi::CreateRecordingSetConfiguration()->CreateRecordingSet(QString::fromStdString(name), QString(), QString(),
                                                                  nullptr);
    int type = 0;
    EXPECT_TRUE(ReadSetFile(name + ".set").GetValue("SetType", type));
    EXPECT_EQ(type, 0x1100);
}

TEST(StreamSetConfiguration, CreateSetRefusesWhatItCannotMake)
{
    TempDir dir;
    const QString name = QString::fromStdString(dir / "Twice");
    LogCapture log;
    StreamSetConfiguration first;
    first.CreateSet(name, I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr);

    // An existing folder is never reused, whatever its content.
    StreamSetConfiguration second;
    EXPECT_EQ(MessageOf([&] { second.CreateSet(name, I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr); }),
              "Could not create folder: " + name.toStdString());
    EXPECT_TRUE(log.contains("Exception", "Could not create folder: " + name.toStdString()));

    // The folder is made, not a path of folders.
    const QString deep = QString::fromStdString(dir / "missing/Run");
    EXPECT_EQ(MessageOf([&] { second.CreateSet(deep, I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr); }),
              "Could not create folder: " + deep.toStdString());

    EXPECT_THROW(second.CreateSet(QString(), I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr),
                 RTE::VerificationFailed);
    EXPECT_EQ(MessageOf([&] { second.CreateSet(QString(), I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr); }),
              "Set name is empty.");

    // A folder in place of the set file: the set file cannot be written, the folder made stays.
    const std::string blocked = dir / "Blocked";
    RTE::FileSystem::CreateDirectory(blocked + ".set");
    StreamSetConfiguration third;
    EXPECT_EQ(MessageOf([&] {
                  third.CreateSet(QString::fromStdString(blocked), I_Set::SET_TYPE_RECORDING, QString(), QString(),
                                  nullptr);
              }),
              "Could not create set file: " + blocked + ".set");
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(blocked));
}

TEST(StreamSetConfiguration, AParameterTreeIsRefusedAfterTheFolderIsMade)
{
    TempDir dir;
    const std::string name = dir / "Hypersampled";
    auto tree = boost::make_shared<RTE::Parameter::C_Tree>();
    StreamSetConfiguration configuration;
    try {
        configuration.CreateSet(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, QString(), QString(), tree);
        FAIL() << "no exception";
    } catch (const RTE::VerificationFailed&) {
        FAIL() << "a missing feature is no bad argument";
    } catch (const RTE::Exception& e) {
        EXPECT_NE(e.message().indexOf(QStringLiteral("not available")), -1) << e.what();
    }
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(name));
    EXPECT_FALSE(RTE::FileSystem::Exists(name + ".set"));
}

TEST(StreamSetConfiguration, FrameContextsChooseTheWordAndTheFirstIndexOfFrameStreams)
{
    TempDir dir;
    struct Case {
        StreamSetConfiguration::FrameWriterContext context;
        const char* word;
        int firstIndex;
    };
    const std::vector<Case> cases = {{StreamSetConfiguration::Camera, "Camera", 1},
                                     {StreamSetConfiguration::Frame, "Frame", 0},
                                     {StreamSetConfiguration::Mask, "Mask", 0},
                                     {StreamSetConfiguration::ScalarField, "ScalarField", 0},
                                     {static_cast<StreamSetConfiguration::FrameWriterContext>(7), "Camera", 1}};
    int run = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.word);
        const QString name = QString::fromStdString(dir / ("Set" + std::to_string(run++)));
        StreamSetConfiguration configuration;
        configuration.CreateSet(name, I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr);
        configuration.SetFrameWriterContext(c.context);
        FakeWriter first(FrameReaderType), second(FrameReaderType);
        const QString prefix0 = configuration.RegisterWriter(first, C_ContentPurpose::CreateFrameLink(0));
        const QString prefix1 = configuration.RegisterWriter(second, C_ContentPurpose::CreateFrameLink(1));
        EXPECT_TRUE(prefix0.startsWith(QLatin1String(c.word) + QString::number(c.firstIndex))) << prefix0.toStdString();
        EXPECT_TRUE(prefix1.startsWith(QLatin1String(c.word) + QString::number(c.firstIndex + 1)))
            << prefix1.toStdString();
        // The destination is the folder, "/" and the prefix.
        EXPECT_EQ(first.destination, name + "/" + prefix0);
        EXPECT_EQ(second.destination, name + "/" + prefix1);
    }
}

TEST(StreamSetConfiguration, SaveWritesTheEntriesInTheOrderOfRegistration)
{
    TempDir dir;
    const QString name = QString::fromStdString(dir / "Run");
    StreamSetConfiguration configuration;
    configuration.CreateSet(name, I_Set::SET_TYPE_RECORDING, QString(), QString(), nullptr);
    configuration.SetFrameWriterContext(StreamSetConfiguration::Frame);
    EXPECT_EQ(configuration.GetWriterCount(), 0u);
    EXPECT_EQ(MessageOf([&] { configuration.Save(); }), "No writers registered.");
    EXPECT_THROW(configuration.Save(), RTE::VerificationFailed);

    // Interleaved kinds, so that an order by kind or by prefix would show.
    FakeWriter attributes0(AttributeReaderType, "AttributeReaderV1"), frame0(FrameReaderType, "Image"),
        global(AttributeReaderType, "AttributeReaderV1"), frame1(FrameReaderType, "Image");
    std::vector<std::pair<FakeWriter*, C_ContentPurpose>> registrations = {
        {&attributes0, C_ContentPurpose::CreateFrameLink(0)},
        {&frame0, C_ContentPurpose::CreateFrameLink(0)},
        {&global, C_ContentPurpose::CreateGlobalAttributesLink()},
        {&frame1, C_ContentPurpose::CreateFrameLink(1)}};
    std::vector<QString> prefixes;
    for (auto& [writer, purpose] : registrations) {
        prefixes.push_back(configuration.RegisterWriter(*writer, purpose));
        EXPECT_EQ(configuration.GetWriterCount(), prefixes.size());
    }
    // Prefixes are unique in the folder, also across kinds.
    for (std::size_t a = 0; a < prefixes.size(); ++a)
        for (std::size_t b = a + 1; b < prefixes.size(); ++b)
            EXPECT_NE(prefixes[a], prefixes[b]);

    configuration.Save();
    SetApi::Private::C_ReaderConfiguration saved =
        SetApi::Private::LoadReaderConfiguration(SetApi::GetStreamSetConfigurationName(name));
    ASSERT_EQ(saved.GetReaderCount(), registrations.size());
    for (unsigned i = 0; i < saved.GetReaderCount(); ++i) {
        const FakeWriter& writer = *registrations[i].first;
        const auto& entry = saved.GetReader(i);
        EXPECT_EQ(entry.Name, writer.GetCorrespondingReaderName());
        EXPECT_EQ(entry.Type, writer.GetCorrespondingReaderType());
        EXPECT_EQ(entry.FilePrefix, prefixes[i]);
        EXPECT_EQ(entry.FormatDescription, writer.GetFormatDescription());
        EXPECT_EQ(entry.ContentPurpose, registrations[i].second);
    }

    // A later Save rewrites the whole file with what has been registered since.
    FakeWriter frame2(FrameReaderType, "Image");
    configuration.RegisterWriter(frame2, C_ContentPurpose::CreateFrameLink(2));
    configuration.Save();
    saved = SetApi::Private::LoadReaderConfiguration(SetApi::GetStreamSetConfigurationName(name));
    ASSERT_EQ(saved.GetReaderCount(), 5u);
    EXPECT_EQ(saved.GetReader(4).ContentPurpose, C_ContentPurpose::CreateFrameLink(2));
}

TEST(StreamSetConfiguration, WritersCannotRegisterBeforeTheSetExists)
{
    // Without a folder the destination would lie at the root of the file system.
    StreamSetConfiguration configuration;
    FakeWriter writer(FrameReaderType);
    EXPECT_THROW(configuration.RegisterWriter(writer, C_ContentPurpose::CreateFrameLink(0)), RTE::VerificationFailed);
    EXPECT_TRUE(writer.destination.isEmpty());
    EXPECT_EQ(configuration.GetWriterCount(), 0u);
}
