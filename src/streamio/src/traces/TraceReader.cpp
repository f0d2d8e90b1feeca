#include <StreamIO/TraceReader.h>

#include "records/RecordStreamReader.h"
#include "scales/NumberText.h"
#include "traces/TraceRecord.h"

#include <RTE/DeviceData.h>
#include <RTE/Exception.h>
#include <RTE/PluginRegistry.h>

#include <mutex>
#include <vector>

namespace SetApi {

using Private::Traces::Samples;
using Private::Traces::TraceInfo;

const char* const C_TraceReader::PluginKey = "Core.Set.Recording.TraceReader";
const char* const C_TraceReader::PluginName = "TraceReaderV1";
const char* const C_TraceReader::PluginDescription = Private::Traces::FormatDescription;

namespace {

QString ScaleText(double factor, double offset, const RTE::S_Scale& texts)
{
    return Private::FormatNumber(factor) + QLatin1Char('\n') + Private::FormatNumber(offset) + QLatin1Char('\n') +
           texts.unit + QLatin1Char('\n') + texts.description;
}

QString Stem(const char* stem, std::size_t i)
{
    return QString::fromLatin1(stem) + QString::number(i);
}

} // namespace

struct C_TraceReader::State {
    mutable std::mutex mutex;
    Private::Records::RecordStreamReader stream{Private::Traces::StreamFormat()};
    std::vector<TraceInfo> traces;
    std::vector<std::uint8_t> record;
    // The whole traces, read on the first GetTrace.
    std::vector<std::shared_ptr<const C_Trace>> whole;

    std::vector<Samples> Read(std::uint32_t image)
    {
        const auto payload = stream.ReadRecord(image, record);
        return Private::Traces::DecodeRecord(payload.data, payload.bytes, traces.size(), stream.DataLabel(), image);
    }
};

C_TraceReader::C_TraceReader() : m_state(std::make_unique<State>()) {}

C_TraceReader::~C_TraceReader() = default;

RTE::I_Plugin* C_TraceReader::CreateObject(RTE::I_CreationContext*)
{
    return new C_TraceReader();
}

void C_TraceReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey, PluginName, PluginDescription, &CreateObject);
}

std::string C_TraceReader::GetPluginName() const
{
    return PluginKey;
}

std::string C_TraceReader::GetPluginType() const
{
    return PluginName;
}

std::string C_TraceReader::GetPluginDescription() const
{
    return PluginDescription;
}

void C_TraceReader::Open(const QString& destination)
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->traces.clear();
    m_state->whole.clear();
    m_state->stream.Open(destination);
    try {
        m_state->traces = Private::Traces::DecodeHead(m_state->stream.HeadPayload(), m_state->stream.DataLabel());
    } catch (...) {
        // Leave nothing half open behind.
        m_state->stream.Close();
        throw;
    }
}

std::uint32_t C_TraceReader::GetTraceCount() const
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return static_cast<std::uint32_t>(m_state->traces.size());
}

std::shared_ptr<const C_Trace> C_TraceReader::GetTrace(std::uint32_t n) const
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    if (n >= m_state->traces.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "Trace " << n << " requested of a trace stream with "
                                                        << m_state->traces.size() << " traces");
    if (m_state->whole.empty()) {
        std::vector<std::shared_ptr<C_Trace>> whole;
        for (const TraceInfo& info : m_state->traces) {
            auto trace = std::make_shared<C_Trace>();
            trace->name = info.name;
            trace->xScaleUnit = info.x.unit;
            trace->xScaleDescription = info.x.description;
            trace->yScaleUnit = info.y.unit;
            trace->yScaleDescription = info.y.description;
            whole.push_back(std::move(trace));
        }
        // Every sample lies in the file, so the traces take no more memory than the stream's bytes.
        for (std::uint32_t image = 0; image < m_state->stream.RecordCount(); ++image) {
            const std::vector<Samples> samples = m_state->Read(image);
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const TraceInfo& info = m_state->traces[i];
                auto& points = whole[i]->points;
                points.reserve(points.size() + samples[i].size());
                for (const auto& sample : samples[i])
                    points.emplace_back(info.x.Apply(sample.first), info.y.Apply(sample.second));
            }
        }
        m_state->whole.assign(whole.begin(), whole.end());
    }
    return m_state->whole[n];
}

void C_TraceReader::ReadTraces(std::uint32_t image, RTE::I_AttributesSink& sink)
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    const std::vector<Samples> samples = m_state->Read(image);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const TraceInfo& info = m_state->traces[i];
        const Samples& own = samples[i];
        std::vector<double> values;
        values.reserve(own.size());
        for (const auto& sample : own)
            values.push_back(sample.second);

        // The x axis of the values, from sample number to physical x: from the first sample's x to
        // the last one's in equal steps.
        double factor = info.x.factor;
        double offset = info.x.offset;
        if (!own.empty()) {
            offset = info.x.Apply(own.front().first);
            if (own.size() > 1)
                factor = info.x.factor * (own.back().first - own.front().first) / double(own.size() - 1);
        }

        sink.Add(Stem(RTE::DeviceData::DEVDATANAME, i), info.name);
        sink.AddArray(Stem(RTE::DeviceData::DEVDATATRACE, i), values.size(), values.data());
        sink.Add(Stem(RTE::DeviceData::DEVDATASCALEX, i), ScaleText(factor, offset, info.x));
        sink.Add(Stem(RTE::DeviceData::DEVDATASCALEI, i), ScaleText(info.y.factor, info.y.offset, info.y));
    }
}

std::uint32_t C_TraceReader::GetImageCount() const
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->stream.IsOpen() ? m_state->stream.RecordCount() : 0;
}

} // namespace SetApi
