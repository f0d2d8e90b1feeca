// An image stream: C_ImageReader opened on "<prefix>.ims" and "<prefix>.index.ims" from the two
// parts of the input, then every frame and plane of every image loaded in every element type.

#include "FrameStreams.h"

#include <StreamIO/ImageReader.h>

namespace SetApiFuzz {

using SetApi::C_ImageWriter;

void RunImageStream(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const auto parts = Split(data, size, 2);
    WriteImageStream(scratch, "Camera1_", parts[0], parts[1]);
    SetApi::C_ImageReader reader;
    OpenAndLoadAll(reader, QString::fromStdString(scratch.Path("Camera1_")));
}

std::vector<Bytes> SeedsImageStream()
{
    struct Shape {
        C_ImageWriter::E_BitsPerPixel bits;
        const char* compression;
        unsigned depth;
        unsigned framesPerImage;
        bool checksums;
    };
    const Shape shapes[] = {
        {C_ImageWriter::Word, "", 1, 1, true},      {C_ImageWriter::Word, "Zlib", 1, 2, true},
        {C_ImageWriter::Word, "IMX", 2, 1, true},   {C_ImageWriter::Float, "Zlib", 1, 1, true},
        {C_ImageWriter::Double, "IMX", 1, 1, true}, {C_ImageWriter::Byte, "", 1, 1, false},
        {C_ImageWriter::Word, "IMX", 1, 1, false},
    };
    std::vector<Bytes> seeds;
    for (const Shape& shape : shapes) {
        Scratch scratch;
        C_ImageWriter writer(4, 3, shape.depth, shape.framesPerImage, shape.bits, QString::fromLatin1(shape.compression));
        writer.SetPixelChecksums(shape.checksums);
        writer.Open(QString::fromStdString(scratch.Path("seed")));
        AppendRampImages(writer, 4, 3, shape.depth, shape.framesPerImage, shape.bits, 2);
        writer.Close();
        seeds.push_back(ReadImageStream(scratch, "seed"));
    }
    return seeds;
}

} // namespace SetApiFuzz
