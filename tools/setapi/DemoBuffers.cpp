#include "DemoBuffers.h"

#include "Lcg.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace SetApiTool {

namespace {

using namespace BufferApi;

// Noise of one pixel from its position alone, in [-1, 1].
double PixelNoise(unsigned x, unsigned y, unsigned index)
{
    std::uint32_t h = x * 73856093u ^ y * 19349663u ^ (index + 1) * 83492791u;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    h ^= h >> 15;
    return double(h & 0xffff) / 32767.5 - 1.0;
}

std::unique_ptr<I_Scale> Linear(double factor, double offset, const std::string& unit, const std::string& text)
{
    return std::unique_ptr<I_Scale>(C_ScaleFactory::GetInstance().CreateLinearScale(factor, offset, unit, text));
}

template <typename T>
T* PlaneData(I_Component* component)
{
    return static_cast<T*>(component->GetPlane(0)->GetData());
}

// Zero outside the ellipse that touches the middle of each edge: the corners of a round lens.
void CutCorners(I_Frame& frame)
{
    unsigned char* mask = PlaneData<unsigned char>(frame.AddMask());
    const unsigned width = frame.GetWidth(), height = frame.GetHeight();
    const double cx = (width - 1) / 2.0, cy = (height - 1) / 2.0;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const double dx = (x - cx) / (width / 2.0), dy = (y - cy) / (height / 2.0);
            mask[std::size_t(y) * width + x] = dx * dx + dy * dy <= 1.0 ? 1 : 0;
        }
}

void AddCorrelation(I_Frame& frame, unsigned index)
{
    CreateTypedScalarInFrame(&frame, "Correlation", DATATYPE_FLOAT);
    C_TypedScalarFrame correlation(&frame, "Correlation");
    correlation.SetLinearScale(0.01, 0.0, "", "Correlation coefficient");
    auto* values = static_cast<float*>(correlation.GetComponent(0)->GetData());
    const unsigned width = frame.GetWidth(), height = frame.GetHeight();
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            values[std::size_t(y) * width + x] =
                static_cast<float>(80.0 + 15.0 * std::cos(x / 37.0 + index) * std::sin(y / 29.0));
}

void SetSpatialScales(I_Frame& frame)
{
    frame.SetScale(SCALE_X, Linear(0.05, -16.0, "mm", "X"));
    frame.SetScale(SCALE_Y, Linear(-0.05, 12.0, "mm", "Y"));
}

std::unique_ptr<I_Frame> MakeCameraFrame(unsigned index, unsigned width, unsigned height)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, width, height, 1));
    frame->SetName("Camera 1");
    auto* pixels = PlaneData<std::uint16_t>(frame->GetComponentAt(0));

    std::vector<double> image(std::size_t(width) * height);
    const double cx = width / 2.0, cy = height / 2.0, r2 = cx * cx + cy * cy;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const double d2 = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / r2;
            image[std::size_t(y) * width + x] = 100.0 + 60.0 * (1.0 - d2) + 6.0 * PixelNoise(x, y, index);
        }

    // Particle images: Gaussian spots at fixed places of the flow, moved by the index as by a
    // uniform stream from left to right.
    Lcg random(42);
    const unsigned particles = std::max(1u, width * height / 800);
    for (unsigned p = 0; p < particles; ++p) {
        const double px = random.Uniform() * width + 4.0 * index, py = random.Uniform() * height;
        const double peak = 400.0 + 3000.0 * random.Uniform(), sigma = 0.8 + 0.8 * random.Uniform();
        const int x0 = int(std::floor(px)) - 4, y0 = int(std::floor(py)) - 4;
        for (int y = std::max(0, y0); y < std::min(int(height), y0 + 10); ++y)
            for (int x = std::max(0, x0); x < std::min(int(width), x0 + 10); ++x) {
                const double d2 = (x - px) * (x - px) + (y - py) * (y - py);
                image[std::size_t(y) * width + x] += peak * std::exp(-d2 / (2 * sigma * sigma));
            }
    }
    for (std::size_t i = 0; i < image.size(); ++i)
        pixels[i] = static_cast<std::uint16_t>(std::clamp(std::lround(image[i]), 0L, 4095L));

    CutCorners(*frame);
    AddCorrelation(*frame, index);
    SetSpatialScales(*frame);
    frame->SetScale(SCALE_I, Linear(1.0, 0.0, "counts", "Intensity"));
    frame->GetAttributeStore().SetString("CameraName", "Synthetic camera 1");
    const float exposure[] = {12.5f};
    frame->GetAttributeStore().SetArray("ExposureTime", 1, DATATYPE_FLOAT, exposure);
    frame->SetSettings("Gain=2\nBinning=1x1\n");
    return frame;
}

std::unique_ptr<I_Frame> MakeTemperatureFrame(unsigned index, unsigned width, unsigned height)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_FLOAT, width, height, 1));
    frame->SetName("Temperature");
    CutCorners(*frame);
    const unsigned char* mask = PlaneData<unsigned char>(frame->GetMask());
    auto* pixels = PlaneData<float>(frame->GetComponentAt(0));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const std::size_t i = std::size_t(y) * width + x;
            pixels[i] = mask[i] ? static_cast<float>(300.0 + 25.0 * std::sin(x / 50.0 + 0.3 * index) * std::cos(y / 40.0))
                                : std::numeric_limits<float>::quiet_NaN();
        }
    AddCorrelation(*frame, index + 100);
    SetSpatialScales(*frame);
    frame->SetScale(SCALE_I, Linear(1.0, -273.15, "\xc2\xb0" "C", "Temperature"));
    frame->GetAttributeStore().SetString("Sensor", "Synthetic thermography");
    const std::uint16_t levels[] = {0, 1024, 4095};
    frame->GetAttributeStore().SetArray("CalibrationLevels", 3, DATATYPE_WORD, levels);
    return frame;
}

} // namespace

std::unique_ptr<I_Buffer> MakeDemoBuffer(unsigned index, unsigned width, unsigned height)
{
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    buffer->AddFrame(MakeCameraFrame(index, width, height));
    buffer->AddFrame(MakeTemperatureFrame(index, width, height));
    AttributeStore& attributes = buffer->GetAttributeStore();
    attributes.SetString("AcquisitionTime", "2024-05-17 10:42:" + std::to_string(10 + index) + ".000");
    attributes.SetString("Source", "setapi demo");
    const double trigger[] = {index * 0.0002, index * 0.0002 + 0.00001, 1.0 / 3.0};
    attributes.SetArray("TriggerTimes", 3, DATATYPE_DOUBLE, trigger);
    const int counter[] = {int(index) + 1};
    attributes.SetArray("ImageCounter", 1, DATATYPE_INT32, counter);
    return buffer;
}

} // namespace SetApiTool
