// Analogue traces: those of one image as buffer attributes, and all of the recording as one buffer.

#include <SetApi/stream/StreamSetReader.h>

#include <StreamIO/I_TraceReader.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <RTE/DeviceData.h>
#include <RTE/Exception.h>

#include <algorithm>
#include <limits>
#include <string>

namespace SetApi {
namespace Private {

bool StreamSetReader::HasFullTraces() const { return !m_traceReaders.empty(); }

void StreamSetReader::ReadTraces(unsigned image, BufferApi::I_Buffer& buffer) const
{
    if (m_traceReaders.empty())
        return;
    BufferApi::C_BufferAttributes sink(&buffer);
    for (const auto& reader : m_traceReaders)
        reader->ReadTraces(image, sink);
    // The number of traces is the first index without a trace name.
    const std::string nameStem = RTE::DeviceData::DEVDATANAME;
    for (unsigned i = 0;; ++i) {
        if (sink.Get(nameStem + std::to_string(i)) == nullptr) {
            sink.SetString(RTE::DeviceData::DEVDATASOURCE, std::to_string(i));
            break;
        }
    }
}

std::unique_ptr<BufferApi::I_Buffer> StreamSetReader::LoadFullTracesBuffer() const
{
    RTE_VERIFY(!m_traceReaders.empty(), "No traces available.");
    std::vector<std::shared_ptr<const C_Trace>> traces;
    std::size_t longest = 0;
    for (const auto& reader : m_traceReaders) {
        const std::uint32_t count = reader->GetTraceCount();
        for (std::uint32_t n = 0; n < count; ++n) {
            std::shared_ptr<const C_Trace> trace = reader->GetTrace(n);
            if (!trace)
                continue;
            longest = std::max(longest, trace->GetLength());
            traces.push_back(std::move(trace));
        }
    }
    RTE_VERIFY(!traces.empty() && longest > 0, "Trace length is 0.");
    RTE_VERIFY(longest <= std::numeric_limits<unsigned>::max(), "Could not create image frame.");

    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    BufferApi::C_ScaleFactory& scales = BufferApi::C_ScaleFactory::GetInstance();
    for (const auto& trace : traces) {
        std::unique_ptr<BufferApi::I_FrameImage> frame;
        try {
            frame.reset(BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, unsigned(longest), 2, 1));
        } catch (const RTE::Exception&) {
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Could not create image frame."));
        }
        // Row 0 the values, row 1 their positions; a shorter trace leaves the rest of its rows zero.
        auto* values = static_cast<float*>(frame->GetPixelPlane(0)->GetData());
        float* positions = values + longest;
        for (std::size_t i = 0; i < trace->points.size(); ++i) {
            values[i] = static_cast<float>(trace->points[i].second);
            positions[i] = static_cast<float>(trace->points[i].first);
        }
        frame->SetScale(BufferApi::SCALE_X,
                        std::unique_ptr<BufferApi::I_Scale>(scales.CreateLinearScale(
                            1.0, 0.0, trace->xScaleUnit.toStdString(), trace->xScaleDescription.toStdString())));
        frame->SetScale(BufferApi::SCALE_I,
                        std::unique_ptr<BufferApi::I_Scale>(scales.CreateLinearScale(
                            1.0, 0.0, trace->yScaleUnit.toStdString(), trace->yScaleDescription.toStdString())));
        buffer->AddFrame(std::move(frame));
    }
    return buffer;
}

} // namespace Private
} // namespace SetApi
