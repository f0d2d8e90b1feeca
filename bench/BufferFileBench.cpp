// Buffer files: export and import of a 2560x2160 word camera image, raw and packed (fast and
// zlib), against writing and reading the same number of bytes with plain C stdio in the same run.
// Both sides write a new file each time (the old one removed) and read into fresh memory, so that
// file-system and page-fault costs are the same for both.
// The direct-I/O export (option "DirectIo", as recordings write) is measured against a direct
// write of the same number of bytes from 4 KiB aligned memory through the file-system seam, in one
// append and closed (durable) like the export's file.

#include "support/RatioReporter.h"

#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/FileSystem.h>
#include <RTE/Parameter/Factory.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr unsigned kWidth = 2560;
constexpr unsigned kHeight = 2160;

std::string g_folder;
std::unique_ptr<BufferApi::I_Buffer> g_buffer;
std::uint64_t g_rawFileBytes = 0;
const std::size_t kPlaneBytes = std::size_t(kWidth) * kHeight * 2;

// A smooth background with a few bright blobs and deterministic noise of a few counts.
void MakeCameraImage()
{
    g_buffer.reset(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_Frame> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, kWidth, kHeight, 1));
    auto* pixels = static_cast<std::uint16_t*>(frame->GetComponentAt(0)->GetPlane(0)->GetData());
    std::uint32_t state = 2463534242u;
    for (unsigned y = 0; y < kHeight; ++y) {
        for (unsigned x = 0; x < kWidth; ++x) {
            double value = 800 + 0.1 * x + 0.05 * y + 300 * std::sin(x / 230.0) * std::cos(y / 170.0);
            if ((x / 64 + y / 64) % 9 == 0)
                value += 2000 * std::exp(-(std::pow(x % 64 - 32.0, 2) + std::pow(y % 64 - 32.0, 2)) / 40.0);
            int noise = 0;
            for (int k = 0; k < 4; ++k) {
                state ^= state << 13;
                state ^= state >> 17;
                state ^= state << 5;
                noise += int(state % 7) - 3;
            }
            pixels[std::size_t(y) * kWidth + x] = std::uint16_t(value + noise);
        }
    }
    g_buffer->AddFrame(std::move(frame));
}

boost::shared_ptr<RTE::Parameter::C_Tree> Options(long long packType, bool directIo = false)
{
    auto tree = RTE::Parameter::CreateTree();
    tree->Add(RTE::Parameter::CreateInteger(QStringLiteral("PackType"), packType));
    if (directIo)
        tree->Add(RTE::Parameter::CreateInteger(QStringLiteral("DirectIo"), 1));
    return tree;
}

std::string FilePath(long long packType) { return g_folder + "/B0000" + std::to_string(packType) + ".im7"; }

