#pragma once
// Writes stream sets for tests with the stream components directly, stream by stream, so that
// tests can build healthy recordings and damage them afterwards. Every value written follows the
// functions below, so a test can check each load against them. No GoogleTest here: the tool tests
// build their recordings with the same code.

#include <StreamIO/ImageWriter.h>
#include <StreamIO/ReaderConfiguration.h>

#include <RTE/Scale.h>

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace SetApi {
class I_Set;
}

namespace StreamSetTesting {

// Pixel (x, y) of plane `plane` of frame `frame` in image `image`. Never 0, so that the zeroes
// that widening adds can be told apart from pixels.
std::uint16_t PixelValue(unsigned frame, unsigned image, unsigned plane, unsigned x, unsigned y);
// The mask of the pixel: a checkerboard that moves with the image.
bool MaskValue(unsigned frame, unsigned image, unsigned x, unsigned y);
// The value of a scalar field at the pixel (an integer value in word streams).
double ScalarValue(unsigned frame, unsigned image, unsigned x, unsigned y);
// Sample `sample` of trace `trace` in image `image`, as (position, value).
std::pair<double, double> TraceSample(unsigned trace, unsigned image, unsigned sample);
// The text attribute of a frame stream's records, and the global one.
QString FrameAttributeText(unsigned frame, unsigned image);
QString GlobalAttributeText(unsigned image);

class StreamSetBuilder {
public:
    // `name` is the set's name: the path of its folder, which is created, without ".set".
    explicit StreamSetBuilder(const std::string& name);

    const std::string& Name() const { return m_name; }
    QString ConfigurationPath() const;

    // Each Add writes one complete stream and adds its entry to the configuration; it returns the
    // stream's file prefix. Frames are numbered in the order cameras are added, from 0.
    QString AddCamera(unsigned width, unsigned height, unsigned images,
                      SetApi::C_ImageWriter::E_BitsPerPixel bits = SetApi::C_ImageWriter::Word, unsigned depth = 1);
    QString AddMask(unsigned frame, unsigned width, unsigned height, unsigned images, unsigned depth = 1);
    QString AddScalarField(unsigned frame, const QString& fieldName, SetApi::C_ImageWriter::E_BitsPerPixel bits,
                           const RTE::S_Scale& scale, unsigned width, unsigned height, unsigned images);
    QString AddScales(unsigned frame, const RTE::S_Scale& x, const RTE::S_Scale& y, const RTE::S_Scale& intensity);
    // Per image the text "Exposure" = FrameAttributeText and the int array "Window" = {frame, image}.
    QString AddFrameAttributes(unsigned frame, unsigned images);
    // Per image the text "Counter" = GlobalAttributeText.
    QString AddGlobalAttributes(unsigned images);
    // `traces` traces named "Channel<t>", each with `samplesPerImage` samples per image.
    QString AddTraces(unsigned traces, unsigned images, unsigned samplesPerImage);
    // Any entry as it stands, for configurations of odd shape.
    void AddEntry(const SetApi::Private::C_ReaderInfo& info);
    const SetApi::Private::C_ReaderConfiguration& Configuration() const { return m_configuration; }

    // Writes the configuration and the set file (with "SetIdentifier" "StreamSet" and the type).
    void Finish(int setType = 0x1000);

    // The files of a stream in the folder, by prefix.
    std::vector<std::string> FilesOf(const QString& prefix) const;
    // Removes the files of a stream.
    void RemoveStream(const QString& prefix) const;

private:
    QString Destination(const QString& prefix) const;
    QString NextPrefix(const char* kind);

    std::string m_name;
    SetApi::Private::C_ReaderConfiguration m_configuration;
    unsigned m_cameras = 0;
    unsigned m_streams = 0;
};

// Empty when the set offers exactly `images` images whose frames 0 .. frames - 1 hold, in their top
// left width x height pixels of plane 0, the word pixels of cameras added with AddCamera;
// otherwise what differs first. For any kind of set, so that a recording converted to a plain set
// can be checked the same way.
std::string CompareCameraImages(const SetApi::I_Set& set, unsigned images, unsigned frames, unsigned width,
                                unsigned height);

// Plain file surgery for damaging streams.
std::uint64_t FileSize(const std::string& path);
void TruncateFile(const std::string& path, std::uint64_t size);
// Inverts the bits of the byte at the offset.
void FlipByte(const std::string& path, std::uint64_t offset);

} // namespace StreamSetTesting
