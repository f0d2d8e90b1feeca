// An attribute stream: C_AttributeReader opened on "<prefix>.attr" and "<prefix>.index.attr", the
// two parts of the input, then the attributes of every image (and one beyond the end) read.

#include "DiscardingSink.h"
#include "FuzzTargets.h"

#include <StreamIO/AttributeReader.h>
#include <StreamIO/AttributeWriter.h>

#include <algorithm>

namespace SetApiFuzz {

void RunAttributeStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const auto parts = Split(data, size, 2);
    scratch.Write("Attributes1_.attr", parts[0].data, parts[0].size);
    if (parts[1].size != 0)
        scratch.Write("Attributes1_.index.attr", parts[1].data, parts[1].size);
    SetApi::Private::C_AttributeReader reader;
    bool open = false;
    Guarded([&] {
        reader.Open(QString::fromStdString(scratch.Path("Attributes1_")));
        open = true;
    });
    if (!open)
        return;
    DiscardingSink sink;
    const std::uint32_t images = std::min<std::uint32_t>(reader.GetImageCount(), 64);
    for (std::uint32_t image = 0; image <= images; ++image)
        Guarded([&] { reader.ReadAttributes(image, sink); });
}

std::vector<Bytes> SeedsAttributeStream()
{
    Scratch scratch;
    SetApi::AttributeWriter writer;
    writer.Open(QString::fromStdString(scratch.Path("seed")));
    for (unsigned image = 0; image < 3; ++image) {
        writer.Add(QStringLiteral("Exposure"), QStringLiteral("frame %1 \u00b5s").arg(image));
        const int window[2] = {int(image), -4};
        writer.AddArray(QStringLiteral("Window"), 2, window);
        const double times[1] = {image * 0.25};
        writer.AddArray(QStringLiteral("Time"), 1, times);
        const float gains[2] = {1.0f, 2.5f};
        writer.AddArray(QStringLiteral("Gain"), 2, gains);
        const unsigned short counts[3] = {1, 2, 65535};
        writer.AddArray(QStringLiteral("Counts"), 3, counts);
        writer.NextImage();
    }
    writer.NextImage();
    writer.Close();
    return {Join({ReadFile(scratch.Path("seed.attr")), ReadFile(scratch.Path("seed.index.attr"))})};
}

} // namespace SetApiFuzz
