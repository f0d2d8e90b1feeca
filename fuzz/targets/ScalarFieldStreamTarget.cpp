// A scalar field stream: C_ScalarFieldReader opened on its head file "<prefix>-0.sfn" and the two
// files of its image stream, the three parts of the input; then name, scale and every frame.

#include "FrameStreams.h"

#include <SetApi/stream/ScalarFieldReader.h>
#include <SetApi/stream/ScalarFieldWriter.h>

#include <RTE/Scale.h>

namespace SetApiFuzz {

void RunScalarFieldStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const auto parts = Split(data, size, 3);
    scratch.Write("Field1_-0.sfn", parts[0].data, parts[0].size);
    WriteImageStream(scratch, "Field1_", parts[1], parts[2]);
    SetApi::C_ScalarFieldReader reader;
    OpenAndLoadAll(reader, QString::fromStdString(scratch.Path("Field1_")));
    (void)reader.GetNameOfScalarField();
    (void)reader.GetIntensityScale();
}

std::vector<Bytes> SeedsScalarFieldStream()
{
    using W = SetApi::C_ImageWriter;
    std::vector<Bytes> seeds;
    for (W::E_BitsPerPixel bits : {W::Word, W::Float, W::Double}) {
        Scratch scratch;
        SetApi::ScalarFieldWriter writer(3, 3, 1, 1, bits, QStringLiteral("Vorticity <\"w\">"),
                                         RTE::S_Scale(0.5, -1.0, QStringLiteral("1/s"), QStringLiteral("Vorticity")));
        const std::string destination = scratch.Path("seed");
        writer.Open(QString::fromStdString(destination));
        AppendRampImages(writer, 3, 3, 1, 1, bits, 2);
        writer.Close();
        seeds.push_back(Join({ReadFile(destination + "-0.sfn"), ReadFile(destination + ".ims"),
                              ReadFile(destination + ".index.ims")}));
    }
    return seeds;
}

} // namespace SetApiFuzz
