#pragma once
// Reads a mask stream written by MaskWriter: the plug-in "Masks" of the key
// "Core.Set.Recording.MaskFrameReader". It is the image stream reader under another plug-in name;
// frames load as bool (one byte per element), or converted into the other element types.

#include <SetApi/Export.h>

#include <StreamIO/ImageReader.h>

#include <string>

namespace SetApi {

class SETAPI_API MaskReader : public C_ImageReader {
public:
    MaskReader();
    ~MaskReader() override;

    // "Masks", the name within the key.
    static std::string PluginName();
    // "Core.Set.Recording.MaskFrameReader".
    static std::string PluginKey();
    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers key, name, description and CreateObject with RTE::C_PluginRegistry; registering
    // again replaces the entry in place.
    static void pluginRegister();
    // The same as pluginRegister; harmless when the library has registered the plug-in already.
    static void pluginAutoRegister();

    // GetPluginName gives the key and GetPluginType the name, as every reader plug-in does.
    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;
};

} // namespace SetApi
