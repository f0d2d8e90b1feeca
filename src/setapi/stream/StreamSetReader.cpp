// The stream set reader's life and the questions it answers from what opening found.

#include <SetApi/stream/StreamSetReader.h>

#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>

#include <RTE/Exception.h>

namespace SetApi {
namespace Private {

StreamSetReader::StreamSetReader(const QString& configurationPath) : StreamSetReader(configurationPath, Options()) {}

StreamSetReader::StreamSetReader(const QString& configurationPath, const Options& options)
    : m_configurationPath(configurationPath), m_options(options)
{
    Open();
}

StreamSetReader::~StreamSetReader() = default;

std::uint32_t StreamSetReader::GetImageCount() const { return m_imageCount; }

void StreamSetReader::CheckImageIndex(unsigned image) const
{
    RTE_VERIFY(image < m_imageCount, "Invalid image index");
}

bool StreamSetReader::IsCorrupt() const
{
    const CorruptionStates& states = m_corruptionStates;
    return states.minImageCount != states.maxImageCount || states.globalAttributesCorrupt ||
           !states.corruptAttributeFrames.empty() || states.scalesCorrupt || states.tracesCorrupt ||
           states.masksCorrupt || states.scalarFieldsCorrupt;
}

const StreamSetReader::CorruptionStates& StreamSetReader::GetCorruptionStates() const { return m_corruptionStates; }

bool StreamSetReader::HasBeenRepaired() const { return m_configuration.HasBeenRepaired(); }

QString StreamSetReader::GetDetailsOfRepair() const { return m_configuration.GetDetailsOfRepair(); }

DataObjects::BufferStructureInformation StreamSetReader::GetBufferStructureInformation(unsigned image) const
{
    CheckImageIndex(image);
    DataObjects::BufferStructureInformation information;
    information.frameCount = m_frameCount;
    information.depth = m_frameDepth;
    information.width = m_frameWidth;
    information.height = m_frameHeight;
    // Word whatever the streams hold: the answer is about layout, and callers must not take the
    // element type from it.
    information.dataType = BufferApi::DATATYPE_WORD;
    information.isImage = true;
    return information;
}

} // namespace Private
} // namespace SetApi
