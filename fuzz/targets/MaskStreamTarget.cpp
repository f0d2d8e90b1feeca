// A mask stream: MaskReader opened on the two files of an image stream from the input, then every
// frame and plane loaded as bool and in the other element types.

#include "FrameStreams.h"

#include <SetApi/stream/MaskReader.h>
#include <SetApi/stream/MaskWriter.h>

namespace SetApiFuzz {

void RunMaskStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const auto parts = Split(data, size, 2);
    WriteImageStream(scratch, "Mask1_", parts[0], parts[1]);
    SetApi::MaskReader reader;
    OpenAndLoadAll(reader, QString::fromStdString(scratch.Path("Mask1_")));
}

std::vector<Bytes> SeedsMaskStream()
{
    std::vector<Bytes> seeds;
    for (unsigned depth : {1u, 2u}) {
        Scratch scratch;
        SetApi::MaskWriter writer(5, 2, depth, 1);
        writer.Open(QString::fromStdString(scratch.Path("seed")));
        AppendRampImages(writer, 5, 2, depth, 1, SetApi::C_ImageWriter::Mask, 2);
        writer.Close();
        seeds.push_back(ReadImageStream(scratch, "seed"));
    }
    return seeds;
}

} // namespace SetApiFuzz
