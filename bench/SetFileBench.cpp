// Reading set files: the line reader and a full factory Open, against reading the same bytes and
// splitting them into lines with plain stream I/O in the same run.

#include "support/RatioReporter.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>

#include <boost/filesystem.hpp>

#include <fstream>
#include <string>

namespace {

std::string g_setName;

void MakeSetFile(int extraKeys)
{
    namespace fs = boost::filesystem;
    const fs::path dir = fs::temp_directory_path() / fs::unique_path("setapi-bench-%%%%-%%%%");
    fs::create_directories(dir);
    g_setName = (dir / "Recording").generic_string();
    SetApi::C_DataSetParameter parameters;
    parameters.SetValue("SetType", 0x1000);
    parameters.SetValue("SetComments", std::string("A recording with a \"quoted\" comment; and more"));
    for (int i = 0; i < extraKeys; ++i) {
        parameters.Add("SetExtraString" + std::to_string(i), std::string("value number ") + std::to_string(i));
        parameters.Add("SetExtraInt" + std::to_string(i), i);
    }
    SetApi::C_SetUtilities::WriteSettings(g_setName + ".set", parameters, std::string());
}

void BM_RawReadLines(benchmark::State& state)
{
    for (auto _ : state) {
        std::ifstream in(g_setName + ".set");
        std::string line;
        std::size_t bytes = 0;
        while (std::getline(in, line))
            bytes += line.size();
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(BM_RawReadLines);

void BM_ReadSetGroupVariables(benchmark::State& state)
{
    for (auto _ : state) {
        SetApi::C_DataSetParameter parameters;
        benchmark::DoNotOptimize(SetApi::C_SetUtilities::ReadSetGroupVariables(g_setName + ".set", parameters));
    }
}
BENCHMARK(BM_ReadSetGroupVariables);

void BM_FactoryOpen(benchmark::State& state)
{
    for (auto _ : state) {
        auto set = SetApi::C_SetFactory::Instance().Open(g_setName);
        benchmark::DoNotOptimize(set->IsOpen());
    }
}
BENCHMARK(BM_FactoryOpen);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    MakeSetFile(50);
    SetApiBench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatio("BM_ReadSetGroupVariables", "BM_RawReadLines");
    reporter.PrintRatio("BM_FactoryOpen", "BM_RawReadLines");
    boost::filesystem::remove_all(boost::filesystem::path(g_setName).parent_path());
    benchmark::Shutdown();
    return 0;
}
