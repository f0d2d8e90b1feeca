#include <SetApi/stream/MaskReader.h>

#include <RTE/PluginRegistry.h>

namespace SetApi {

MaskReader::MaskReader() = default;

MaskReader::~MaskReader() = default;

std::string MaskReader::PluginName() { return "Masks"; }

std::string MaskReader::PluginKey() { return "Core.Set.Recording.MaskFrameReader"; }

RTE::I_Plugin* MaskReader::CreateObject(RTE::I_CreationContext*) { return new MaskReader; }

void MaskReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey(), PluginName(),
                                                        "Reader for 8-bit (bool) mask data.", &CreateObject);
}

void MaskReader::pluginAutoRegister() { pluginRegister(); }

std::string MaskReader::GetPluginName() const { return PluginKey(); }

std::string MaskReader::GetPluginType() const { return PluginName(); }

std::string MaskReader::GetPluginDescription() const { return "Reader for 8-bit (bool) mask data."; }

} // namespace SetApi
