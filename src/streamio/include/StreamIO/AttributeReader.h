#pragma once
// Reads an attribute stream written by AttributeWriter: the plug-in
// "Core.Set.Recording.AttributeReader" named "AttributeReaderV1". Opening reads the stream's
// preambles and checks its last records without scanning the stream; a record cut short by a
// crash is not counted. Every length and offset read from a file is checked before it is used.
// One thread at a time.

#include <StreamIO/I_AttributeReader.h>

#include <cstdint>
#include <memory>

namespace RTE {
class I_CreationContext;
}

namespace SetApi {
namespace Private {

class STREAMIO_API C_AttributeReader : public I_AttributeReader {
public:
    static const char* const PluginKey;         // "Core.Set.Recording.AttributeReader"
    static const char* const PluginName;        // "AttributeReaderV1"
    static const char* const PluginDescription; // the format description

    C_AttributeReader();
    ~C_AttributeReader() override;

    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers the plug-in with RTE::C_PluginRegistry under key and name. Called by the set
    // library at its load, in its fixed order; never at static initialisation here.
    static void pluginRegister();

    // The key, deliberately: plug-ins of this family answer GetPluginName with their key and
    // GetPluginType with their name.
    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;

    // Opens "<destination>.attr" with its index. RTE::Exception when the stream cannot be read.
    void Open(const QString& destination) override;
    // Hands the attributes of the image to the sink, in the order they were added. An image not
    // below GetImageCount(), or a damaged record, raises RTE::Exception before the sink sees any
    // of its attributes.
    void ReadAttributes(std::uint32_t image, RTE::I_AttributesSink& sink) override;
    // The number of complete records; 0 before Open.
    std::uint32_t GetImageCount() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace Private
} // namespace SetApi
