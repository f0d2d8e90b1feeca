#include <SetApi/stream/MaskReader.h>
#include <SetApi/stream/MaskWriter.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using SetApi::C_ImageReader;
using SetApi::MaskReader;
using SetApi::MaskWriter;
using TestSupport::TempDir;

TEST(MaskStreamTest, WriterAndReaderNames)
{
    const MaskWriter writer(4, 3, 2);
    EXPECT_EQ(QString("Core.Set.Recording.MaskFrameReader"), writer.GetCorrespondingReaderType());
    EXPECT_EQ(QString("Masks"), writer.GetCorrespondingReaderName());
    EXPECT_EQ(QString("Qualmora mask stream format"), writer.GetFormatDescription());
    EXPECT_EQ(SetApi::C_ImageWriter::Mask, writer.GetBitsPerPixel());
    EXPECT_EQ(1u, writer.GetFramesPerImage());

    const MaskReader reader;
    EXPECT_EQ("Masks", MaskReader::PluginName());
    // The key is the plug-in's "name" and the name its "type".
    EXPECT_EQ("Core.Set.Recording.MaskFrameReader", reader.GetPluginName());
    EXPECT_EQ("Masks", reader.GetPluginType());
    EXPECT_EQ("Reader for 8-bit (bool) mask data.", reader.GetPluginDescription());
}

TEST(MaskStreamTest, MasksRoundTripThroughTheReader)
{
    TempDir dir;
    const QString destination = QString::fromStdString(dir / "Mask0");
    const unsigned width = 7, height = 5, size = width * height, images = 3;
    const auto maskOf = [&](unsigned image) {
        std::vector<std::uint8_t> mask(size);
        for (unsigned k = 0; k < size; ++k)
            mask[k] = static_cast<std::uint8_t>((k + image) % 3 == 0);
        return mask;
    };
    {
        MaskWriter writer(width, height, 1, 1);
        writer.Open(destination);
        for (unsigned i = 0; i < images; ++i)
            writer.AppendFramesOfOneImage(maskOf(i).data());
        writer.Close();
    }

    MaskReader reader;
    reader.Open(destination);
    EXPECT_EQ(width, reader.GetFrameWidth());
    EXPECT_EQ(height, reader.GetFrameHeight());
    EXPECT_EQ(images, reader.GetImageCount());
    EXPECT_TRUE(reader.IsDataConsistent());

    // The same data type answers as the image stream reader gives for the stream.
    C_ImageReader image;
    image.Open(destination);
    EXPECT_TRUE(reader.IsBoolData());
    EXPECT_EQ(image.IsBoolData(), reader.IsBoolData());
    EXPECT_EQ(image.IsWordData(), reader.IsWordData());
    EXPECT_EQ(image.IsFloatData(), reader.IsFloatData());
    EXPECT_EQ(image.IsDoubleData(), reader.IsDoubleData());

    for (unsigned i = 0; i < images; ++i) {
        const std::vector<std::uint8_t> expected = maskOf(i);
        bool loaded[size];
        reader.LoadPlane(i, 0, 0, loaded);
        float converted[size];
        reader.LoadFrame(i, 0, converted);
        for (unsigned k = 0; k < size; ++k) {
            EXPECT_EQ(expected[k] != 0, loaded[k]) << "image " << i << " element " << k;
            EXPECT_EQ(float(expected[k]), converted[k]);
        }
    }
}
