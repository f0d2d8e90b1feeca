// Reading recordings: LoadBuffer of random images of a 4-camera 2560x2160 word recording against
// reading the same bytes with pread into preallocated 4 KiB aligned memory, through the page cache
// (files warm) and around it (direct I/O); and opening a recording of 100 000 images against one of
// 100. Both sides of each comparison run in the same rounds, interleaved, and the medians are
// compared. The recordings are written once beside the build (a temp folder may be in memory) and
// reused by later runs.
//
// A loaded buffer is new memory: with the C allocator's defaults the 44 MB of planes go back to the
// system when a buffer is destroyed and come back page by page, zero-filled by the system, with the
// next load. The last comparison ("Retained") runs with the allocator told to keep freed memory,
// as a host that reads image series may set it up; it shows what the load itself costs.

#include "support/RatioReporter.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSet.h>

#include <StreamIO/ImageWriter.h>

#include <BufferApi/I_Buffer.h>

#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned kCameras = 4;
constexpr unsigned kWidth = 2560;
constexpr unsigned kHeight = 2160;
constexpr unsigned kImages = 60;
constexpr std::size_t kFrameBytes = std::size_t(kWidth) * kHeight * 2;

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

std::string Prefix(unsigned camera) { return "Camera" + std::to_string(camera + 1) + "_"; }

// A recording of `cameras` word cameras; kept when a complete one from an earlier run is there.
void WriteRecording(const std::string& name, unsigned cameras, unsigned width, unsigned height, unsigned images)
{
    try {
        std::unique_ptr<SetApi::Private::StreamSet> existing(SetApi::Private::StreamSet::Open(name));
        if (existing->GetSize() == images && !existing->IsCorrupt())
            return;
    } catch (const std::exception&) {
    }
    std::printf("writing %s (%u x %u images of %u x %u words)...\n", name.c_str(), cameras, images, width, height);
    std::fflush(stdout);
    RTE::FileSystem::CreateDirectory(name);
    SetApi::Private::C_ReaderConfiguration configuration;
    std::vector<std::unique_ptr<SetApi::C_ImageWriter>> writers;
    for (unsigned camera = 0; camera < cameras; ++camera) {
        writers.emplace_back(new SetApi::C_ImageWriter(width, height, 1, 1, SetApi::C_ImageWriter::Word, QString()));
        configuration.AddReader(SetApi::Private::C_ReaderInfo(
            writers.back()->GetCorrespondingReaderName(), writers.back()->GetCorrespondingReaderType(),
            QString::fromStdString(Prefix(camera)), writers.back()->GetFormatDescription(),
            SetApi::C_ContentPurpose::CreateFrameLink(camera)));
    }
    SetApi::Private::SaveReaderConfiguration(configuration,
                                             SetApi::GetStreamSetConfigurationName(QString::fromStdString(name)));
    std::vector<std::uint16_t> pixels(std::size_t(width) * height);
    std::uint32_t state = 2463534242u;
    for (auto& pixel : pixels) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        pixel = std::uint16_t(800 + state % 2000);
    }
    for (unsigned camera = 0; camera < cameras; ++camera) {
        writers[camera]->Open(QString::fromStdString(name + "/" + Prefix(camera)));
        for (unsigned image = 0; image < images; ++image) {
            pixels[0] = std::uint16_t(image);
            pixels[1] = std::uint16_t(camera);
            writers[camera]->AppendFramesOfOneImage(pixels.data());
        }
        writers[camera]->Close();
    }
    SetApi::C_DataSetParameter parameters;
    parameters.SetValue("SetType", 0x1000);
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    SetApi::C_SetUtilities::WriteSettings(name + ".set", parameters, std::string());
}

struct AlignedFree {
    void operator()(void* memory) const { std::free(memory); }
};

// The plain reader: the bytes of the image's frames from each camera's data file with pread, into
// memory allocated once. A raw image stream (docs/formats/image-stream.md) is one header block and
// then one record per image, its pixels in the last frame-size bytes of the record, 4 KiB aligned.
class PlainReader {
public:
    PlainReader(const std::string& name, unsigned images, bool direct) : m_images(images)
    {
        m_memory.reset(std::aligned_alloc(4096, kCameras * kFrameBytes));
        for (unsigned camera = 0; camera < kCameras; ++camera) {
            const std::string path = name + "/" + Prefix(camera) + ".ims";
            const int fd = ::open(path.c_str(), O_RDONLY | (direct ? O_DIRECT : 0));
            if (fd < 0) {
                std::perror(path.c_str());
                std::exit(1);
            }
            m_files.push_back(fd);
            m_sizes.push_back(std::uint64_t(::lseek(fd, 0, SEEK_END)));
        }
    }
    ~PlainReader()
    {
        for (int fd : m_files)
            ::close(fd);
    }
    void Read(unsigned image)
    {
        for (unsigned camera = 0; camera < kCameras; ++camera) {
            const std::uint64_t recordBytes = (m_sizes[camera] - 4096) / m_images;
            const std::uint64_t offset = 4096 + recordBytes * (image + 1) - kFrameBytes;
            char* target = static_cast<char*>(m_memory.get()) + camera * kFrameBytes;
            std::size_t done = 0;
            while (done < kFrameBytes) {
                const ssize_t got = ::pread(m_files[camera], target + done, kFrameBytes - done, off_t(offset + done));
                if (got <= 0) {
                    std::perror("pread");
                    std::exit(1);
                }
                done += std::size_t(got);
            }
        }
    }

private:
    unsigned m_images;
    std::unique_ptr<void, AlignedFree> m_memory;
    std::vector<int> m_files;
    std::vector<std::uint64_t> m_sizes;
};

