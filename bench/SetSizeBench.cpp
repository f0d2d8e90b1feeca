// C_Set::GetSize on a set of 100 000 buffer files: the first call lists the folder and builds the
// file map, later calls answer from the map. The baseline is listing the same folder raw with
// boost::filesystem (names only) in the same run.

#include "support/RatioReporter.h"

#include <SetApi/set/C_Set.h>

#include <boost/filesystem.hpp>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

namespace {

namespace fs = boost::filesystem;

const unsigned BufferFiles = 100000;
std::string g_setName;

void MakeSet()
{
    // Beside the build, on the disk the project lives on, not a memory file system.
    const fs::path dir = fs::current_path() / fs::unique_path("setapi-bench-size-%%%%-%%%%");
    g_setName = (dir / "Recording").generic_string();
    std::unique_ptr<SetApi::C_Set>(SetApi::C_Set::Create(g_setName, SetApi::I_Set::SET_TYPE_IMAGE, true));
    char name[32];
    for (unsigned i = 1; i <= BufferFiles; ++i) {
        std::snprintf(name, sizeof name, "/B%05u.im7", i);
        std::ofstream(g_setName + name);
    }
}

void BM_RawListFolder(benchmark::State& state)
{
    for (auto _ : state) {
        std::size_t count = 0;
        for (fs::directory_iterator it(g_setName), end; it != end; ++it)
            count += it->path().filename().native().size() > 0;
        benchmark::DoNotOptimize(count);
    }
}
BENCHMARK(BM_RawListFolder)->Unit(benchmark::kMillisecond);

void BM_GetSizeFirstCall(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<SetApi::C_Set> set(SetApi::C_Set::Open(g_setName));
        state.ResumeTiming();
        if (set->GetSize() != BufferFiles)
            state.SkipWithError("wrong size");
    }
}
BENCHMARK(BM_GetSizeFirstCall)->Unit(benchmark::kMillisecond);

void BM_GetSizeCached(benchmark::State& state)
{
    std::unique_ptr<SetApi::C_Set> set(SetApi::C_Set::Open(g_setName));
    set->GetSize();
    for (auto _ : state)
        benchmark::DoNotOptimize(set->GetSize());
}
BENCHMARK(BM_GetSizeCached);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    MakeSet();
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatio("BM_GetSizeFirstCall", "BM_RawListFolder");
    reporter.PrintRatio("BM_GetSizeCached", "BM_RawListFolder");
    fs::remove_all(fs::path(g_setName).parent_path());
    benchmark::Shutdown();
    return 0;
}
