// Conversion of a recording to a plain set: a four-camera 2560 x 2160 word recording of about
// 2 GB converted in place by ConvertStreamSetToNativeSet, one buffer at a time, against a plain
// copy of the same stream files to the same disk. Both sides are timed until their bytes are
// durable: the copy reads and writes with O_DIRECT in 8 MiB pieces and ends with fdatasync; the
// conversion (which writes through the page cache) ends with a sync of the file system. The
// recording is written with direct I/O, so neither side finds it in the page cache. Each round
// records two recordings afresh (not timed), then runs one side on each, in alternating order;
// medians are compared.
//
// Options: --rounds=N (default 5), --gb=X (bytes per recording, default 2), --quick (1 round,
// 0.5 GB).

#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <QDir>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned Cameras = 4, Width = 2560, Height = 2160;
constexpr std::size_t FrameBytes = std::size_t(Width) * Height * 2;

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n == 0 ? 0.0 : n % 2 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

double ArgValue(int argc, char** argv, const char* key, double fallback)
{
    const std::size_t length = std::strlen(key);
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], key, length) == 0 && argv[i][length] == '=')
            return std::atof(argv[i] + length + 1);
    return fallback;
}

std::shared_ptr<const BufferApi::I_Buffer> MakeImage(unsigned seed)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned camera = 0; camera < Cameras; ++camera) {
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrameForOverwrite(BufferApi::DATATYPE_WORD, Width, Height, 1));
        auto* pixels = static_cast<std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
        for (std::size_t i = 0; i < std::size_t(Width) * Height; ++i)
            pixels[i] = std::uint16_t(seed * 7 + camera * 1000 + (i & 0x3ff));
        buffer->AddFrame(std::move(frame));
    }
    return std::shared_ptr<const BufferApi::I_Buffer>(buffer.release());
}

void Record(const std::string& name, unsigned images, const std::vector<std::shared_ptr<const BufferApi::I_Buffer>>& pool)
{
    SetApi::StreamSetWriter writer(8);
    writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
    for (unsigned i = 0; i < images; ++i)
        writer.Store(pool[i % pool.size()], i);
    writer.Close();
    if (writer.IsError()) {
        std::fprintf(stderr, "recording failed: %s\n", writer.GetErrorText().c_str());
        std::exit(1);
    }
}

// Copies a file with O_DIRECT on both sides, through one aligned 8 MiB piece, and syncs it.
void CopyDirect(const std::string& from, const std::string& to, char* piece, std::size_t pieceBytes)
{
    const int in = ::open(from.c_str(), O_RDONLY | O_DIRECT | O_CLOEXEC);
    const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT | O_CLOEXEC, 0644);
    if (in < 0 || out < 0) {
        std::perror("open");
        std::exit(1);
    }
    for (;;) {
        const ssize_t got = ::read(in, piece, pieceBytes);
        if (got < 0) {
            std::perror("read");
            std::exit(1);
        }
        if (got == 0)
            break;
        // The last piece of a file may be short; O_DIRECT writes whole blocks, the size is set after.
        const std::size_t rounded = (std::size_t(got) + 4095) & ~std::size_t(4095);
        if (::write(out, piece, rounded) != ssize_t(rounded)) {
            std::perror("write");
            std::exit(1);
        }
        if (std::size_t(got) < pieceBytes) {
            const off_t size = ::lseek(in, 0, SEEK_CUR);
            if (::ftruncate(out, size) != 0)
                std::perror("ftruncate");
            break;
        }
    }
    if (::fdatasync(out) != 0)
        std::perror("fdatasync");
    ::close(in);
    ::close(out);
}

