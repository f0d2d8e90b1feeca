#include <SetApi/stream/StreamSetRescaler.h>

#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>
#include <StreamIO/ScaleWriter.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <exception>

namespace SetApi {

StreamSetRescaler::StreamSetRescaler(const QString& name) : m_name(name) {}

void StreamSetRescaler::SetFrameScales(unsigned frame, const RTE::S_Scale& x, const RTE::S_Scale& y,
                                       const RTE::S_Scale& intensity)
{
    m_records.push_back(FrameScales{frame, x, y, intensity});
}

void StreamSetRescaler::Write()
{
    // The reader's fixed message for an empty path, word for word.
    RTE_VERIFY(!m_name.isEmpty(), "Destination speci" "fication is empty");
    const QString configurationPath = GetStreamSetConfigurationName(m_name);
    Private::C_ReaderConfiguration configuration = Private::LoadReaderConfiguration(configurationPath);
    RTE_VERIFY(configuration.GetReaderCount() > 0, "Reader count is zero.");

    // Old scale files go before the new configuration is saved; one that cannot be deleted stays
    // behind unreferenced.
    for (unsigned index = 0; index < configuration.GetReaderCount();) {
        const Private::C_ReaderInfo& info = configuration.GetReader(index);
        if (info.Type != QLatin1String("Core.Set.Recording.ScaleReader")) {
            ++index;
            continue;
        }
        const std::string file = (m_name + QLatin1Char('/') + info.FilePrefix + QStringLiteral(".scales")).toStdString();
        configuration.RemoveReader(index);
        try {
            RTE::FileSystem::RemoveFile(file);
        } catch (const std::exception&) {
        }
    }

    for (const FrameScales& record : m_records) {
        const QString prefix = QStringLiteral("FrameScales%1").arg(record.frame);
        C_ScaleWriter writer(m_name + QLatin1Char('/') + prefix);
        writer.WriteScalesForAllImages(record.x, record.y, record.intensity);
        configuration.AddReader(Private::C_ReaderInfo(writer.GetCorrespondingReaderName(),
                                                      writer.GetCorrespondingReaderType(), prefix,
                                                      QStringLiteral("Frame scale files"),
                                                      C_ContentPurpose(true, false, true, record.frame, record.frame)));
    }
    Private::SaveReaderConfiguration(configuration, configurationPath);
}

} // namespace SetApi
