// Repair of a damaged recording takes the same time whatever the number of images: it rewrites the
// configuration, removes the files of the dropped streams and opens the streams again, and never
// reads an image. Recordings of 1 000, 10 000 and 100 000 small images (one 8 x 8 camera, with
// attributes) lose their scale file; the repair is timed (median of several repairs, each on a
// freshly damaged copy of the configuration) and the ratio of the largest to the smallest time is
// printed, next to the time of a plain rewrite of the configuration file as the raw baseline.
//
// Options: --images=N (largest recording, default 100000).

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/stream/BufferStreamWriter.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

struct Yes : SetApi::RepairCorruptStreamSetDialog {
    void AddCorruption(const QString&) override {}
    void SetConsequences(const QStringList&) override {}
    bool ConfirmRepair() override { return true; }
    void ReportRepairFailure(const std::string&, const QString& message) override
    {
        std::fprintf(stderr, "repair failed: %s\n", message.toStdString().c_str());
    }
};

void Record(const std::string& name, unsigned images)
{
    SetApi::BufferStreamWriter writer(QString::fromStdString(name), SetApi::I_Set::SET_TYPE_IMAGE,
                                      BufferApi::BUFFER_PACK_NONE);
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 8, 8, 1)));
    for (unsigned i = 0; i < images; ++i) {
        BufferApi::C_BufferAttributes(buffer.get()).SetString("ImageIndex", std::to_string(i));
        writer.Store(buffer.get());
    }
}

// Times repairs of the recording, each after putting back the original configuration and
// removing the scale file again.
double TimeRepair(const std::string& name, unsigned repeats, double& rewrite)
{
    const QString configurationPath = SetApi::GetStreamSetConfigurationName(QString::fromStdString(name));
    const SetApi::Private::C_ReaderConfiguration original = SetApi::Private::LoadReaderConfiguration(configurationPath);
    std::vector<double> times, rewrites;
    for (unsigned r = 0; r < repeats; ++r) {
        SetApi::Private::SaveReaderConfiguration(original, configurationPath);
        for (const QString& file : QDir(QString::fromStdString(name)).entryList({"*.scales"}, QDir::Files))
            QFile::remove(QString::fromStdString(name) + "/" + file);
        const auto start = Clock::now();
        Yes yes;
        SetApi::RepairCorruptStreamSet(SetApi::C_SetFactory::Instance().Open(name), yes);
        times.push_back(Seconds(start));
        const auto again = Clock::now();
        SetApi::Private::SaveReaderConfiguration(original, configurationPath);
        rewrites.push_back(Seconds(again));
    }
    rewrite = Median(rewrites);
    return Median(times);
}

} // namespace

int main(int argc, char** argv)
{
    unsigned largest = 100000;
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], "--images=", 9) == 0)
            largest = unsigned(std::atoi(argv[i] + 9));
    RTE::Logging::SetLevel(RTE::LogLevel::Off);
    const std::string folder = std::string(SETAPI_BENCH_FOLDER) + "/repair-bench";
    RTE::FileSystem::RemoveDirectory(folder);
    RTE::FileSystem::CreateDirectory(folder);
    std::vector<unsigned> counts;
    for (unsigned n = std::max(1u, largest / 100); n <= largest; n *= 10)
        counts.push_back(n);
    std::vector<double> times;
    for (const unsigned images : counts) {
        const std::string name = folder + "/Run" + std::to_string(images);
        const auto start = Clock::now();
        Record(name, images);
        const double recorded = Seconds(start);
        double rewrite = 0;
        const double repair = TimeRepair(name, 7, rewrite);
        times.push_back(repair);
        std::printf("%7u images (recorded in %.1f s): repair %.2f ms, rewrite of the configuration alone %.2f ms\n",
                    images, recorded, repair * 1e3, rewrite * 1e3);
        std::fflush(stdout);
        RTE::FileSystem::RemoveDirectory(name);
        RTE::FileSystem::RemoveFile(name + ".set");
    }
    std::printf("ratio repair time at %u images / at %u images: %.2f (goal: about 1, independent of the count)\n",
                counts.back(), counts.front(), times.back() / times.front());
    RTE::FileSystem::RemoveDirectory(folder);
    return 0;
}
