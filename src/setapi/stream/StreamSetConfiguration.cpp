#include <SetApi/stream/StreamSetConfiguration.h>

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>
#include <RTE/Parameter/Tree.h>

#include <QDateTime>
#include <QDir>
#include <QLocale>

namespace SetApi {

I_StreamSetConfigurationWriter::~I_StreamSetConfigurationWriter() = default;

namespace {

// The creation time of the set file. Day and month names are English whatever the system's
// locale, so that every set file reads the same everywhere.
std::string CreationTime()
{
    return QLocale::c()
        .toString(QDateTime::currentDateTime(), QStringLiteral("ddd MMM dd hh:mm:ss yyyy"))
        .toStdString();
}

} // namespace

StreamSetConfiguration::StreamSetConfiguration() = default;

StreamSetConfiguration::~StreamSetConfiguration() = default;

void StreamSetConfiguration::CreateSet(const QString& name, I_Set::E_SetType type, const QString& comment,
                                       const QString& trailer, boost::shared_ptr<RTE::Parameter::C_Tree> parameters)
{
    RTE_VERIFY(!name.isEmpty(), "Set name is empty.");
    m_destination = name;

    // mkdir, not mkpath: an existing folder is an error, so that a recording never mixes its
    // streams with those of another one.
    if (!QDir().mkdir(name))
        RTE_THROW_MSG(RTE::Exception, "Could not create folder: " << name);

    if (parameters) {
        // A parameter tree asks for a hypersampled view over the stream folder, which this
        // version does not make. The folder stays, as after any failed creation.
        RTE_THROW_MSG(RTE::Exception, "Hypersampled recordings (a stream set with a parameter tree) are not "
                                      "available in this version; no set file was written for: "
                                          << name);
    }

    C_DataSetParameter setParameters;
    setParameters.Add("SetIdentifier", std::string("StreamSet"));
    setParameters.Add("SetType", static_cast<int>(type));
    setParameters.Add("SetTime", CreationTime());
    setParameters.Add("SetComments", comment.toStdString());

    const QString file = name + QStringLiteral(".set");
    if (!C_SetUtilities::WriteSettings(file.toStdString(), setParameters, trailer.toStdString()))
        RTE_THROW_MSG(RTE::Exception, "Could not create set file: " << file);
    RTE::C_Logger("Set").info("Stream set " + name.toStdString() + " created");
}

void StreamSetConfiguration::CreateRecordingSet(const QString& name, const QString& comment, const QString& trailer,
                                                boost::shared_ptr<RTE::Parameter::C_Tree> parameters)
{
    CreateSet(name, static_cast<I_Set::E_SetType>(I_Set::SET_TYPE_RECORDING | I_Set::SET_TYPE_IMAGE), comment,
              trailer, parameters);
}

void StreamSetConfiguration::SetFrameWriterContext(FrameWriterContext context)
{
    switch (context) {
    case Frame:
        m_names.SetFrameFilePrefix(QStringLiteral("Frame"));
        m_names.SetIndexBase(0);
        break;
    case Mask:
        m_names.SetFrameFilePrefix(QStringLiteral("Mask"));
        m_names.SetIndexBase(0);
        break;
    case ScalarField:
        m_names.SetFrameFilePrefix(QStringLiteral("ScalarField"));
        m_names.SetIndexBase(0);
        break;
    default:
        m_names.SetFrameFilePrefix(QStringLiteral("Camera"));
        m_names.SetIndexBase(1);
        break;
    }
}

QString StreamSetConfiguration::RegisterWriter(I_RecordingWriter& writer, const C_ContentPurpose& purpose)
{
    // Without a folder the destination would be "/<prefix>", at the root of the file system.
    RTE_VERIFY(!m_destination.isEmpty(), "Writers register after the stream set has been created.");
    const QString name = writer.GetCorrespondingReaderName();
    const QString type = writer.GetCorrespondingReaderType();
    const QString description = writer.GetFormatDescription();
    const QString prefix = m_names.NextName(type);
    writer.SetDestination(m_destination + QLatin1Char('/') + prefix);
    m_configuration.AddReader(Private::C_ReaderInfo(name, type, prefix, description, purpose));
    return prefix;
}

unsigned StreamSetConfiguration::GetWriterCount() const { return m_configuration.GetReaderCount(); }

void StreamSetConfiguration::Save()
{
    RTE_VERIFY(m_configuration.GetReaderCount() != 0, "No writers registered.");
    Private::SaveReaderConfiguration(m_configuration, GetStreamSetConfigurationName(m_destination));
}

std::shared_ptr<StreamSetConfiguration> CreateRecordingSetConfiguration()
{
    return std::make_shared<StreamSetConfiguration>();
}

} // namespace SetApi
