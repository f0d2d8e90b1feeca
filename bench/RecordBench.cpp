// Recording at camera rate: a StreamSetWriter (queue, worker thread, buffer stream writer, image
// streams with direct I/O) against a plain writer of the same bytes, for 1, 2 and 4 cameras of
// 2560 x 2160 words and for 1024 x 1024 words. Each run writes a few GB and is timed from Create
// until Close returns, when the streams are durable on disk. The plain writer writes one file per
// camera with O_DIRECT pwrite of the planes one after the other from the same buffers, one thread
// per file, and fdatasync at the end; one thread per file because the writer under test writes
// the cameras of an image in parallel, and without a meeting point per image, so the baseline is
// the better of the two ways a simple program could do it. Both sides run in the same rounds,
// interleaved, and their medians are compared. A third figure, "StreamsOnly", writes the same
// images through one C_ImageWriter with direct I/O per camera, one thread each, without queue and
// buffer stream writer: it tells the cost of the stream format (record headers) from that of the
// layers above it. A fourth, "SetWriter", records the same buffers into a plain set (one buffer
// file per image, unpacked, direct I/O, folder synced at Close) with a SetWriter of two threads
// and the same queue size, in the same rounds and against the same plain writer.
//
// Also measured: the CPU time (user + system of the whole process, getrusage) per GB recorded,
// against memcpy of the same bytes; and the peak resident memory of a run ten times longer than
// the queue, for both writers, with a producer that makes a fresh buffer per image faster than
// the disk takes them. What may be in memory at the peak is spelled out: the images in the queue,
// those being written (the stream writer's worker has taken its image out of the queue; a
// SetWriter thread keeps its queue place until its image is written), the one in the producer's
// hand while it waits for a place, and the blocks the plane memory cache keeps for reuse. The rise
// is compared with the queue's budget (queue size x buffer bytes) plus 32 MiB and with the budget
// of two images more plus 32 MiB.
//
// Files go beside the build (a temp folder may be in memory) and are removed after each run.
// Options: --rounds=N (default 5), --gb=X (bytes per run, default 2), --quick (1 round, 0.5 GB),
// --only=<configuration> (e.g. 1x2560x2160), --no-memory (skip the peak memory runs), --memory-only
// (with --only and --writer=stream|set: one peak memory run, as the main program starts them).

#include "support/RatioReporter.h"

#include <SetApi/factory/SetWriter.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <StreamIO/ImageWriter.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/PlaneMemoryCache.h>

#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n == 0 ? 0.0 : n % 2 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

// User + system CPU seconds of the whole process so far.
double CpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// A field of /proc/self/status in kB ("VmRSS", "VmHWM").
std::uint64_t StatusKb(const char* field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string key = std::string(field) + ":";
    while (std::getline(status, line))
        if (line.compare(0, key.size(), key) == 0)
            return std::strtoull(line.c_str() + key.size(), nullptr, 10);
    return 0;
}

// Sets the peak resident size back to the present one.
bool ResetPeakRss()
{
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return bool(clear);
}

struct Config {
    std::string name;
    unsigned cameras;
    unsigned width;
    unsigned height;
    std::size_t FrameBytes() const { return std::size_t(width) * height * 2; }
    std::size_t ImageBytes() const { return FrameBytes() * cameras; }
};

// A buffer of one word frame per camera, every pixel written (as a camera does).
std::shared_ptr<const BufferApi::I_Buffer> MakeBuffer(const Config& config, unsigned seed)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned camera = 0; camera < config.cameras; ++camera) {
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrameForOverwrite(BufferApi::DATATYPE_WORD, config.width, config.height, 1));
        auto* pixels = static_cast<std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
        const std::size_t count = std::size_t(config.width) * config.height;
        const std::uint16_t base = std::uint16_t(seed * 7 + camera * 1000);
        for (std::size_t i = 0; i < count; ++i)
            pixels[i] = std::uint16_t(base + (i & 0x3ff));
        buffer->AddFrame(std::move(frame));
    }
    return std::shared_ptr<const BufferApi::I_Buffer>(buffer.release());
}

