#pragma once
// Reads a scale file written by C_ScaleWriter: the plug-in "Core.Set.Recording.ScaleReader" named
// "ScaleReaderV1". Open reads the whole file, which is small, and keeps its records; the records
// that pass their checks up to the first one that does not are used (a record cut short by a
// crash is not counted). One thread at a time.

#include <StreamIO/I_ScaleReader.h>

#include <cstdint>
#include <memory>

namespace RTE {
class I_CreationContext;
}

namespace SetApi {

class STREAMIO_API C_ScaleReader : public I_ScaleReader {
public:
    static const char* const PluginKey;         // "Core.Set.Recording.ScaleReader"
    static const char* const PluginName;        // "ScaleReaderV1"
    static const char* const PluginDescription; // the format description

    C_ScaleReader();
    ~C_ScaleReader() override;

    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers the plug-in with RTE::C_PluginRegistry under key and name. Called by the set
    // library at its load, in its fixed order; never at static initialisation here.
    static void pluginRegister();

    // The key, deliberately: plug-ins of this family answer GetPluginName with their key and
    // GetPluginType with their name.
    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;

    // Reads "<destination>.scales". RTE::Exception when it cannot be read, is damaged, or holds
    // no complete record.
    void Open(const QString& destination) override;
    // The scales of the last record whose range holds the image; the identity scales (factor 1,
    // offset 0, empty texts) when no record does. RTE::VerificationFailed before Open.
    void ReadScales(std::uint32_t image, RTE::S_Scale& x, RTE::S_Scale& y, RTE::S_Scale& intensity) override;
    // The number of records read.
    std::uint32_t GetRecordCount() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
