// Opening a stream set: one reader per entry of the configuration, created through the plug-in
// factory. A stream that cannot be read is noted in the corruption states and left out; only a
// configuration that cannot be used at all, or a plug-in that does not exist, stops the opening.

#include <SetApi/stream/StreamSetReader.h>

#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>
#include <StreamIO/ImageReader.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>

#include <RTE/Exception.h>
#include <RTE/PluginFactory.h>

#include <QFileInfo>

#include <algorithm>

namespace SetApi {
namespace Private {

namespace {

const char* const FrameReaderKey = "Core.Set.Recording.FrameReader";
const char* const MaskReaderKey = "Core.Set.Recording.MaskFrameReader";
const char* const ScalarFieldReaderKey = "Core.Set.Recording.ScalarFieldFrameReader";
const char* const ScaleReaderKey = "Core.Set.Recording.ScaleReader";
const char* const AttributeReaderKey = "Core.Set.Recording.AttributeReader";
const char* const TraceReaderKey = "Core.Set.Recording.TraceReader";

// The plug-in of the entry as the interface of its kind; one that cannot be made or is of another
// kind raises RTE::VerificationFailed with the failure text and the entry's name.
template <class Interface>
std::shared_ptr<Interface> CreateReader(const C_ReaderInfo& info, const char* failureText)
{
    std::unique_ptr<RTE::I_Plugin> plugin =
        RTE::C_PluginFactory::GetInstance().CreateUnique(info.Type.toStdString(), info.Name.toStdString());
    auto* reader = dynamic_cast<Interface*>(plugin.get());
    if (reader == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, failureText << info.Name);
    plugin.release();
    return std::shared_ptr<Interface>(reader);
}

// A buffer of `frames` frames of one word pixel each, to receive attributes and traces alone.
std::unique_ptr<BufferApi::I_Buffer> CreateScratchBuffer(unsigned frames)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned frame = 0; frame < frames; ++frame)
        buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 1, 1, 1)));
    return buffer;
}

} // namespace

void StreamSetReader::Open()
{
    m_corruptionStates = CorruptionStates();
    // The reader's fixed message for an empty path, kept word for word for callers that match it.
    RTE_VERIFY(!m_configurationPath.isEmpty(), "Destination speci" "fication is empty");
    m_configuration = LoadReaderConfiguration(m_configurationPath);
    RTE_VERIFY(m_configuration.GetReaderCount() > 0, "Reader count is zero.");

    const QString folder = QFileInfo(m_configurationPath).absolutePath();
    for (unsigned index = 0; index < m_configuration.GetReaderCount(); ++index) {
        const C_ReaderInfo& info = m_configuration.GetReader(index);
        const QString destination = folder + QLatin1Char('/') + info.FilePrefix;
        if (info.Type == QLatin1String(FrameReaderKey))
            OpenFrameReader(info, destination, index == 0);
        else if (info.Type == QLatin1String(MaskReaderKey))
            OpenMaskReader(info, destination);
        else if (info.Type == QLatin1String(ScalarFieldReaderKey))
            OpenScalarFieldReader(info, destination);
        else if (info.Type == QLatin1String(ScaleReaderKey))
            OpenScaleReader(info, destination);
        else if (info.Type == QLatin1String(AttributeReaderKey))
            OpenAttributeReader(info, destination);
        else if (info.Type == QLatin1String(TraceReaderKey))
            OpenTraceReader(info, destination);
        // Entries of other types belong to readers of later generations; they are passed over.
    }
    DropShortStreams();
    m_imageCount = m_corruptionStates.minImageCount;
}

void StreamSetReader::OpenFrameReader(const C_ReaderInfo& info, const QString& destination, bool firstEntry)
{
    const std::shared_ptr<I_RecordingFrameReader> reader =
        CreateReader<I_RecordingFrameReader>(info, "Could not create reader plugin: ");
    const std::shared_ptr<I_ImageFrameReader> imageReader = std::dynamic_pointer_cast<I_ImageFrameReader>(reader);
    if (m_options.directIo)
        if (auto* streamReader = dynamic_cast<C_ImageReader*>(reader.get()))
            streamReader->SetDirectIo(true);

    std::uint32_t imageCount = 0;
    try {
        reader->Open(destination);
        m_frameCount += reader->GetFramesPerImageCount();
        m_frameWidth = std::max(m_frameWidth, reader->GetFrameWidth());
        m_frameHeight = std::max(m_frameHeight, reader->GetFrameHeight());
        if (imageReader) {
            m_frameDepth = std::max(m_frameDepth, imageReader->GetFrameDepth());
            m_isWordData = imageReader->IsWordData();
            m_isFloatData = imageReader->IsFloatData();
            m_isDoubleData = imageReader->IsDoubleData();
            m_imageFrameReaders.push_back({imageReader, info.ContentPurpose});
        } else {
            m_frameDepth = 1;
            m_isWordData = true;
            m_isFloatData = false;
            m_isDoubleData = false;
            m_recordingFrameReaders.push_back({reader, info.ContentPurpose});
        }
        imageCount = reader->GetImageCount();
    } catch (const RTE::Exception&) {
        // The stream cannot be read: it counts as holding no image, so the set offers none.
        imageCount = 0;
    }

    CorruptionStates& states = m_corruptionStates;
    states.imageCounts.push_back(imageCount);
    states.maxImageCount = std::max(states.maxImageCount, imageCount);
    // Frame streams come first in every configuration this system writes; one that lists another
    // entry first leaves the minimum at 0, and the set then offers no image.
    states.minImageCount = firstEntry ? imageCount : std::min(states.minImageCount, imageCount);
}