// Reads every file of the recording once, so that page-cache rounds find them warm.
void WarmUp(const std::string& name, unsigned images)
{
    PlainReader reader(name, images, false);
    for (unsigned image = 0; image < images; ++image)
        reader.Read(image);
}

std::map<std::string, double> g_medians;

// Random images, each loaded through the set and read plainly in the same round, in turns.
void CompareLoads(const std::string& name, bool direct, unsigned rounds, const std::string& suffix = std::string())
{
    SetApi::Private::StreamSetReader::Options options;
    options.directIo = direct;
    std::unique_ptr<SetApi::Private::StreamSet> set(SetApi::Private::StreamSet::Open(name, options));
    PlainReader plain(name, kImages, direct);
    std::mt19937 random(direct ? 7 : 3);
    std::vector<double> loads, reads;
    for (unsigned round = 0; round < rounds; ++round) {
        const unsigned image = random() % kImages;
        const bool loadFirst = round % 2 == 0;
        for (int turn = 0; turn < 2; ++turn) {
            if ((turn == 0) == loadFirst) {
                const auto start = Clock::now();
                std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(image);
                loads.push_back(Seconds(start));
                benchmark::DoNotOptimize(buffer.get());
            } else {
                const auto start = Clock::now();
                plain.Read(image);
                reads.push_back(Seconds(start));
            }
        }
    }
    const std::string mode = (direct ? "Direct" : "PageCache") + suffix;
    g_medians["BM_LoadBuffer" + mode] = Median(loads);
    g_medians["BM_Pread" + mode] = Median(reads);
}

// Opening the large and the small recording in turns.
void CompareOpens(const std::string& large, const std::string& small, unsigned rounds)
{
    std::vector<double> largeOpens, smallOpens;
    for (unsigned round = 0; round < rounds; ++round)
        for (int turn = 0; turn < 2; ++turn) {
            const bool openLarge = (turn == 0) == (round % 2 == 0);
            const auto start = Clock::now();
            std::unique_ptr<SetApi::Private::StreamSet> set(SetApi::Private::StreamSet::Open(openLarge ? large : small));
            (openLarge ? largeOpens : smallOpens).push_back(Seconds(start));
            benchmark::DoNotOptimize(set->GetSize());
        }
    g_medians["BM_Open100000Images"] = Median(largeOpens);
    g_medians["BM_Open100Images"] = Median(smallOpens);
}

// Hands a median measured above to the reporter as the time of one iteration.
void Report(benchmark::State& state, const std::string& name, double bytes)
{
    for (auto _ : state)
        state.SetIterationTime(g_medians.at(name));
    if (bytes > 0)
        state.SetBytesProcessed(std::int64_t(bytes) * std::int64_t(state.iterations()));
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    RTE::Logging::SetLevel(RTE::LogLevel::Error);
    const std::string folder = std::string(SETAPI_BENCH_FOLDER) + "/streamread-bench";
    RTE::FileSystem::CreateDirectory(folder);
    const std::string cameras = folder + "/Cameras4x2560x2160";
    const std::string large = folder + "/Small100000";
    const std::string small = folder + "/Small100";
    WriteRecording(cameras, kCameras, kWidth, kHeight, kImages);
    WriteRecording(large, 1, 64, 64, 100000);
    WriteRecording(small, 1, 64, 64, 100);

    WarmUp(cameras, kImages);
    CompareLoads(cameras, false, 60);
    CompareLoads(cameras, true, 30);
    CompareOpens(large, small, 41);
    // Last, since it changes the allocator for the rest of the process.
    mallopt(M_MMAP_THRESHOLD, 256 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    CompareLoads(cameras, false, 60, "Retained");

    const double imageBytes = double(kCameras) * double(kFrameBytes);
    for (const auto& entry : g_medians) {
        const std::string name = entry.first;
        const double bytes = name.rfind("BM_Open", 0) == 0 ? 0.0 : imageBytes;
        benchmark::RegisterBenchmark(name.c_str(), [name, bytes](benchmark::State& state) { Report(state, name, bytes); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("medians of interleaved rounds; goals: page cache >= 0.8, direct >= 0.9, open of 100 000 images "
                ">= 0.5 of 100 images\n");
    reporter.PrintRatio("BM_LoadBufferPageCache/iterations:1/manual_time", "BM_PreadPageCache/iterations:1/manual_time");
    reporter.PrintRatio("BM_LoadBufferPageCacheRetained/iterations:1/manual_time",
                        "BM_PreadPageCacheRetained/iterations:1/manual_time");
    reporter.PrintRatio("BM_LoadBufferDirect/iterations:1/manual_time", "BM_PreadDirect/iterations:1/manual_time");
    reporter.PrintRatio("BM_Open100000Images/iterations:1/manual_time", "BM_Open100Images/iterations:1/manual_time");
    benchmark::Shutdown();
    return 0;
}
