#pragma once
// The reader of a trace stream: the analogue traces recorded beside the images, each a list of
// (x, y) points with a scale for each axis, and per image the trace values that belong to it.

#include <StreamIO/Export.h>

#include <RTE/AttributesSink.h>
#include <RTE/Plugin.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace SetApi {

// One whole trace. Points are (x, y): x the time or angle axis, y the value.
class STREAMIO_API C_Trace {
public:
    std::size_t GetLength() const { return points.size(); }

    QString name;
    std::vector<std::pair<double, double>> points;
    // The unit and description of the x axis and of the value axis.
    QString xScaleUnit;
    QString xScaleDescription;
    QString yScaleUnit;
    QString yScaleDescription;
};

class STREAMIO_API I_TraceReader : public RTE::I_Plugin {
public:
    ~I_TraceReader() override;

    // Raises RTE::Exception when the stream cannot be read or is damaged.
    virtual void Open(const QString& destination) = 0;
    virtual std::uint32_t GetTraceCount() const = 0;
    // Trace n, n below GetTraceCount(); RTE::VerificationFailed otherwise.
    virtual std::shared_ptr<const C_Trace> GetTrace(std::uint32_t n) const = 0;
    // Hands the traces that belong to the image to the sink: for trace i the attribute named
    // RTE::DeviceData::DEVDATANAME followed by i (the trace's name), and beside it the values and
    // scales under the other RTE::DeviceData stems followed by i. Raises RTE::Exception for an
    // image the stream does not hold.
    virtual void ReadTraces(std::uint32_t image, RTE::I_AttributesSink& sink) = 0;
};

} // namespace SetApi
