// Image streams: appending 2560x2160 word camera images (raw and "IMX") against writing the same
// bytes with plain C stdio, and loading planes of random images against reading the same bytes
// with pread into preallocated 4 KiB-aligned memory, from the page cache and with direct I/O.
// Variants run in interleaved rounds, each round doing the same work in every variant, so that a
// busy machine or disk slows all of them alike; figures are medians over the rounds, and ratios
// are baseline time / measured time as RatioReporter prints them (1.0: as fast as the baseline).

#include <StreamIO/ImageReader.h>
#include <StreamIO/ImageWriter.h>

#include <RTE/FileSystem.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#if defined(__linux__)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

constexpr unsigned kWidth = 2560;
constexpr unsigned kHeight = 2160;
constexpr std::size_t kPlaneBytes = std::size_t(kWidth) * kHeight * 2; // 2700 blocks of 4 KiB
constexpr std::size_t kRecordBytes = 4096 + kPlaneBytes;                // raw record: header block + plane
constexpr unsigned kImagesPerFile = 8;                                    // per append operation
constexpr unsigned kReadImages = 48;                                      // images of the read streams

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
using Memory = std::unique_ptr<std::uint8_t, FreeDeleter>;

Memory Aligned(std::size_t bytes) { return Memory(static_cast<std::uint8_t*>(std::aligned_alloc(4096, bytes))); }

std::string g_folder;
Memory g_image;  // one camera image
Memory g_target; // where reads go

// A smooth background with bright blobs and a few counts of deterministic noise.
void MakeCameraImage()
{
    g_image = Aligned(kPlaneBytes);
    auto* pixels = reinterpret_cast<std::uint16_t*>(g_image.get());
    std::uint32_t state = 2463534242u;
    for (unsigned y = 0; y < kHeight; ++y)
        for (unsigned x = 0; x < kWidth; ++x) {
            double value = 800 + 0.1 * x + 0.05 * y + 300 * std::sin(x / 230.0) * std::cos(y / 170.0);
            if ((x / 64 + y / 64) % 9 == 0)
                value += 2000 * std::exp(-(std::pow(x % 64 - 32.0, 2) + std::pow(y % 64 - 32.0, 2)) / 40.0);
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            pixels[std::size_t(y) * kWidth + x] = std::uint16_t(value + int(state % 13) - 6);
        }
}

std::string StreamPath(const char* name) { return g_folder + "/" + name; }

// Variants of one operation, timed in interleaved rounds.
class Comparison {
public:
    // One operation on the given image index (reads) or round (appends).
    using Operation = std::function<void(std::uint32_t)>;

    explicit Comparison(std::size_t bytesPerOperation) : m_bytes(bytesPerOperation) {}

    void Add(const std::string& name, Operation operation) { m_variants.push_back({name, std::move(operation), {}}); }

    // Each round draws `perRound` arguments from a fixed pseudo-random walk over `range` values
    // and runs every variant on all of them.
    void Run(unsigned rounds, unsigned perRound, std::uint32_t range)
    {
        std::uint32_t walk = 1;
        for (unsigned round = 0; round < rounds; ++round) {
            std::vector<std::uint32_t> arguments;
            for (unsigned i = 0; i < perRound; ++i) {
                walk = walk * 1664525u + 1013904223u;
                arguments.push_back((walk >> 8) % range);
            }
            for (Variant& variant : m_variants) {
                const auto start = std::chrono::steady_clock::now();
                for (std::uint32_t argument : arguments)
                    variant.operation(argument);
                const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
                variant.milliseconds.push_back(elapsed.count() / perRound);
            }
        }
        for (const Variant& variant : m_variants)
            std::printf("%-28s %9.3f ms (median of %u rounds), %6.0f MB/s\n", variant.name.c_str(), Median(variant),
                        rounds, double(m_bytes) / Median(variant) / 1e3);
    }

    void PrintRatio(const std::string& measured, const std::string& baseline) const
    {
        const double m = Median(Find(measured));
        const double b = Median(Find(baseline));
        std::printf("ratio %-28s %.3f of %s (%.3f ms vs %.3f ms)\n", measured.c_str(), b / m, baseline.c_str(), m, b);
    }

private:
    struct Variant {
        std::string name;
        Operation operation;
        std::vector<double> milliseconds;
    };

    static double Median(const Variant& variant)
    {
        std::vector<double> sorted = variant.milliseconds;
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 2];
    }

    const Variant& Find(const std::string& name) const
    {
        return *std::find_if(m_variants.begin(), m_variants.end(), [&](const Variant& v) { return v.name == name; });
    }

    std::size_t m_bytes;
    std::vector<Variant> m_variants;
};

// kImagesPerFile images with a 4 KiB header each into a new file, with unbuffered C stdio.
void PlainAppend(std::uint32_t)
{
    static Memory header = Aligned(4096);
    const std::string path = StreamPath("plain.bin");
    std::remove(path.c_str());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::setvbuf(file, nullptr, _IONBF, 0);
    for (unsigned i = 0; i < kImagesPerFile; ++i) {
        benchmark::DoNotOptimize(std::fwrite(header.get(), 1, 4096, file));
        benchmark::DoNotOptimize(std::fwrite(g_image.get(), 1, kPlaneBytes, file));
    }
    std::fclose(file);
}

