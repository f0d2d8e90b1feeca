// A trace stream: C_TraceReader opened on "<prefix>.trc" and "<prefix>.index.trc", the two parts of
// the input; then the traces of every image (and one beyond the end) and every whole trace.

#include "DiscardingSink.h"
#include "FuzzTargets.h"

#include <StreamIO/TraceReader.h>
#include <StreamIO/TraceWriter.h>

#include <algorithm>

namespace SetApiFuzz {

void RunTraceStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const auto parts = Split(data, size, 2);
    scratch.Write("Traces1_.trc", parts[0].data, parts[0].size);
    if (parts[1].size != 0)
        scratch.Write("Traces1_.index.trc", parts[1].data, parts[1].size);
    SetApi::C_TraceReader reader;
    bool open = false;
    Guarded([&] {
        reader.Open(QString::fromStdString(scratch.Path("Traces1_")));
        open = true;
    });
    if (!open)
        return;
    DiscardingSink sink;
    const std::uint32_t images = std::min<std::uint32_t>(reader.GetImageCount(), 64);
    for (std::uint32_t image = 0; image <= images; ++image)
        Guarded([&] { reader.ReadTraces(image, sink); });
    const std::uint32_t traces = std::min<std::uint32_t>(reader.GetTraceCount(), 16);
    for (std::uint32_t trace = 0; trace <= traces; ++trace)
        Guarded([&] {
            const auto whole = reader.GetTrace(trace);
            if (!whole)
                Fail("a trace below the trace count is null");
        });
}

std::vector<Bytes> SeedsTraceStream()
{
    Scratch scratch;
    SetApi::C_TraceWriter writer;
    writer.Open(QString::fromStdString(scratch.Path("seed")));
    for (unsigned trace = 0; trace < 2; ++trace)
        writer.AddTrace(QStringLiteral("Channel%1").arg(trace),
                        RTE::S_Scale(1.0, 0.0, QStringLiteral("ms"), QStringLiteral("Time")),
                        RTE::S_Scale(0.5, 1.0, QStringLiteral("V"), QStringLiteral("Voltage \u00b1")));
    for (unsigned image = 0; image < 3; ++image) {
        std::vector<SetApi::C_TraceWriter::Samples> samples(2);
        for (unsigned trace = 0; trace < 2; ++trace)
            for (unsigned sample = 0; sample < 3 + trace; ++sample)
                samples[trace].push_back({image + sample * 0.125, trace * 10.0 + sample});
        writer.AppendImage(samples);
    }
    writer.Close();
    return {Join({ReadFile(scratch.Path("seed.trc")), ReadFile(scratch.Path("seed.index.trc"))})};
}

} // namespace SetApiFuzz