const void* PlaneOf(const BufferApi::I_Buffer& buffer, unsigned camera)
{
    const auto& frame = dynamic_cast<const BufferApi::I_FrameImage&>(*buffer.GetFrame(camera));
    return frame.GetPixelPlane(0)->GetData();
}

void RemoveRecording(const std::string& name)
{
    RTE::FileSystem::RemoveDirectory(name);
    if (RTE::FileSystem::Exists(name + ".set"))
        RTE::FileSystem::RemoveFile(name + ".set");
}

struct Run {
    double seconds = 0;
    double cpu = 0;
};

// The recording under test: Create, `images` stores of buffers taken in turn from the pool, Close.
Run Record(const std::string& name, const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool,
           unsigned images, unsigned queueSize, bool* waited = nullptr)
{
    RemoveRecording(name);
    const double cpu = CpuSeconds();
    const auto start = Clock::now();
    {
        SetApi::StreamSetWriter writer(queueSize);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        for (unsigned image = 0; image < images; ++image)
            writer.Store(pool[image % pool.size()], image);
        writer.Close();
        if (writer.IsError())
            std::printf("recording failed: %s\n", writer.GetErrorText().c_str());
        if (waited)
            *waited = writer.HasWaitedOnFullQueue();
    }
    Run run{Seconds(start), CpuSeconds() - cpu};
    RemoveRecording(name);
    return run;
}

// The same recording into a plain set through a SetWriter: one unpacked buffer file per image,
// written by the writer's threads with direct I/O; Close returns when the files and their names
// are durable. The time ends there: the destructor only repeats Close.
Run RecordSetWriter(const std::string& name, const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool,
                    unsigned images, unsigned queueSize, unsigned threads)
{
    RemoveRecording(name);
    const double cpu = CpuSeconds();
    const auto start = Clock::now();
    Run run;
    {
        SetApi::SetWriter writer(queueSize, threads);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        try {
            for (unsigned image = 0; image < images; ++image)
                writer.Store(pool[image % pool.size()], image);
        } catch (const std::exception& e) {
            std::printf("set writer refused a buffer: %s\n", e.what());
        }
        writer.Close();
        run = Run{Seconds(start), CpuSeconds() - cpu};
        if (writer.IsError())
            std::printf("set writer failed: %s\n", writer.GetErrorText().c_str());
    }
    RemoveRecording(name);
    return run;
}

