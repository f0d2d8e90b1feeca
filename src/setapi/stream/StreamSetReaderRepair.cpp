// Repair of a damaged recording: the streams that opening found unreadable are dropped with their
// files, the image streams always stay (they hold the measurement), and the configuration is marked
// as repaired for good. Images lost by a short camera stream cannot come back: the set keeps the
// number of images that every camera has.

#include <SetApi/stream/StreamSetReader.h>

#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>

#include <RTE/FileSystem.h>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <exception>

namespace SetApi {
namespace Private {

namespace {

// Whether the entry is one that the corruption states condemn; the reason goes to the details.
// A whole kind counts as bad: with damaged masks every mask stream goes, also those that opened.
// Only attribute streams are judged one by one.
bool IsDropped(const C_ReaderInfo& info, const StreamSetReader::CorruptionStates& states, QString& details)
{
    const QString& type = info.Type;
    if (type == QLatin1String("Core.Set.Recording.FrameReader"))
        return false;
    if (type == QLatin1String("Core.Set.Recording.MaskFrameReader")) {
        if (states.masksCorrupt)
            details += QStringLiteral("masks,");
        return states.masksCorrupt;
    }
    if (type == QLatin1String("Core.Set.Recording.ScalarFieldFrameReader")) {
        if (states.scalarFieldsCorrupt)
            details += QStringLiteral("scalar fields,");
        return states.scalarFieldsCorrupt;
    }
    if (type == QLatin1String("Core.Set.Recording.ScaleReader")) {
        if (states.scalesCorrupt)
            details += QStringLiteral("scales,");
        return states.scalesCorrupt;
    }
    if (type == QLatin1String("Core.Set.Recording.AttributeReader")) {
        if (info.ContentPurpose.IsAssociatedToFrames()) {
            const std::uint32_t frame = info.ContentPurpose.StartFrame();
            const std::vector<std::uint32_t>& frames = states.corruptAttributeFrames;
            const bool bad = std::find(frames.begin(), frames.end(), frame) != frames.end();
            if (bad)
                details += QStringLiteral("attributes of frame %1, ").arg(frame);
            return bad;
        }
        if (states.globalAttributesCorrupt)
            details += QStringLiteral("global attributes,");
        return states.globalAttributesCorrupt;
    }
    if (type == QLatin1String("Core.Set.Recording.TraceReader")) {
        if (states.tracesCorrupt)
            details += QStringLiteral("traces,");
        return states.tracesCorrupt;
    }
    return false;
}

// Removes the plain files of the folder that match one of the patterns. A file that cannot be
// removed is passed over: the stream it belongs to is out of the configuration either way.
void RemoveMatchingFiles(const QString& folder, const QStringList& patterns)
{
    const QFileInfoList files = QDir(folder).entryInfoList(patterns, QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& file : files) {
        try {
            RTE::FileSystem::RemoveFile(file.absoluteFilePath().toStdString());
        } catch (const std::exception&) {
        }
    }
}

} // namespace

void StreamSetReader::Repair()
{
    const QFileInfo path(m_configurationPath);
    const QString folder = path.absolutePath();
    C_ReaderConfiguration repaired;
    QString details;
    QStringList patterns;
    for (unsigned index = 0; index < m_configuration.GetReaderCount(); ++index) {
        const C_ReaderInfo& info = m_configuration.GetReader(index);
        if (IsDropped(info, m_corruptionStates, details))
            patterns << info.FilePrefix + QStringLiteral("*.*");
        else
            repaired.AddReader(info);
    }

    m_recordingFrameReaders.clear();
    m_imageFrameReaders.clear();
    m_maskReaders.clear();
    m_scalarFieldReaders.clear();
    m_scaleReaders.clear();
    m_attributeReaders.clear();
    m_traceReaders.clear();

    // Files go before the new configuration is saved: should the save fail, the old configuration
    // names streams whose files are gone, which the next opening reports as damage, so a further
    // repair remains possible.
    if (!patterns.isEmpty())
        RemoveMatchingFiles(folder, patterns);

    repaired.MarkAsRepaired(details);
    SaveReaderConfiguration(repaired, m_configurationPath);
    Open();
}

} // namespace Private
} // namespace SetApi