// The same images through a new C_ImageWriter.
Comparison::Operation StreamAppend(const char* compression)
{
    return [compression](std::uint32_t) {
        const std::string destination = StreamPath(*compression ? "append-imx" : "append-raw");
        std::remove((destination + ".ims").c_str());
        std::remove((destination + ".index.ims").c_str());
        SetApi::C_ImageWriter writer(kWidth, kHeight, 1, 1, SetApi::C_ImageWriter::Word,
                                     QString::fromLatin1(compression));
        writer.Open(QString::fromStdString(destination));
        for (unsigned i = 0; i < kImagesPerFile; ++i)
            writer.AppendFramesOfOneImage(g_image.get());
        writer.Close();
    };
}

// pread of the image's plane into the same preallocated memory; direct: through O_DIRECT.
Comparison::Operation Pread(bool direct)
{
    const std::string path = StreamPath("read-raw") + ".ims";
#if defined(__linux__)
    const int descriptor = ::open(path.c_str(), O_RDONLY | (direct ? O_DIRECT : 0));
    if (descriptor < 0) {
        std::perror(path.c_str());
        std::exit(1);
    }
    return [descriptor](std::uint32_t image) {
        const std::uint64_t offset = 4096 + std::uint64_t(image) * kRecordBytes + 4096;
        benchmark::DoNotOptimize(::pread(descriptor, g_target.get(), kPlaneBytes, off_t(offset)));
    };
#else
    std::shared_ptr<RTE::I_ReadableFile> file =
        RTE::FileSystem::OpenForReading(path, direct ? RTE::ReadMode::Direct : RTE::ReadMode::Buffered);
    return [file](std::uint32_t image) {
        const std::uint64_t offset = 4096 + std::uint64_t(image) * kRecordBytes + 4096;
        benchmark::DoNotOptimize(file->ReadAt(offset, g_target.get(), kPlaneBytes));
    };
#endif
}

// C_ImageReader::LoadPlane of the image into the same memory.
Comparison::Operation LoadPlane(const char* stream, bool direct)
{
    auto reader = std::make_shared<SetApi::C_ImageReader>();
    reader->SetDirectIo(direct);
    reader->Open(QString::fromStdString(StreamPath(stream)));
    return [reader](std::uint32_t image) {
        reader->LoadPlane(image, 0, 0, reinterpret_cast<std::uint16_t*>(g_target.get()));
    };
}

void WriteReadStreams()
{
    for (const char* compression : {"", "IMX"}) {
        SetApi::C_ImageWriter writer(kWidth, kHeight, 1, 1, SetApi::C_ImageWriter::Word,
                                     QString::fromLatin1(compression));
        writer.Open(QString::fromStdString(StreamPath(*compression ? "read-imx" : "read-raw")));
        for (unsigned i = 0; i < kReadImages; ++i) {
            reinterpret_cast<std::uint16_t*>(g_image.get())[i] = std::uint16_t(i); // images differ
            writer.AppendFramesOfOneImage(g_image.get());
        }
        writer.Close();
    }
}

} // namespace

int main()
{
    g_folder = std::string(SETAPI_BENCH_FOLDER) + "/imagestream-bench-" +
               std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    RTE::FileSystem::CreateDirectory(g_folder);
    MakeCameraImage();
    g_target = Aligned(kPlaneBytes);

    std::printf("Appending %u images of %ux%u words to a new file:\n", kImagesPerFile, kWidth, kHeight);
    Comparison appends(kImagesPerFile * kPlaneBytes);
    appends.Add("fwrite", PlainAppend);
    appends.Add("C_ImageWriter raw", StreamAppend(""));
    appends.Add("C_ImageWriter IMX", StreamAppend("IMX"));
    appends.Run(7, 1, 1);
    appends.PrintRatio("C_ImageWriter raw", "fwrite");
    appends.PrintRatio("C_ImageWriter IMX", "fwrite");

    WriteReadStreams();
    std::printf("\nLoading one plane of a random one of %u images:\n", kReadImages);
    Comparison reads(kPlaneBytes);
    reads.Add("pread, page cache", Pread(false));
    reads.Add("LoadPlane, page cache", LoadPlane("read-raw", false));
    reads.Add("pread, direct", Pread(true));
    reads.Add("LoadPlane, direct", LoadPlane("read-raw", true));
    const Comparison::Operation warm = Pread(false);
    for (std::uint32_t image = 0; image < kReadImages; ++image) // the page cache holds the raw stream
        warm(image);
    reads.Run(15, 8, kReadImages);
    reads.PrintRatio("LoadPlane, page cache", "pread, page cache");
    reads.PrintRatio("LoadPlane, direct", "pread, direct");

    // Unpacking runs on a thread team, whose spinning threads would slow the variant after it:
    // compared on its own.
    std::printf("\nLoading one plane of a random one of %u \"IMX\" images:\n", kReadImages);
    Comparison packed(kPlaneBytes);
    packed.Add("pread raw, page cache", Pread(false));
    packed.Add("LoadPlane IMX, page cache", LoadPlane("read-imx", false));
    packed.Run(9, 4, kReadImages);
    packed.PrintRatio("LoadPlane IMX, page cache", "pread raw, page cache");

    RTE::FileSystem::RemoveDirectory(g_folder);
    return 0;
}