double CopyStreams(const std::string& recording, const std::string& target)
{
    QDir().mkpath(QString::fromStdString(target));
    const std::size_t pieceBytes = std::size_t(8) << 20;
    char* piece = static_cast<char*>(std::aligned_alloc(4096, pieceBytes));
    const auto start = Clock::now();
    for (const QString& file : QDir(QString::fromStdString(recording)).entryList({"*.ims"}, QDir::Files))
        CopyDirect(recording + "/" + file.toStdString(), target + "/" + file.toStdString(), piece, pieceBytes);
    const double seconds = Seconds(start);
    std::free(piece);
    return seconds;
}

struct Quiet : RTE::I_ActivityFeedback {
    void SetProgress(double) override {}
    void SetStatusText(const std::string&) override {}
};
struct NoCancel : RTE::I_ActivityControl {
    bool IsCancelled() const override { return false; }
};

double Convert(const std::string& recording)
{
    NoCancel control;
    Quiet feedback;
    const auto start = Clock::now();
    SetApi::ConvertStreamSetToNativeSet(recording, control, feedback);
    const int folder = ::open(recording.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0 || ::syncfs(folder) != 0)
        std::perror("syncfs");
    ::close(folder);
    return Seconds(start);
}

} // namespace

int main(int argc, char** argv)
{
    bool quick = false;
    for (int i = 1; i < argc; ++i)
        quick = quick || std::strcmp(argv[i], "--quick") == 0;
    const unsigned rounds = unsigned(ArgValue(argc, argv, "--rounds", quick ? 1 : 5));
    const double gb = ArgValue(argc, argv, "--gb", quick ? 0.5 : 2.0);
    RTE::Logging::SetLevel(RTE::LogLevel::Error);
    const std::string folder = std::string(SETAPI_BENCH_FOLDER) + "/convert-bench";
    RTE::FileSystem::RemoveDirectory(folder);
    RTE::FileSystem::CreateDirectory(folder);

    std::vector<std::shared_ptr<const BufferApi::I_Buffer>> pool;
    for (unsigned i = 0; i < 8; ++i)
        pool.push_back(MakeImage(i));
    const unsigned images = unsigned(gb * 1e9 / double(FrameBytes * Cameras)) + 1;
    const double bytes = double(images) * double(FrameBytes * Cameras);
    std::printf("%u cameras of %u x %u words, %u images, %.2f GB per recording, %u rounds\n", Cameras, Width, Height,
                images, bytes / 1e9, rounds);

    std::vector<double> copies, conversions;
    for (unsigned round = 0; round < rounds; ++round) {
        // Two recordings, one for each side (the conversion replaces its own); which side meets
        // the disk first alternates.
        const std::string recording = folder + "/Recording", source = folder + "/Source";
        Record(recording, images, pool);
        Record(source, images, pool);
        double copy = 0, convert = 0;
        if (round % 2 == 0) {
            copy = CopyStreams(source, folder + "/Copy");
            convert = Convert(recording);
        } else {
            convert = Convert(recording);
            copy = CopyStreams(source, folder + "/Copy");
        }
        RTE::FileSystem::RemoveDirectory(source);
        RTE::FileSystem::RemoveFile(source + ".set");
        std::printf("round %u: copy %.2f s (%.0f MB/s), conversion %.2f s (%.0f MB/s)\n", round + 1, copy,
                    bytes / copy / 1e6, convert, bytes / convert / 1e6);
        std::fflush(stdout);
        copies.push_back(copy);
        conversions.push_back(convert);
        RTE::FileSystem::RemoveDirectory(folder + "/Copy");
        RTE::FileSystem::RemoveDirectory(recording);
        RTE::FileSystem::RemoveFile(recording + ".set");
    }
    const double copy = Median(copies), convert = Median(conversions);
    std::printf("median: copy %.0f MB/s, conversion %.0f MB/s\n", bytes / copy / 1e6, bytes / convert / 1e6);
    std::printf("ratio conversion %.3f of a direct copy of the stream files (goal >= 0.8)\n", copy / convert);
    RTE::FileSystem::RemoveDirectory(folder);
    return 0;
}