void BM_PlainWrite(benchmark::State& state)
{
    const std::string path = g_folder + "/plain.bin";
    const std::vector<std::uint8_t> bytes(std::size_t(g_rawFileBytes), 1);
    for (auto _ : state) {
        std::remove(path.c_str());
        std::FILE* file = std::fopen(path.c_str(), "wb");
        std::setvbuf(file, nullptr, _IONBF, 0);
        benchmark::DoNotOptimize(std::fwrite(bytes.data(), 1, bytes.size(), file));
        std::fclose(file);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
}
BENCHMARK(BM_PlainWrite)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_DirectWrite(benchmark::State& state)
{
    const std::string path = g_folder + "/direct.bin";
    constexpr std::size_t kAlignment = 4096;
    std::vector<std::uint8_t> memory(std::size_t(g_rawFileBytes) + kAlignment, 1);
    void* start = memory.data();
    std::size_t space = memory.size();
    std::align(kAlignment, std::size_t(g_rawFileBytes), start, space);
    for (auto _ : state) {
        std::remove(path.c_str());
        auto file = RTE::FileSystem::OpenForWriting(path, RTE::WriteMode::Direct);
        file->Append(start, std::size_t(g_rawFileBytes));
        file->Close();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
    state.counters["direct"] = RTE::FileSystem::OpenForWriting(path, RTE::WriteMode::Direct)->IsDirect() ? 1 : 0;
}
BENCHMARK(BM_DirectWrite)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExportDirect(benchmark::State& state)
{
    const long long packType = state.range(0);
    const auto options = Options(packType, true);
    const std::string path = g_folder + "/B1000" + std::to_string(packType) + ".im7";
    for (auto _ : state) {
        std::remove(path.c_str());
        BufferApi::ExportBuffer(g_buffer.get(), path, options);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
}
BENCHMARK(BM_ExportDirect)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PlainRead(benchmark::State& state)
{
    const std::string path = g_folder + "/plain.bin";
    for (auto _ : state) {
        std::unique_ptr<std::uint8_t[]> memory(new std::uint8_t[std::size_t(g_rawFileBytes)]);
        std::FILE* file = std::fopen(path.c_str(), "rb");
        std::setvbuf(file, nullptr, _IONBF, 0);
        benchmark::DoNotOptimize(std::fread(memory.get(), 1, std::size_t(g_rawFileBytes), file));
        std::fclose(file);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
}
BENCHMARK(BM_PlainRead)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Export(benchmark::State& state)
{
    const long long packType = state.range(0);
    const auto options = Options(packType);
    // A new file each time, as in a recording and as in the plain baseline: replacing an existing
    // file costs more on ext4, which starts writing the data out when a rename replaces a file.
    const std::string path = FilePath(packType);
    for (auto _ : state) {
        std::remove(path.c_str());
        BufferApi::ExportBuffer(g_buffer.get(), path, options);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
    std::FILE* file = std::fopen(FilePath(packType).c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    state.counters["ratio"] = double(kPlaneBytes) / double(std::ftell(file));
    std::fclose(file);
}
BENCHMARK(BM_Export)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Import(benchmark::State& state)
{
    const std::string path = FilePath(state.range(0));
    for (auto _ : state) {
        std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::ImportBuffer(path, nullptr));
        benchmark::DoNotOptimize(buffer.get());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kPlaneBytes));
}
BENCHMARK(BM_Import)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    g_folder = std::string(SETAPI_BENCH_FOLDER) + "/bufferfile-bench-" +
               std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    RTE::FileSystem::CreateDirectory(g_folder);
    MakeCameraImage();
    for (const long long packType : {0, 1, 2})
        BufferApi::ExportBuffer(g_buffer.get(), FilePath(packType), Options(packType));
    {
        auto file = RTE::FileSystem::OpenForReading(FilePath(0));
        g_rawFileBytes = file->Size();
    }
    {
        auto file = RTE::FileSystem::OpenForWriting(g_folder + "/plain.bin");
        const std::vector<std::uint8_t> bytes(std::size_t(g_rawFileBytes), 1);
        file->Append(bytes.data(), bytes.size());
    }
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatio("BM_Export/0/real_time", "BM_PlainWrite/real_time");
    reporter.PrintRatio("BM_Export/1/real_time", "BM_PlainWrite/real_time");
    reporter.PrintRatio("BM_Export/2/real_time", "BM_PlainWrite/real_time");
    reporter.PrintRatio("BM_ExportDirect/0/real_time", "BM_DirectWrite/real_time");
    reporter.PrintRatio("BM_ExportDirect/1/real_time", "BM_DirectWrite/real_time");
    reporter.PrintRatio("BM_Import/0/real_time", "BM_PlainRead/real_time");
    reporter.PrintRatio("BM_Import/1/real_time", "BM_PlainRead/real_time");
    reporter.PrintRatio("BM_Import/2/real_time", "BM_PlainRead/real_time");
    RTE::FileSystem::RemoveDirectory(g_folder);
    benchmark::Shutdown();
    return 0;
}
