#pragma once
// Reads a trace stream written by C_TraceWriter: the plug-in "Core.Set.Recording.TraceReader"
// named "TraceReaderV1". Opening reads the head (names and scales of the traces) and checks the
// last records without scanning the stream; a record cut short by a crash is not counted.
//
// ReadTraces(image, sink) gives, for each trace i (i in decimal after the stem, stems from
// RTE/DeviceData.h):
//   DEVDATANAME + i    the trace's name (text);
//   DEVDATATRACE + i   the raw y values of the image's samples (array of double, in order);
//   DEVDATASCALEX + i  the x axis of these values as a scale text: physical x of value k is
//                      factor * k + offset. Exact for evenly spaced samples; it runs from the
//                      first sample's x to the last one's;
//   DEVDATASCALEI + i  the trace's y scale as a scale text: physical value = factor * raw + offset.
// A scale text is "<factor>\n<offset>\n<unit>\n<description>", numbers in the shortest form that
// reads back exactly ("nan", "inf", "-inf" for those).
//
// GetTrace(n) gives the whole trace: the samples of all images in order, as physical values
// (the scales applied), with the units and descriptions of both scales; it reads the whole stream
// once and keeps the traces. All calls may come from different threads; they are serialised.

#include <StreamIO/I_TraceReader.h>

#include <cstdint>
#include <memory>

namespace RTE {
class I_CreationContext;
}

namespace SetApi {

class STREAMIO_API C_TraceReader : public I_TraceReader {
public:
    static const char* const PluginKey;         // "Core.Set.Recording.TraceReader"
    static const char* const PluginName;        // "TraceReaderV1"
    static const char* const PluginDescription; // the format description

    C_TraceReader();
    ~C_TraceReader() override;

    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers the plug-in with RTE::C_PluginRegistry under key and name. Called by the set
    // library at its load, in its fixed order; never at static initialisation here.
    static void pluginRegister();

    // The key, deliberately: plug-ins of this family answer GetPluginName with their key and
    // GetPluginType with their name.
    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;

    // Opens "<destination>.trc" with its index. RTE::Exception when the stream cannot be read.
    void Open(const QString& destination) override;
    std::uint32_t GetTraceCount() const override;
    // RTE::VerificationFailed for n not below GetTraceCount(); RTE::Exception for a damaged record.
    std::shared_ptr<const C_Trace> GetTrace(std::uint32_t n) const override;
    // RTE::Exception for an image not below GetImageCount() or a damaged record, before the sink
    // sees anything.
    void ReadTraces(std::uint32_t image, RTE::I_AttributesSink& sink) override;
    // The number of complete records; 0 before Open.
    std::uint32_t GetImageCount() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