void StreamSetReader::OpenMaskReader(const C_ReaderInfo& info, const QString& destination)
{
    const std::shared_ptr<I_ImageFrameReader> reader =
        CreateReader<I_ImageFrameReader>(info, "Could not create reader plugin: ");
    if (m_options.directIo)
        if (auto* streamReader = dynamic_cast<C_ImageReader*>(reader.get()))
            streamReader->SetDirectIo(true);
    try {
        reader->Open(destination);
        m_maskReaders.push_back({reader, info.ContentPurpose});
    } catch (const RTE::Exception&) {
        m_corruptionStates.masksCorrupt = true;
    }
}

void StreamSetReader::OpenScalarFieldReader(const C_ReaderInfo& info, const QString& destination)
{
    const std::shared_ptr<I_ScalarFieldReader> reader =
        CreateReader<I_ScalarFieldReader>(info, "Could not create reader plugin: ");
    try {
        reader->Open(destination);
        m_scalarFieldReaders.push_back({reader, info.ContentPurpose});
    } catch (const RTE::Exception&) {
        m_corruptionStates.scalarFieldsCorrupt = true;
    }
}

void StreamSetReader::OpenScaleReader(const C_ReaderInfo& info, const QString& destination)
{
    const std::shared_ptr<I_ScaleReader> reader =
        CreateReader<I_ScaleReader>(info, "Could not create scale reader plugin: ");
    try {
        reader->Open(destination);
        m_scaleReaders.push_back({reader, info.ContentPurpose});
    } catch (const RTE::Exception&) {
        m_corruptionStates.scalesCorrupt = true;
    }
}

void StreamSetReader::OpenAttributeReader(const C_ReaderInfo& info, const QString& destination)
{
    const std::shared_ptr<I_AttributeReader> reader =
        CreateReader<I_AttributeReader>(info, "Could not create attribute reader plugin: ");
    try {
        reader->Open(destination);
        // Attributes are written last for each image: a stream that cannot give those of the last
        // recorded image ended early and counts as corrupt.
        const std::uint32_t maxImageCount = m_corruptionStates.maxImageCount;
        const std::unique_ptr<BufferApi::I_Buffer> probe = CreateScratchBuffer(1);
        BufferApi::C_FrameAttributes sink(probe->GetFrame(0));
        reader->ReadAttributes(maxImageCount == 0 ? 0 : maxImageCount - 1, sink);
        m_attributeReaders.push_back({reader, info.ContentPurpose});
    } catch (const RTE::Exception&) {
        if (info.ContentPurpose.IsAssociatedToFrames())
            m_corruptionStates.corruptAttributeFrames.push_back(info.ContentPurpose.StartFrame());
        else
            m_corruptionStates.globalAttributesCorrupt = true;
    }
}

void StreamSetReader::OpenTraceReader(const C_ReaderInfo& info, const QString& destination)
{
    const std::shared_ptr<I_TraceReader> reader =
        CreateReader<I_TraceReader>(info, "Could not create trace reader plugin: ");
    try {
        reader->Open(destination);
        m_traceReaders.push_back(reader);
    } catch (const RTE::Exception&) {
        m_corruptionStates.tracesCorrupt = true;
    }
}

// Masks, scalar fields and traces that end before the last image the set offers would make the
// loads of the last images fail; such a stream counts as corrupt like one that cannot be opened,
// and is left out, so that every image the set offers loads.
void StreamSetReader::DropShortStreams()
{
    const std::uint32_t offered = m_corruptionStates.minImageCount;
    if (offered == 0)
        return;
    const auto tooShort = [offered](const auto& entry) {
        try {
            return entry.reader->GetImageCount() < offered;
        } catch (const RTE::Exception&) {
            return true;
        }
    };
    const auto dropMasks = std::remove_if(m_maskReaders.begin(), m_maskReaders.end(), tooShort);
    if (dropMasks != m_maskReaders.end()) {
        m_maskReaders.erase(dropMasks, m_maskReaders.end());
        m_corruptionStates.masksCorrupt = true;
    }
    const auto dropFields = std::remove_if(m_scalarFieldReaders.begin(), m_scalarFieldReaders.end(), tooShort);
    if (dropFields != m_scalarFieldReaders.end()) {
        m_scalarFieldReaders.erase(dropFields, m_scalarFieldReaders.end());
        m_corruptionStates.scalarFieldsCorrupt = true;
    }
    const auto dropTraces =
        std::remove_if(m_traceReaders.begin(), m_traceReaders.end(), [offered](const std::shared_ptr<I_TraceReader>& reader) {
            try {
                const std::unique_ptr<BufferApi::I_Buffer> probe = CreateScratchBuffer(0);
                BufferApi::C_BufferAttributes sink(probe.get());
                reader->ReadTraces(offered - 1, sink);
                return false;
            } catch (const RTE::Exception&) {
                return true;
            }
        });
    if (dropTraces != m_traceReaders.end()) {
        m_traceReaders.erase(dropTraces, m_traceReaders.end());
        m_corruptionStates.tracesCorrupt = true;
    }
}

} // namespace Private
} // namespace SetApi