// The plain writer: per camera one file and one thread, O_DIRECT pwrite of each plane, fdatasync.
Run PlainWrite(const std::string& folder, const Config& config,
               const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool, unsigned images)
{
    RTE::FileSystem::RemoveDirectory(folder);
    const double cpu = CpuSeconds();
    const auto start = Clock::now();
    RTE::FileSystem::CreateDirectory(folder);
    std::vector<std::thread> threads;
    for (unsigned camera = 0; camera < config.cameras; ++camera)
        threads.emplace_back([&, camera] {
            const std::string path = folder + "/Camera" + std::to_string(camera) + ".raw";
            const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT | O_CLOEXEC, 0644);
            if (fd < 0) {
                std::perror(path.c_str());
                std::exit(1);
            }
            std::uint64_t offset = 0;
            for (unsigned image = 0; image < images; ++image) {
                const char* plane = static_cast<const char*>(PlaneOf(*pool[image % pool.size()], camera));
                std::size_t done = 0;
                while (done < config.FrameBytes()) {
                    const ssize_t put = ::pwrite(fd, plane + done, config.FrameBytes() - done, off_t(offset + done));
                    if (put <= 0) {
                        std::perror("pwrite");
                        std::exit(1);
                    }
                    done += std::size_t(put);
                }
                offset += done;
            }
            if (::fdatasync(fd) != 0 || ::close(fd) != 0) {
                std::perror("fdatasync");
                std::exit(1);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    Run run{Seconds(start), CpuSeconds() - cpu};
    RTE::FileSystem::RemoveDirectory(folder);
    return run;
}

// The image streams alone, without queue and buffer stream writer: one C_ImageWriter with direct
// I/O per camera, one thread per camera, as the plain writer.
Run StreamsOnly(const std::string& folder, const Config& config,
                const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool, unsigned images)
{
    RTE::FileSystem::RemoveDirectory(folder);
    const double cpu = CpuSeconds();
    const auto start = Clock::now();
    RTE::FileSystem::CreateDirectory(folder);
    std::vector<std::thread> threads;
    for (unsigned camera = 0; camera < config.cameras; ++camera)
        threads.emplace_back([&, camera] {
            SetApi::C_ImageWriter writer(config.width, config.height, 1, 1, SetApi::C_ImageWriter::Word, QString());
            writer.SetDirectIo(true);
            writer.Open(QString::fromStdString(folder + "/Camera" + std::to_string(camera)));
            for (unsigned image = 0; image < images; ++image)
                writer.AppendFramesOfOneImage(PlaneOf(*pool[image % pool.size()], camera));
            writer.Close();
        });
    for (std::thread& thread : threads)
        thread.join();
    Run run{Seconds(start), CpuSeconds() - cpu};
    RTE::FileSystem::RemoveDirectory(folder);
    return run;
}

// memcpy of the same bytes from the pool's planes into one frame of memory.
Run Copy(const Config& config, const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool, unsigned images)
{
    std::unique_ptr<char[]> target(new char[config.FrameBytes()]);
    std::memset(target.get(), 1, config.FrameBytes());
    const double cpu = CpuSeconds();
    const auto start = Clock::now();
    for (unsigned image = 0; image < images; ++image)
        for (unsigned camera = 0; camera < config.cameras; ++camera) {
            std::memcpy(target.get(), PlaneOf(*pool[image % pool.size()], camera), config.FrameBytes());
            benchmark::ClobberMemory();
        }
    return Run{Seconds(start), CpuSeconds() - cpu};
}

std::map<std::string, double> g_medians;

void Report(benchmark::State& state, const std::string& name, double bytes)
{
    for (auto _ : state)
        state.SetIterationTime(g_medians.at(name));
    state.SetBytesProcessed(std::int64_t(bytes) * std::int64_t(state.iterations()));
}

enum class Writer { Stream, Set };

constexpr unsigned kSetWriterThreads = 2;

const char* NameOf(Writer writer) { return writer == Writer::Stream ? "StreamSetWriter" : "SetWriter"; }

// What the writers own at most at once, in images, besides the one in the producer's hand: the
// stream writer's queue plus the image its worker has taken out of it; the SetWriter's queue
// places only, since a thread gives its place back after its image is written.
unsigned ImagesHeldByWriter(Writer writer, unsigned queueSize)
{
    return writer == Writer::Stream ? queueSize + 1 : queueSize;
}

double Mib(double bytes) { return bytes / double(1 << 20); }

// Peak resident memory of a recording whose producer makes a fresh buffer per image.
void MeasurePeakMemory(const std::string& folder, const Config& config, unsigned queueSize, Writer kind)
{
    const unsigned images = 10 * queueSize;
    const std::string name = folder + "/Memory" + config.name;
    RemoveRecording(name);
    const std::size_t cacheBefore = BufferApi::GetPlaneMemoryCacheSize();
    const std::uint64_t rssBefore = StatusKb("VmRSS");
    const bool reset = ResetPeakRss();
    bool waited = false;
    std::size_t cacheMax = 0, fillMax = 0;
    const auto start = Clock::now();
    {
        std::unique_ptr<SetApi::StreamSetWriter> stream;
        std::unique_ptr<SetApi::SetWriter> plain;
        SetApi::I_SetWriter* writer = nullptr;
        if (kind == Writer::Stream)
            writer = (stream = std::make_unique<SetApi::StreamSetWriter>(queueSize)).get();
        else
            writer = (plain = std::make_unique<SetApi::SetWriter>(queueSize, kSetWriterThreads)).get();
        writer->Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        try {
            for (unsigned image = 0; image < images; ++image) {
                std::shared_ptr<const BufferApi::I_Buffer> buffer = MakeBuffer(config, image);
                const std::size_t fill = writer->GetFillLevel();
                fillMax = std::max(fillMax, fill);
                // A SetWriter has no record of waits: a full queue now means this Store waits.
                if (plain && fill >= queueSize)
                    waited = true;
                writer->Store(std::move(buffer), image);
                cacheMax = std::max(cacheMax, BufferApi::GetPlaneMemoryCacheSize());
            }
        } catch (const std::exception& e) {
            std::printf("%s refused a buffer: %s\n", NameOf(kind), e.what());
        }
        if (stream) {
            stream->Close();
            waited = stream->HasWaitedOnFullQueue();
            fillMax = stream->GetMaxQueueSize();
        } else {
            plain->Close();
        }
        if (writer->IsError())
            std::printf("recording failed: %s\n", writer->GetErrorText().c_str());
    }
    const double seconds = Seconds(start);
    const std::uint64_t peak = StatusKb("VmHWM");
    const std::size_t cacheAfter = BufferApi::GetPlaneMemoryCacheSize();
    RemoveRecording(name);
    const double image = Mib(double(config.ImageBytes()));
    const double rise = (double(peak) - double(rssBefore)) / 1024.0;
    const double queueBudget = double(queueSize) * image + 32.0;
    const double widerBudget = double(queueSize + 2) * image + 32.0;
    const unsigned held = ImagesHeldByWriter(kind, queueSize) + 1;
    const char* label = config.name.c_str();
    std::printf("memory %-15s %-12s queue %u x %.1f MiB, %u images in %.2f s, waited on full queue: %s, fullest "
                "queue %zu; resident before %.1f MiB, peak %.1f MiB%s\n",
                NameOf(kind), label, queueSize, image, images, seconds, waited ? "yes" : "no", fillMax,
                double(rssBefore) / 1024.0, double(peak) / 1024.0,
                reset ? "" : " (peak not reset: /proc/self/clear_refs refused)");
    if (kind == Writer::Stream)
        std::printf("memory %-15s %-12s at the peak: queue %u images (%.1f MiB) + 1 the worker writes, out of the "
                    "queue (%.1f MiB) + 1 in the producer's hand while it waits (%.1f MiB) = %u images, %.1f MiB\n",
                    NameOf(kind), label, queueSize, queueSize * image, image, image, held, held * image);
    else
        std::printf("memory %-15s %-12s at the peak: %u queue places (%.1f MiB), of which up to %u hold the images "
                    "the threads write (a place is freed once its image is written) + 1 in the producer's hand "
                    "while it waits (%.1f MiB) = %u images, %.1f MiB\n",
                    NameOf(kind), label, queueSize, queueSize * image, kSetWriterThreads, image, held, held * image);
    std::printf("memory %-15s %-12s plane memory cache: limit %.1f MiB, held %.1f MiB before, at most %.1f MiB "
                "during, %.1f MiB after (counted in the resident size)\n",
                NameOf(kind), label, Mib(double(BufferApi::GetPlaneMemoryCacheLimit())), Mib(double(cacheBefore)),
                Mib(double(cacheMax)), Mib(double(cacheAfter)));
    std::printf("memory %-15s %-12s peak RSS rise %.1f MiB: against queue budget + 32 MiB = %.1f MiB %s; against "
                "(queue + 2 images) + 32 MiB = %.1f MiB %s; holds: %s\n",
                NameOf(kind), label, rise, queueBudget, rise <= queueBudget ? "within" : "OVER", widerBudget,
                rise <= widerBudget ? "within" : "OVER",
                rise <= queueBudget   ? "both"
                : rise <= widerBudget ? "(queue + 2 images) + 32 MiB only"
                                      : "neither");
}

double ArgValue(int argc, char** argv, const char* key, double fallback)
{
    const std::string prefix = std::string(key) + "=";
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0)
            return std::atof(argv[i] + prefix.size());
    return fallback;
}

bool HasArg(int argc, char** argv, const char* key)
{
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], key) == 0)
            return true;
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string self = argv[0];
    const bool quick = HasArg(argc, argv, "--quick");
    const unsigned rounds = unsigned(ArgValue(argc, argv, "--rounds", quick ? 1 : 5));
    const double gb = ArgValue(argc, argv, "--gb", quick ? 0.5 : 2.0);
    const bool skipMemory = HasArg(argc, argv, "--no-memory");
    const bool memoryOnly = HasArg(argc, argv, "--memory-only");
    benchmark::Initialize(&argc, argv);
    RTE::Logging::SetLevel(RTE::LogLevel::Error);
    const std::string folder = std::string(SETAPI_BENCH_FOLDER) + "/record-bench";
    RTE::FileSystem::CreateDirectory(folder);

    const std::vector<Config> configs = {
        {"1x2560x2160", 1, 2560, 2160},
        {"2x2560x2160", 2, 2560, 2160},
        {"4x2560x2160", 4, 2560, 2160},
        {"1x1024x1024", 1, 1024, 1024},
        {"4x1024x1024", 4, 1024, 1024},
    };
    constexpr unsigned kQueue = 16;
    constexpr unsigned kPool = 24; // more than the queue holds, and more than the caches hold
    std::map<std::string, double> bytesOf;
    std::map<std::string, std::vector<double>> seconds, cpu;
    std::string only;
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], "--only=", 7) == 0)
            only = argv[i] + 7;
    // Each peak memory run in a process of its own: memory that the allocator keeps after one run
    // would be reused by the next and hide its peak.
    const std::vector<std::pair<std::size_t, unsigned>> memoryRuns = {{0, kQueue}, {2, 8}, {3, kQueue}};
    if (memoryOnly) {
        const Writer kind = HasArg(argc, argv, "--writer=set") ? Writer::Set : Writer::Stream;
        for (const auto& run : memoryRuns)
            if (configs[run.first].name == only)
                MeasurePeakMemory(folder, configs[run.first], run.second, kind);
        return 0;
    }
    for (const Config& config : configs) {
        if ((!only.empty() && config.name != only) || memoryOnly)
            continue;
        std::vector<std::shared_ptr<const BufferApi::I_Buffer>> pool;
        for (unsigned i = 0; i < kPool; ++i)
            pool.push_back(MakeBuffer(config, i));
        const unsigned images = unsigned(gb * 1e9 / double(config.ImageBytes())) + 1;
        const double bytes = double(images) * double(config.ImageBytes());
        std::printf("%s: %u images, %.2f GB per run, %u rounds\n", config.name.c_str(), images, bytes / 1e9, rounds);
        std::fflush(stdout);
        const std::string record = "BM_Record" + config.name, plain = "BM_PlainDirect" + config.name,
                          copy = "BM_Memcpy" + config.name, streams = "BM_StreamsOnly" + config.name,
                          setWriter = "BM_SetWriter" + config.name;
        bytesOf[record] = bytesOf[plain] = bytesOf[copy] = bytesOf[streams] = bytesOf[setWriter] = bytes;
        for (unsigned round = 0; round < rounds; ++round) {
            // The two writers under test and the plain writer take turns, each round starting
            // with the next one, so that none of them always finds the disk after the same one.
            for (unsigned turn = 0; turn < 3; ++turn) {
                const unsigned which = (round + turn) % 3;
                const Run run = which == 0 ? Record(folder + "/Recording", pool, images, kQueue)
                                : which == 1
                                    ? RecordSetWriter(folder + "/PlainSet", pool, images, kQueue, kSetWriterThreads)
                                    : PlainWrite(folder + "/Plain", config, pool, images);
                const std::string& key = which == 0 ? record : which == 1 ? setWriter : plain;
                seconds[key].push_back(run.seconds);
                cpu[key].push_back(run.cpu);
            }
            const Run run = Copy(config, pool, images);
            seconds[copy].push_back(run.seconds);
            cpu[copy].push_back(run.cpu);
            const Run streamRun = StreamsOnly(folder + "/Streams", config, pool, images);
            seconds[streams].push_back(streamRun.seconds);
            cpu[streams].push_back(streamRun.cpu);
            std::printf("  round %u: record %.3f s, set writer %.3f s, plain %.3f s, streams only %.3f s\n",
                        round + 1, seconds[record].back(), seconds[setWriter].back(), seconds[plain].back(),
                        seconds[streams].back());
            std::fflush(stdout);
        }
    }
    for (const auto& entry : seconds)
        g_medians[entry.first] = Median(entry.second);

    for (const auto& entry : g_medians) {
        const std::string name = entry.first;
        const double bytes = bytesOf[name];
        benchmark::RegisterBenchmark(name.c_str(), [name, bytes](benchmark::State& state) { Report(state, name, bytes); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("medians of %u interleaved rounds; goal: recording >= 0.95 of the plain direct writer (floor 0.9); "
                "set writer: %u threads, queue %u, unpacked\n",
                rounds, kSetWriterThreads, kQueue);
    for (const Config& config : configs)
        if (only.empty() || config.name == only) {
            reporter.PrintRatio("BM_Record" + config.name + "/iterations:1/manual_time",
                                "BM_PlainDirect" + config.name + "/iterations:1/manual_time");
            reporter.PrintRatio("BM_SetWriter" + config.name + "/iterations:1/manual_time",
                                "BM_PlainDirect" + config.name + "/iterations:1/manual_time");
            reporter.PrintRatio("BM_StreamsOnly" + config.name + "/iterations:1/manual_time",
                                "BM_PlainDirect" + config.name + "/iterations:1/manual_time");
        }
    std::printf("CPU time (user + system, whole process) per GB; goal: recording <= 1.5 x memcpy\n");
    for (const Config& config : configs) {
        if (!only.empty() && config.name != only)
            continue;
        const double bytes = bytesOf["BM_Record" + config.name] / 1e9;
        const double record = Median(cpu["BM_Record" + config.name]) / bytes;
        const double plain = Median(cpu["BM_PlainDirect" + config.name]) / bytes;
        const double copy = Median(cpu["BM_Memcpy" + config.name]) / bytes;
        const double streams = Median(cpu["BM_StreamsOnly" + config.name]) / bytes;
        const double setWriter = Median(cpu["BM_SetWriter" + config.name]) / bytes;
        std::printf("cpu %-12s record %.3f s/GB, set writer %.3f s/GB, streams only %.3f s/GB, plain direct %.3f "
                    "s/GB, memcpy %.3f s/GB: record = %.2f x memcpy, set writer = %.2f x memcpy, streams only = %.2f "
                    "x memcpy\n",
                    config.name.c_str(), record, setWriter, streams, plain, copy, copy > 0 ? record / copy : 0.0,
                    copy > 0 ? setWriter / copy : 0.0, copy > 0 ? streams / copy : 0.0);
    }
    if (!skipMemory) {
        std::printf("peak memory, producer making a fresh buffer per image; goal: rise <= queue budget + 32 MiB\n");
        std::fflush(stdout);
        for (const auto& run : memoryRuns)
            for (const char* writer : {"stream", "set"}) {
                const std::string command =
                    "'" + self + "' --memory-only --writer=" + writer + " --only=" + configs[run.first].name;
                if (std::system(command.c_str()) != 0)
                    std::printf("memory run failed: %s\n", command.c_str());
                std::fflush(stdout);
            }
    }
    benchmark::Shutdown();
    return 0;
}
