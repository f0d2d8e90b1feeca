// A scale file: C_ScaleReader opened on "<prefix>.scales" from the input, then the scales of the
// first images read.

#include "FuzzTargets.h"

#include <StreamIO/ScaleReader.h>
#include <StreamIO/ScaleWriter.h>

#include <RTE/Scale.h>

#include <algorithm>
#include <limits>

namespace SetApiFuzz {

void RunScaleStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    scratch.Write("Scales1_.scales", data, size);
    SetApi::C_ScaleReader reader;
    bool open = false;
    Guarded([&] {
        reader.Open(QString::fromStdString(scratch.Path("Scales1_")));
        open = true;
    });
    if (!open)
        return;
    (void)reader.GetRecordCount();
    RTE::S_Scale x, y, intensity;
    for (std::uint32_t image : {0u, 1u, 2u, 3u, 100u, std::numeric_limits<std::uint32_t>::max()})
        Guarded([&] { reader.ReadScales(image, x, y, intensity); });
}

std::vector<Bytes> SeedsScaleStream()
{
    std::vector<Bytes> seeds;
    const RTE::S_Scale x(0.1, -3.0, QStringLiteral("mm"), QStringLiteral("X")),
        y(0.1, 2.0, QStringLiteral("mm"), QStringLiteral("Y")),
        intensity(std::numeric_limits<double>::infinity(), 0.0, QStringLiteral("counts"), QStringLiteral("I <&>"));
    {
        Scratch scratch;
        SetApi::C_ScaleWriter writer(QString::fromStdString(scratch.Path("seed")));
        writer.WriteScalesForAllImages(x, y, intensity);
        seeds.push_back(ReadFile(scratch.Path("seed.scales")));
    }
    {
        Scratch scratch;
        SetApi::C_ScaleWriter writer(QString::fromStdString(scratch.Path("seed")));
        writer.AddScalesForImages(0, 1, x, y, intensity);
        writer.AddScalesForImages(2, 5, y, x, RTE::S_Scale(1.0, 0.0, QString(), QString()));
        writer.Close();
        seeds.push_back(ReadFile(scratch.Path("seed.scales")));
    }
    return seeds;
}

} // namespace SetApiFuzz
