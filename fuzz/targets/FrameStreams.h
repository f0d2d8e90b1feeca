#pragma once
// What the image, mask and scalar field stream targets share: the files of one image stream taken
// from a split input, loading every frame and plane of an opened reader in every element type, and
// seed streams written by the library's image writers.

#include "FuzzTargets.h"

#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/ImageWriter.h>

#include <QString>

namespace SetApiFuzz {

// Writes the two files of an image stream at scratch/<prefix> from two parts of the input.
void WriteImageStream(const Scratch& scratch, const std::string& prefix, const Part& stream, const Part& index);

// Opens the reader at `destination` and loads, within fixed limits of count and size, every frame
// and plane of every image in every element type. Each load may fail as documented.
void OpenAndLoadAll(SetApi::I_ImageFrameReader& reader, const QString& destination);

// Appends `images` images of ramp values to an open writer of that shape and element type.
void AppendRampImages(SetApi::C_ImageWriter& writer, unsigned width, unsigned height, unsigned depth,
                      unsigned framesPerImage, SetApi::C_ImageWriter::E_BitsPerPixel bits, unsigned images);

// The two files of the stream at scratch/<prefix>, joined as the image stream targets take them.
Bytes ReadImageStream(const Scratch& scratch, const std::string& prefix);

} // namespace SetApiFuzz
