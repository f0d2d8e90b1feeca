#include <gtest/gtest.h>

#include "ImageStreamTestSupport.h"

#include <support/TestSupport.h>

#include <cstring>
#include <limits>
#include <sstream>

namespace ImageStreamTest {

unsigned Shape::ElementSize() const
{
    switch (bits) {
    case Bits::Word: return 2;
    case Bits::Float: return 4;
    case Bits::Double: return 8;
    default: return 1;
    }
}

std::string Describe(const Shape& s)
{
    std::ostringstream text;
    text << s.width << "x" << s.height << "x" << s.depth << " fpi " << s.framesPerImage << " bits " << int(s.bits)
         << " '" << s.compression.toStdString() << "'";
    return text.str();
}

namespace {

template <class T>
void Store(std::vector<std::uint8_t>& bytes, std::size_t i, T value)
{
    std::memcpy(bytes.data() + i * sizeof(T), &value, sizeof(T));
}

std::uint32_t Noise(std::uint32_t x)
{
    x ^= x >> 16;
    x *= 0x7feb352d;
    x ^= x >> 15;
    x *= 0x846ca68b;
    x ^= x >> 16;
    return x;
}

} // namespace

std::vector<std::uint8_t> PlaneBytes(const Shape& shape, std::uint32_t image, std::uint32_t plane)
{
    const std::size_t n = std::size_t(shape.width) * shape.height;
    std::vector<std::uint8_t> bytes(shape.PlaneBytes());
    const std::uint32_t seed = image * 7919u + plane * 104729u;
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint32_t noise = Noise(seed + std::uint32_t(i));
        const std::uint32_t ramp = std::uint32_t(i % shape.width) * 37 + std::uint32_t(i / shape.width) * 11 + seed;
        switch (shape.bits) {
        case Bits::Word: Store<std::uint16_t>(bytes, i, std::uint16_t(ramp + (noise & 7))); break;
        case Bits::Byte: Store<std::uint8_t>(bytes, i, std::uint8_t(ramp + (noise & 3))); break;
        case Bits::Mask: Store<std::uint8_t>(bytes, i, std::uint8_t((ramp / 5 + noise % 3) & 1)); break;
        case Bits::Float: {
            float value = float(ramp % 5000) * 0.25f - 300.0f + float(noise & 15) / 16.0f;
            if (i % 97 == 3) {
                const std::uint32_t nanBits = 0x7FC00000u | (noise & 0x3FFFFF); // a NaN with a payload
                std::memcpy(&value, &nanBits, 4);
            } else if (i % 97 == 5) {
                value = -0.0f;
            } else if (i % 97 == 7) {
                value = -std::numeric_limits<float>::infinity();
            }
            Store(bytes, i, value);
            break;
        }
        case Bits::Double: {
            double value = double(ramp % 5000) * 0.125 - 100.0 + double(noise) * 1e-9;
            if (i % 89 == 3) {
                const std::uint64_t nanBits = 0xFFF0000000000000ull | (std::uint64_t(noise) << 12) | 1; // signalling-like
                std::memcpy(&value, &nanBits, 8);
            } else if (i % 89 == 5) {
                value = -0.0;
            } else if (i % 89 == 7) {
                value = std::numeric_limits<double>::denorm_min();
            }
            Store(bytes, i, value);
            break;
        }
        }
    }
    return bytes;
}

void AppendImages(SetApi::C_ImageWriter& writer, const Shape& shape, std::uint32_t from, std::uint32_t to)
{
    for (std::uint32_t image = from; image < to; ++image) {
        std::vector<std::vector<std::uint8_t>> planes;
        for (unsigned p = 0; p < shape.Planes(); ++p)
            planes.push_back(PlaneBytes(shape, image, p));
        if (shape.depth == 1) {
            std::vector<std::uint8_t> frames;
            for (const auto& plane : planes)
                frames.insert(frames.end(), plane.begin(), plane.end());
            writer.AppendFramesOfOneImage(frames.data());
        } else {
            std::vector<const void*> pointers;
            for (const auto& plane : planes)
                pointers.push_back(plane.data());
            writer.AppendPlanesOfOneImage(pointers);
        }
    }
}

void WriteStream(const QString& destination, const Shape& shape, std::uint32_t images)
{
    SetApi::C_ImageWriter writer(shape.width, shape.height, shape.depth, shape.framesPerImage, shape.bits,
                                 shape.compression);
    writer.Open(destination);
    AppendImages(writer, shape, 0, images);
    writer.Close();
}

namespace {

template <class T>
::testing::AssertionResult LoadAndCompare(SetApi::C_ImageReader& reader, const Shape& shape, std::uint32_t image)
{
    const std::size_t n = std::size_t(shape.width) * shape.height;
    // Raw bytes: bool targets receive mask bytes, and vector<bool> has no element memory.
    std::vector<std::uint8_t> target(n * sizeof(T));
    for (unsigned frame = 0; frame < shape.framesPerImage; ++frame)
        for (unsigned plane = 0; plane < shape.depth; ++plane) {
            reader.LoadPlane(image, plane, frame, reinterpret_cast<T*>(target.data()));
            const std::vector<std::uint8_t> expected = PlaneBytes(shape, image, frame * shape.depth + plane);
            if (target != expected)
                return ::testing::AssertionFailure() << Describe(shape) << ": image " << image << " plane " << plane
                                                     << " frame " << frame << " differs";
        }
    return ::testing::AssertionSuccess();
}

} // namespace

::testing::AssertionResult ImageMatches(SetApi::C_ImageReader& reader, const Shape& shape, std::uint32_t image)
{
    switch (shape.bits) {
    case Bits::Word: return LoadAndCompare<std::uint16_t>(reader, shape, image);
    case Bits::Float: return LoadAndCompare<float>(reader, shape, image);
    case Bits::Double: return LoadAndCompare<double>(reader, shape, image);
    default: return LoadAndCompare<bool>(reader, shape, image);
    }
}

std::string Bytes(const std::string& path) { return TestSupport::ReadFile(path); }

void Put(const std::string& path, const std::string& bytes) { TestSupport::WriteFile(path, bytes); }

} // namespace ImageStreamTest
