#pragma once
// Writing image streams with known pixels and checking what a reader gives back, for the image
// stream tests.

#include <StreamIO/ImageReader.h>
#include <StreamIO/ImageWriter.h>

#include <QString>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ImageStreamTest {

using Bits = SetApi::C_ImageWriter::E_BitsPerPixel;

struct Shape {
    unsigned width = 16;
    unsigned height = 8;
    unsigned depth = 1;
    unsigned framesPerImage = 1;
    Bits bits = Bits::Word;
    QString compression;

    unsigned ElementSize() const;
    std::size_t PlaneBytes() const { return std::size_t(width) * height * ElementSize(); }
    unsigned Planes() const { return depth * framesPerImage; }
};

std::string Describe(const Shape& shape);

// The bytes of plane `plane` (frame * depth + plane in frame) of image `image`: smooth ramps
// with noise, masks of 0 and 1, and for float and double also NaNs with payloads, infinities and
// -0.0, all depending on image and plane.
std::vector<std::uint8_t> PlaneBytes(const Shape& shape, std::uint32_t image, std::uint32_t plane);

// Appends images from..to-1 (depth 1 through AppendFramesOfOneImage, else AppendPlanesOfOneImage).
void AppendImages(SetApi::C_ImageWriter& writer, const Shape& shape, std::uint32_t from, std::uint32_t to);
// Writes `images` images at the destination and closes the writer.
void WriteStream(const QString& destination, const Shape& shape, std::uint32_t images);

// Loads every plane of the image into targets of the stream's own type and compares byte for
// byte; the failure names image and plane.
::testing::AssertionResult ImageMatches(SetApi::C_ImageReader& reader, const Shape& shape, std::uint32_t image);

// The file as bytes, and bytes written back as a file.
std::string Bytes(const std::string& path);
void Put(const std::string& path, const std::string& bytes);

} // namespace ImageStreamTest
