#include "FrameStreams.h"

#include <cstring>

namespace SetApiFuzz {

namespace {

// Loads beyond these are skipped: the targets look for faults, not for memory or time.
constexpr std::uint32_t kMaxImages = 8;
constexpr std::uint32_t kMaxFrames = 4;
constexpr std::uint32_t kMaxPlanes = 4;
constexpr std::uint64_t kMaxFrameElements = 1u << 20;

template <class T>
void LoadEverything(SetApi::I_ImageFrameReader& reader, std::uint32_t images, std::uint32_t frames,
                    std::uint32_t planes, std::size_t planeElements)
{
    std::vector<T> target(planeElements * planes);
    for (std::uint32_t image = 0; image < images; ++image)
        for (std::uint32_t frame = 0; frame < frames; ++frame) {
            Guarded([&] { reader.LoadFrame(image, frame, target.data()); });
            for (std::uint32_t plane = 0; plane < planes; ++plane)
                Guarded([&] { reader.LoadPlane(image, plane, frame, target.data()); });
        }
}

} // namespace

void WriteImageStream(const Scratch& scratch, const std::string& prefix, const Part& stream, const Part& index)
{
    scratch.Write(prefix + ".ims", stream.data, stream.size);
    if (index.size != 0)
        scratch.Write(prefix + ".index.ims", index.data, index.size);
}

void OpenAndLoadAll(SetApi::I_ImageFrameReader& reader, const QString& destination)
{
    bool open = false;
    Guarded([&] {
        reader.Open(destination);
        open = true;
    });
    if (!open)
        return;
    const std::uint64_t planeElements = std::uint64_t(reader.GetFrameWidth()) * reader.GetFrameHeight();
    const std::uint32_t depth = reader.GetFrameDepth();
    (void)reader.IsDataConsistent();
    (void)reader.IsWordData();
    (void)reader.IsFloatData();
    (void)reader.IsDoubleData();
    (void)reader.IsBoolData();
    if (planeElements == 0 || depth == 0 || depth > kMaxPlanes || planeElements * depth > kMaxFrameElements)
        return;
    const std::uint32_t images = std::min(reader.GetImageCount(), kMaxImages);
    // One frame and one image beyond the ends, which must be refused cleanly.
    const std::uint32_t frames = std::min(reader.GetFramesPerImageCount(), kMaxFrames) + 1;
    LoadEverything<std::uint16_t>(reader, images + 1, frames, depth, std::size_t(planeElements));
    LoadEverything<float>(reader, images, frames, depth, std::size_t(planeElements));
    LoadEverything<double>(reader, images, frames, depth, std::size_t(planeElements));
    std::vector<char> flags(std::size_t(planeElements) * depth);
    for (std::uint32_t image = 0; image < images; ++image)
        for (std::uint32_t frame = 0; frame < frames; ++frame) {
            // bool targets are filled through a byte buffer: any byte the reader writes must be 0 or 1.
            Guarded([&] { reader.LoadFrame(image, frame, reinterpret_cast<bool*>(flags.data())); });
            for (std::uint32_t plane = 0; plane < depth; ++plane)
                Guarded([&] { reader.LoadPlane(image, plane, frame, reinterpret_cast<bool*>(flags.data())); });
        }
}

void AppendRampImages(SetApi::C_ImageWriter& writer, unsigned width, unsigned height, unsigned depth,
                      unsigned framesPerImage, SetApi::C_ImageWriter::E_BitsPerPixel bits, unsigned images)
{
    using W = SetApi::C_ImageWriter;
    const std::size_t elementSize = bits == W::Double ? 8 : bits == W::Float ? 4 : (bits == W::Word ? 2 : 1);
    const std::size_t planeElements = std::size_t(width) * height;
    for (unsigned image = 0; image < images; ++image) {
        std::vector<std::vector<std::uint8_t>> planes(depth,
                                                      std::vector<std::uint8_t>(planeElements * framesPerImage * elementSize));
        for (unsigned p = 0; p < depth; ++p)
            for (std::size_t i = 0; i < planeElements * framesPerImage; ++i) {
                const unsigned value = unsigned(1 + (i * 3 + p * 5 + image * 7) % 200);
                std::uint8_t* at = planes[p].data() + i * elementSize;
                if (bits == W::Double) {
                    const double v = value;
                    std::memcpy(at, &v, 8);
                } else if (bits == W::Float) {
                    const float v = float(value);
                    std::memcpy(at, &v, 4);
                } else if (bits == W::Word) {
                    const std::uint16_t v = std::uint16_t(value);
                    std::memcpy(at, &v, 2);
                } else {
                    *at = std::uint8_t(bits == W::Mask ? value & 1u : value);
                }
            }
        if (depth == 1) {
            writer.AppendFramesOfOneImage(planes[0].data());
        } else {
            std::vector<const void*> pointers;
            for (const auto& plane : planes)
                pointers.push_back(plane.data());
            writer.AppendPlanesOfOneImage(pointers);
        }
    }
}

Bytes ReadImageStream(const Scratch& scratch, const std::string& prefix)
{
    return Join({ReadFile(scratch.Path(prefix + ".ims")), ReadFile(scratch.Path(prefix + ".index.ims"))});
}

} // namespace SetApiFuzz
