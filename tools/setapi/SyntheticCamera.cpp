#include "SyntheticCamera.h"

#include "Lcg.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace SetApiTool {

namespace {

using namespace BufferApi;

constexpr unsigned PatternCount = 16;
// A spot is drawn over (2 * SpotRadius + 1)^2 pixels; the widest spot (sigma 1.5) has fallen
// below 2 % of its peak at the border.
constexpr int SpotRadius = 4;
constexpr int WordMaximum = 4095; // a 12-bit camera

// Read noise of one table element from its position alone: roughly Gaussian (a sum of four
// uniform draws), standard deviation about 4 counts.
double Noise(std::size_t position)
{
    double sum = 0;
    std::uint64_t h = position * 0x9E3779B97F4A7C15ULL + 0x632BE59BD9B4E019ULL;
    for (int k = 0; k < 4; ++k) {
        h ^= h >> 31;
        h *= 0xBF58476D1CE4E5B9ULL;
        h ^= h >> 27;
        sum += double(h & 0xffff) / 65535.0;
    }
    return (sum - 2.0) * 7.0;
}

std::unique_ptr<I_Scale> Linear(double factor, double offset, const std::string& unit, const std::string& text)
{
    return std::unique_ptr<I_Scale>(C_ScaleFactory::GetInstance().CreateLinearScale(factor, offset, unit, text));
}

// Brings a coordinate that drifts without end back into [-margin, size + margin).
float Wrap(float value, unsigned size)
{
    const float period = float(size) + 2.0f * SpotRadius;
    float wrapped = std::fmod(value + SpotRadius, period);
    if (wrapped < 0)
        wrapped += period;
    return wrapped - SpotRadius;
}

} // namespace

SyntheticRecording::SyntheticRecording(const S_SyntheticShape& shape, long long startMilliseconds)
    : m_shape(shape), m_startMilliseconds(startMilliseconds)
{
    RTE_VERIFY(shape.cameras > 0, "A recording needs at least one camera");
    RTE_VERIFY(shape.width > 0 && shape.height > 0, "A camera image must not be empty");
    RTE_VERIFY(shape.type == DATATYPE_WORD || shape.type == DATATYPE_FLOAT,
               "Synthetic camera images are word or float");

    // Consecutive offsets are a few rows and some pixels apart, so that no two patterns line up.
    const std::size_t width = shape.width, height = shape.height;
    m_patternStride = std::min<std::size_t>(3 * width + 7, 4099);
    const std::size_t elements = width * height + PatternCount * m_patternStride;
    const double cx = width / 2.0, cy = height / 2.0, r2 = cx * cx + cy * cy;
    auto background = [&](std::size_t j) {
        const double x = double(j % width), y = double((j / width) % height);
        const double d2 = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / r2;
        return 100.0 + 60.0 * (1.0 - d2) + Noise(j);
    };
    if (shape.type == DATATYPE_WORD) {
        m_wordBackground.resize(elements);
        for (std::size_t j = 0; j < elements; ++j)
            m_wordBackground[j] = static_cast<std::uint16_t>(std::lround(std::max(0.0, background(j))));
    } else {
        m_floatBackground.resize(elements);
        for (std::size_t j = 0; j < elements; ++j)
            m_floatBackground[j] = static_cast<float>(background(j));
    }

    // About one particle per 500 pixels, drifting mostly from left to right by 2 to 5 pixels per
    // image, a little differently seen by each camera.
    const std::size_t count = std::max<std::size_t>(1, width * height / 500);
    m_particles.resize(shape.cameras);
    for (unsigned camera = 0; camera < shape.cameras; ++camera) {
        Lcg random(1000 + camera);
        std::vector<S_Particle>& particles = m_particles[camera];
        particles.resize(count);
        for (S_Particle& p : particles) {
            p.x = random.UniformFloat() * float(width);
            p.y = random.UniformFloat() * float(height);
            p.vx = 2.0f + 3.0f * random.UniformFloat();
            p.vy = 1.2f * (random.UniformFloat() - 0.5f);
            p.peak = 300.0f + 2500.0f * random.UniformFloat();
            p.sigma = 0.7f + 0.8f * random.UniformFloat();
        }
    }
}

SyntheticRecording::~SyntheticRecording() = default;

std::size_t SyntheticRecording::GetImageBytes() const
{
    return std::size_t(m_shape.cameras) * m_shape.width * m_shape.height * GetDataTypeSize(m_shape.type);
}

