// Writes the seed corpora: `setapi_fuzz_seeds <folder> [target]` makes <folder>/<target>/seed-NN for
// every target (or the one named), from small valid files written by the library's own writers.

#include "FuzzTargets.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: %s <folder> [target]\n", argv[0]);
        return 2;
    }
    SetApiFuzz::QuietLogging();
    int written = 0;
    for (const SetApiFuzz::Target& target : SetApiFuzz::AllTargets()) {
        if (argc == 3 && std::string(argv[2]) != target.name)
            continue;
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / target.name;
        std::filesystem::create_directories(folder);
        const auto seeds = target.seeds();
        for (std::size_t i = 0; i < seeds.size(); ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "seed-%02zu", i + 1);
            std::ofstream out(folder / name, std::ios::binary | std::ios::trunc);
            out.write(reinterpret_cast<const char*>(seeds[i].data()), std::streamsize(seeds[i].size()));
            if (!out) {
                std::fprintf(stderr, "cannot write %s\n", (folder / name).c_str());
                return 1;
            }
        }
        std::printf("%-22s %zu seeds\n", target.name, seeds.size());
        ++written;
    }
    if (written == 0) {
        std::fprintf(stderr, "no fuzz target named %s\n", argv[2]);
        return 2;
    }
    return 0;
}
