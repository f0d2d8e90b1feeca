#include <StreamIO/AttributeReader.h>

#include "attributes/AttributeRecord.h"
#include "records/RecordStreamReader.h"

#include <RTE/PluginRegistry.h>

#include <vector>

namespace SetApi {
namespace Private {

const char* const C_AttributeReader::PluginKey = "Core.Set.Recording.AttributeReader";
const char* const C_AttributeReader::PluginName = "AttributeReaderV1";
const char* const C_AttributeReader::PluginDescription = Attributes::FormatDescription;

struct C_AttributeReader::State {
    Records::RecordStreamReader stream{Attributes::StreamFormat()};
    std::vector<std::uint8_t> record;
};

C_AttributeReader::C_AttributeReader() : m_state(std::make_unique<State>()) {}

C_AttributeReader::~C_AttributeReader() = default;

RTE::I_Plugin* C_AttributeReader::CreateObject(RTE::I_CreationContext*)
{
    return new C_AttributeReader();
}

void C_AttributeReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey, PluginName, PluginDescription, &CreateObject);
}

std::string C_AttributeReader::GetPluginName() const
{
    return PluginKey;
}

std::string C_AttributeReader::GetPluginType() const
{
    return PluginName;
}

std::string C_AttributeReader::GetPluginDescription() const
{
    return PluginDescription;
}

void C_AttributeReader::Open(const QString& destination)
{
    m_state->stream.Open(destination);
}

void C_AttributeReader::ReadAttributes(std::uint32_t image, RTE::I_AttributesSink& sink)
{
    const auto payload = m_state->stream.ReadRecord(image, m_state->record);
    Attributes::DecodeAttributes(payload.data, payload.bytes, m_state->stream.DataLabel(), image, sink);
}

std::uint32_t C_AttributeReader::GetImageCount() const
{
    return m_state->stream.IsOpen() ? m_state->stream.RecordCount() : 0;
}

} // namespace Private
} // namespace SetApi
