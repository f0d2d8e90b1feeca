#include "traces/TraceRecord.h"

#include "records/ScaleCoding.h"

namespace SetApi {
namespace Private {
namespace Traces {

using Records::ByteReader;
using Records::ByteWriter;

const char* const FormatDescription =
    "Trace stream 1.0: named analogue traces with x and y scales, per image one checksummed record of "
    "their samples, found through an index";

const Records::StreamFormat& StreamFormat()
{
    static const Records::StreamFormat format{Records::MakeMagic('T', 'R'), Records::MakeMagic('T', 'X'),
                                              QStringLiteral("trc"), QStringLiteral("Trace stream"),
                                              QStringLiteral("trace stream")};
    return format;
}

std::vector<std::uint8_t> EncodeHead(const std::vector<TraceInfo>& traces)
{
    std::vector<std::uint8_t> head;
    ByteWriter out(head);
    out.U32(static_cast<std::uint32_t>(traces.size()));
    for (const TraceInfo& trace : traces) {
        out.Str(trace.name.toUtf8());
        Records::WriteScale(out, trace.x);
        Records::WriteScale(out, trace.y);
    }
    return head;
}

std::vector<TraceInfo> DecodeHead(const std::vector<std::uint8_t>& head, const Records::StreamLabel& label)
{
    ByteReader in(head.data(), head.size(), label, QStringLiteral("head"));
    const std::uint32_t count = in.U32();
    if (count > in.Remaining() / (4 + 2 * Records::kMinScaleBytes))
        in.Corrupt(QStringLiteral("%1 traces cannot fit in %2 bytes").arg(count).arg(in.Remaining()));
    std::vector<TraceInfo> traces(count);
    for (TraceInfo& trace : traces) {
        trace.name = in.Str();
        trace.x = Records::ReadScale(in);
        trace.y = Records::ReadScale(in);
    }
    return traces;
}

void EncodeRecord(const std::vector<Samples>& samplesPerTrace, std::vector<std::uint8_t>& payload)
{
    ByteWriter out(payload);
    out.U32(static_cast<std::uint32_t>(samplesPerTrace.size()));
    for (const Samples& samples : samplesPerTrace) {
        out.U32(static_cast<std::uint32_t>(samples.size()));
        for (const auto& sample : samples) {
            out.F64(sample.first);
            out.F64(sample.second);
        }
    }
}

std::vector<Samples> DecodeRecord(const std::uint8_t* payload, std::size_t bytes, std::size_t traces,
                                  const Records::StreamLabel& label, std::uint32_t image)
{
    ByteReader in(payload, bytes, label, QStringLiteral("record of image %1").arg(image));
    const std::uint32_t count = in.U32();
    if (count != traces)
        in.Corrupt(QStringLiteral("%1 traces where the head names %2").arg(count).arg(traces));
    std::vector<Samples> result(count);
    for (Samples& samples : result) {
        const std::uint32_t n = in.U32();
        ByteReader values(in.TakeElements(n, 16, "samples"), std::size_t(n) * 16, label, QString());
        samples.resize(n);
        for (auto& sample : samples) {
            sample.first = values.F64();
            sample.second = values.F64();
        }
    }
    return result;
}

} // namespace Traces
} // namespace Private
} // namespace SetApi
