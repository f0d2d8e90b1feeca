// Packing and unpacking one 2560x2160 16-bit camera plane with zlib level 1 and the fast pack,
// against a memcpy of the same bytes in the same run. Three images: camera-like (smooth background,
// blobs, gaussian noise of a few counts over a dark offset of about 100, 12 bits used), pure 16-bit
// noise and all zero. Run with OMP_NUM_THREADS=1 for the per-core figure.

#include "support/RatioReporter.h"

#include "codec/PlaneCodec.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using BufferApi::Private::PlaneCodec;

constexpr int kWidth = 2560;
constexpr int kHeight = 2160;
constexpr unsigned kElementSize = 2;

std::vector<std::uint16_t> CameraImage()
{
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::normal_distribution<double> gauss(0.0, 1.0);
    struct Blob {
        double x, y, sigma, amplitude;
    };
    std::vector<Blob> blobs;
    for (int i = 0; i < 60; ++i)
        blobs.push_back({uniform(random) * kWidth, uniform(random) * kHeight, 1.5 + uniform(random) * 25,
                         200 + uniform(random) * 3000});
    std::vector<double> row(kWidth);
    std::vector<std::uint16_t> image(std::size_t(kWidth) * kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x)
            row[x] = 100 + 400.0 * x / kWidth + 250.0 * y / kHeight + 120 * std::sin(x * 0.004) * std::cos(y * 0.003);
        for (const Blob& b : blobs) {
            if (std::abs(y - b.y) > 5 * b.sigma)
                continue;
            const int x0 = std::max(0, int(b.x - 5 * b.sigma)), x1 = std::min(kWidth, int(b.x + 5 * b.sigma) + 1);
            for (int x = x0; x < x1; ++x) {
                const double dx = x - b.x, dy = y - b.y;
                row[x] += b.amplitude * std::exp(-0.5 * (dx * dx + dy * dy) / (b.sigma * b.sigma));
            }
        }
        for (int x = 0; x < kWidth; ++x) {
            // Read noise of 3 counts plus shot noise of the signal above the dark offset.
            const double signal = row[x];
            const double noisy = signal + gauss(random) * std::sqrt(9.0 + std::max(0.0, signal - 100) * 0.05);
            image[std::size_t(y) * kWidth + x] = std::uint16_t(std::clamp(std::lround(noisy), 0L, 4095L));
        }
    }
    return image;
}

std::vector<std::uint16_t> NoiseImage()
{
    std::mt19937_64 random(7);
    std::vector<std::uint16_t> image(std::size_t(kWidth) * kHeight);
    for (auto& v : image)
        v = std::uint16_t(random());
    return image;
}

std::map<std::string, std::vector<std::uint16_t>> g_images;
std::map<std::string, double> g_compression; // "<codec>/<image>" -> plane bytes / packed bytes

const std::vector<std::uint16_t>& Image(const std::string& name)
{
    auto found = g_images.find(name);
    if (found == g_images.end()) {
        std::vector<std::uint16_t> image = name == "camera" ? CameraImage()
                                           : name == "noise" ? NoiseImage()
                                                             : std::vector<std::uint16_t>(std::size_t(kWidth) * kHeight, 0);
        found = g_images.emplace(name, std::move(image)).first;
    }
    return found->second;
}

std::size_t Bytes(const std::vector<std::uint16_t>& image)
{
    return image.size() * sizeof(std::uint16_t);
}

void BM_Memcpy(benchmark::State& state, const std::string& name)
{
    const auto& image = Image(name);
    std::vector<std::uint8_t> copy(Bytes(image));
    for (auto _ : state) {
        std::memcpy(copy.data(), image.data(), copy.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(copy.size()));
}

void BM_Pack(benchmark::State& state, PlaneCodec codec, const std::string& name)
{
    const auto& image = Image(name);
    std::vector<std::uint8_t> packed;
    for (auto _ : state) {
        BufferApi::Private::PackPlane(codec, image.data(), Bytes(image), kElementSize, packed);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(Bytes(image)));
    const double ratio = double(Bytes(image)) / double(packed.size());
    state.counters["ratio"] = ratio;
    g_compression[(codec == PlaneCodec::Zlib ? "zlib/" : "fast/") + name] = ratio;
}

void BM_Unpack(benchmark::State& state, PlaneCodec codec, const std::string& name)
{
    const auto& image = Image(name);
    std::vector<std::uint8_t> packed;
    BufferApi::Private::PackPlane(codec, image.data(), Bytes(image), kElementSize, packed);
    std::vector<std::uint8_t> back(Bytes(image));
    for (auto _ : state) {
        BufferApi::Private::UnpackPlane(codec, packed.data(), packed.size(), back.data(), back.size(), kElementSize);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(back.size()));
    if (std::memcmp(back.data(), image.data(), back.size()) != 0)
        state.SkipWithError("round trip differs");
}

const char* const kImages[] = {"camera", "noise", "zero"};

void RegisterAll()
{
    for (const char* name : kImages) {
        const std::string n = name;
        benchmark::RegisterBenchmark(("BM_Memcpy/" + n).c_str(), BM_Memcpy, n)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("BM_ZlibPack/" + n).c_str(), BM_Pack, PlaneCodec::Zlib, n)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("BM_ZlibUnpack/" + n).c_str(), BM_Unpack, PlaneCodec::Zlib, n)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("BM_FastPack/" + n).c_str(), BM_Pack, PlaneCodec::Fast, n)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("BM_FastUnpack/" + n).c_str(), BM_Unpack, PlaneCodec::Fast, n)
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    RegisterAll();
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const char* name : kImages) {
        const std::string n = name;
        for (const char* what : {"BM_ZlibPack/", "BM_ZlibUnpack/", "BM_FastPack/", "BM_FastUnpack/"})
            reporter.PrintRatio(what + n, "BM_Memcpy/" + n);
        const auto zlib = g_compression.find("zlib/" + n), fast = g_compression.find("fast/" + n);
        if (zlib != g_compression.end() && fast != g_compression.end())
            std::printf("ratio %-40s %.3f of zlib-1 (compression %.3f vs %.3f)\n", ("fast compression/" + n).c_str(),
                        fast->second / zlib->second, fast->second, zlib->second);
    }
    benchmark::Shutdown();
    return 0;
}
