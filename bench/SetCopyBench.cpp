// Copying a whole set of about 1 GB in 1000 buffer files (1024 x 512 word images stored through
// the set): C_SetFactory::Copy(from, to, recursive, replace) against `cp -r` of the folder plus `cp`
// of the set file, in the same run. The two alternate round by round (which one goes first
// alternates too), and each figure is the median of the rounds. Before each timed copy the
// targets are gone, dirty pages are written out and, where the process may, the page cache is
// dropped, so that both read the source from the disk; otherwise the figures are warm-cache ones
// and say so. The source set is kept beside the build for later runs.
//
//   setapi_bench_setcopy [--rounds=N] [google benchmark flags]

#include "support/RatioReporter.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Logger.h>

#include <boost/filesystem.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = boost::filesystem;

constexpr unsigned kBuffers = 1000;
constexpr unsigned kWidth = 1024;
constexpr unsigned kHeight = 512;
// The pixels are noise over all 16 bits, so that no packing makes the files smaller than the raw
// image (1 MiB each).
constexpr std::uint64_t kMinimumBytes = std::uint64_t(kBuffers) * kWidth * kHeight * 2;

const std::string g_folder = std::string(SETAPI_BENCH_FOLDER) + "/setcopy";
const std::string g_source = g_folder + "/Source";
const std::string g_ourTarget = g_folder + "/CopyBySetApi";
const std::string g_cpTarget = g_folder + "/CopyByCp";

std::unique_ptr<BufferApi::I_Buffer> MakeImage(unsigned index)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_Frame> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, kWidth, kHeight, 1));
    auto* pixels = static_cast<std::uint16_t*>(frame->GetComponentAt(0)->GetPlane(0)->GetData());
    std::uint32_t state = 2463534242u + index;
    for (std::size_t i = 0; i < std::size_t(kWidth) * kHeight; ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        pixels[i] = std::uint16_t(state);
    }
    buffer->AddFrame(std::move(frame));
    return buffer;
}

std::size_t CountFiles(const std::string& folder)
{
    if (!fs::is_directory(folder))
        return 0;
    std::size_t count = 0;
    for (fs::directory_iterator it(folder), end; it != end; ++it)
        count += fs::is_regular_file(it->status());
    return count;
}

std::uint64_t SetBytes(const std::string& set)
{
    std::uint64_t bytes = fs::file_size(set + ".set");
    for (fs::recursive_directory_iterator it(set), end; it != end; ++it)
        if (fs::is_regular_file(it->status()))
            bytes += fs::file_size(it->path());
    return bytes;
}

// The source set, made once and kept: 1000 stored buffers and the set file.
void PrepareSource()
{
    if (fs::exists(g_source + ".set") && CountFiles(g_source) == kBuffers && SetBytes(g_source) > kMinimumBytes)
        return;
    std::printf("making the source set %s (%u buffers of %u x %u words) ...\n", g_source.c_str(), kBuffers, kWidth,
                kHeight);
    std::fflush(stdout);
    fs::remove_all(g_folder);
    fs::create_directories(g_folder);
    auto set = SetApi::C_SetFactory::Instance().Create(QString::fromStdString(g_source), SetApi::TypeIdentifiers::Image);
    if (!set->IsOpen()) {
        std::fprintf(stderr, "could not create %s\n", g_source.c_str());
        std::exit(1);
    }
    for (unsigned i = 0; i < kBuffers; ++i)
        set->StoreBuffer(MakeImage(i).get(), i);
}

void RemoveSetFiles(const std::string& set)
{
    fs::remove_all(set);
    fs::remove(set + ".set");
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

bool g_coldCache = false;

// Writes out dirty pages and drops the page cache; false where the process may not.
bool DropPageCache()
{
    if (std::system("sync") != 0)
        return false;
    std::ofstream control("/proc/sys/vm/drop_caches");
    if (!control)
        return false;
    control << "3\n";
    control.flush();
    return bool(control);
}

double TimedCopy(const std::function<bool()>& copy, const std::string& target, const char* what)
{
    RemoveSetFiles(g_ourTarget);
    RemoveSetFiles(g_cpTarget);
    g_coldCache = DropPageCache();
    const auto start = std::chrono::steady_clock::now();
    const bool ok = copy();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!ok || CountFiles(target) != kBuffers || !fs::exists(target + ".set")) {
        std::fprintf(stderr, "%s did not copy the set\n", what);
        std::exit(1);
    }
    return seconds;
}

bool CopyBySetApi() { return SetApi::C_SetFactory::Instance().Copy(g_source, g_ourTarget, true, false); }

bool CopyByCp()
{
    const std::string command = "cp -r " + Quoted(g_source) + " " + Quoted(g_cpTarget) + " && cp " +
                                Quoted(g_source + ".set") + " " + Quoted(g_cpTarget + ".set");
    return std::system(command.c_str()) == 0;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Takes "--rounds=N" out of the arguments.
unsigned TakeRounds(int& argc, char** argv)
{
    unsigned rounds = 3;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--rounds=", 9) == 0)
            rounds = std::max(1, std::atoi(argv[i] + 9));
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return rounds;
}

void RegisterMedian(const std::string& name, double seconds, std::uint64_t bytes)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [seconds, bytes](benchmark::State& state) {
                                     for (auto _ : state)
                                         state.SetIterationTime(seconds);
                                     state.SetBytesProcessed(std::int64_t(bytes));
                                 })
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv)
{
    const unsigned rounds = TakeRounds(argc, argv);
    benchmark::Initialize(&argc, argv);
    RTE::Logging::SetLevel(RTE::LogLevel::Off);

    PrepareSource();
    const std::uint64_t bytes = SetBytes(g_source);
    const double megabytes = double(bytes) / 1e6;

    std::vector<double> ours, cp;
    for (unsigned round = 0; round < rounds; ++round) {
        if (round % 2 == 0) {
            cp.push_back(TimedCopy(CopyByCp, g_cpTarget, "cp"));
            ours.push_back(TimedCopy(CopyBySetApi, g_ourTarget, "C_SetFactory::Copy"));
        } else {
            ours.push_back(TimedCopy(CopyBySetApi, g_ourTarget, "C_SetFactory::Copy"));
            cp.push_back(TimedCopy(CopyByCp, g_cpTarget, "cp"));
        }
        std::printf("round %u: cp -r %.3f s (%.0f MB/s), C_SetFactory::Copy %.3f s (%.0f MB/s)\n", round + 1,
                    cp.back(), megabytes / cp.back(), ours.back(), megabytes / ours.back());
        std::fflush(stdout);
    }
    RemoveSetFiles(g_ourTarget);
    RemoveSetFiles(g_cpTarget);

    const double ourMedian = Median(ours), cpMedian = Median(cp);
    std::printf("%s page cache; %u files, %.1f MB; medians of %u rounds:\n", g_coldCache ? "cold" : "WARM", kBuffers + 1,
                megabytes, rounds);
    std::printf("  cp -r + cp .set      %.3f s  %.0f MB/s\n", cpMedian, megabytes / cpMedian);
    std::printf("  C_SetFactory::Copy   %.3f s  %.0f MB/s\n", ourMedian, megabytes / ourMedian);
    std::fflush(stdout);

    RegisterMedian("BM_CopyByCp", cpMedian, bytes);
    RegisterMedian("BM_SetFactoryCopy", ourMedian, bytes);
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatio("BM_SetFactoryCopy/iterations:1/manual_time", "BM_CopyByCp/iterations:1/manual_time");
    benchmark::Shutdown();
    return 0;
}