void SyntheticRecording::RenderCamera(unsigned camera, unsigned index, void* pixels) const
{
    const int width = int(m_shape.width), height = int(m_shape.height);
    const std::size_t frameElements = std::size_t(width) * std::size_t(height);
    const std::size_t offset = ((index * 5u + camera * 11u) % PatternCount) * m_patternStride;
    if (m_shape.type == DATATYPE_WORD)
        std::memcpy(pixels, m_wordBackground.data() + offset, frameElements * sizeof(std::uint16_t));
    else
        std::memcpy(pixels, m_floatBackground.data() + offset, frameElements * sizeof(float));

    auto* words = static_cast<std::uint16_t*>(pixels);
    auto* floats = static_cast<float*>(pixels);
    float gx[2 * SpotRadius + 1], gy[2 * SpotRadius + 1];
    for (const S_Particle& p : m_particles[camera]) {
        const float x = Wrap(p.x + p.vx * float(index), m_shape.width);
        const float y = Wrap(p.y + p.vy * float(index), m_shape.height);
        const int x0 = int(std::floor(x)) - SpotRadius, y0 = int(std::floor(y)) - SpotRadius;
        const float scale = -1.0f / (2.0f * p.sigma * p.sigma);
        for (int k = 0; k <= 2 * SpotRadius; ++k) {
            const float dx = float(x0 + k) - x, dy = float(y0 + k) - y;
            gx[k] = std::exp(dx * dx * scale);
            gy[k] = p.peak * std::exp(dy * dy * scale);
        }
        const int yBegin = std::max(0, y0), yEnd = std::min(height, y0 + 2 * SpotRadius + 1);
        const int xBegin = std::max(0, x0), xEnd = std::min(width, x0 + 2 * SpotRadius + 1);
        for (int py = yBegin; py < yEnd; ++py) {
            const std::size_t row = std::size_t(py) * std::size_t(width);
            const float fy = gy[py - y0];
            for (int px = xBegin; px < xEnd; ++px) {
                const float value = fy * gx[px - x0];
                if (m_shape.type == DATATYPE_WORD) {
                    std::uint16_t& pixel = words[row + std::size_t(px)];
                    pixel = static_cast<std::uint16_t>(std::min(WordMaximum, int(pixel) + int(value + 0.5f)));
                } else {
                    floats[row + std::size_t(px)] += value;
                }
            }
        }
    }
}

std::string SyntheticRecording::AcquisitionTimeOf(unsigned index) const
{
    const long long milliseconds = m_startMilliseconds + (long long)index * FramePeriodMilliseconds;
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"))
        .toStdString();
}

std::unique_ptr<I_Buffer> SyntheticRecording::MakeImage(unsigned index) const
{
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    const double pitch = 0.01; // mm per pixel
    for (unsigned camera = 0; camera < m_shape.cameras; ++camera) {
        // Every element is written below, so the frame's memory need not be zero-filled first.
        std::unique_ptr<I_Frame> frame(CreateImageFrameForOverwrite(m_shape.type, m_shape.width, m_shape.height, 1));
        RenderCamera(camera, index, frame->GetComponentAt(0)->GetPlane(0)->GetData());
        frame->SetScale(SCALE_X, Linear(pitch, -pitch * (m_shape.width / 2), "mm", "X"));
        frame->SetScale(SCALE_Y, Linear(-pitch, pitch * (m_shape.height / 2), "mm", "Y"));
        frame->SetScale(SCALE_I, Linear(1.0, 0.0, "counts", "Intensity"));
        AttributeStore& attributes = frame->GetAttributeStore();
        attributes.SetString("CameraName", "Camera " + std::to_string(camera + 1));
        const float exposure[] = {10.0f + float(camera)};
        attributes.SetArray("ExposureTime", 1, DATATYPE_FLOAT, exposure);
        buffer->AddFrame(std::move(frame));
    }
    AttributeStore& attributes = buffer->GetAttributeStore();
    attributes.SetString("AcquisitionTime", AcquisitionTimeOf(index));
    const std::int32_t imageIndex[] = {std::int32_t(index)};
    attributes.SetArray("ImageIndex", 1, DATATYPE_INT32, imageIndex);
    attributes.SetString("Source", "setapi record");
    return buffer;
}

} // namespace SetApiTool
