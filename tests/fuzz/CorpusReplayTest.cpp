// Replays every kept fuzz finding (tests/corpus/<target>/), every seed file in fuzz/seeds/<target>/
// and the seeds the library's writers make now through the fuzz targets' own bodies. A target
// body never throws and stops the process on a broken guarantee, so an input replays cleanly when
// the call returns; sanitizer builds (the asan preset) also see what the fuzzer saw.

#include "FuzzTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

using SetApiFuzz::Target;

std::vector<fs::path> FilesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (it->is_regular_file() && it->path().filename().string()[0] != '.')
            files.push_back(it->path());
    std::sort(files.begin(), files.end());
    return files;
}

bool ScratchIsEmpty()
{
    return fs::is_empty(SetApiFuzz::ScratchFolder());
}

class CorpusReplay : public ::testing::TestWithParam<Target> {};

TEST_P(CorpusReplay, KeptFindingsAndSeedFilesReplayCleanly)
{
    const Target& target = GetParam();
    const fs::path root(SETAPI_SOURCE_DIR);
    for (const fs::path& folder : {root / "tests" / "corpus" / target.name, root / "fuzz" / "seeds" / target.name})
        for (const fs::path& file : FilesIn(folder)) {
            SCOPED_TRACE(file.string());
            const SetApiFuzz::Bytes bytes = SetApiFuzz::ReadFile(file.string());
            target.run(bytes.data(), bytes.size());
            EXPECT_TRUE(ScratchIsEmpty()) << "the target left files behind";
        }
}

TEST_P(CorpusReplay, WrittenSeedsReplayCleanlyAndSoDoTheirPrefixes)
{
    const Target& target = GetParam();
    const auto seeds = target.seeds();
    ASSERT_FALSE(seeds.empty());
    for (const SetApiFuzz::Bytes& seed : seeds) {
        target.run(seed.data(), seed.size());
        // Cut short files: the commonest damage a crash leaves.
        for (std::size_t cut : {std::size_t(0), std::size_t(1), seed.size() / 3, seed.size() / 2, seed.size() - 1})
            if (cut < seed.size())
                target.run(seed.data(), cut);
    }
    EXPECT_TRUE(ScratchIsEmpty()) << "the target left files behind";
}

INSTANTIATE_TEST_SUITE_P(Targets, CorpusReplay, ::testing::ValuesIn(SetApiFuzz::AllTargets()),
                         [](const ::testing::TestParamInfo<Target>& info) { return std::string(info.param.name); });

TEST(FuzzSupport, SplitGivesExactlyTheRequestedPartsAndJoinInvertsIt)
{
    const SetApiFuzz::Bytes a{1, 2, 3}, b{}, c{4};
    const SetApiFuzz::Bytes joined = SetApiFuzz::Join({a, b, c});
    const auto parts = SetApiFuzz::Split(joined.data(), joined.size(), 3);
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(SetApiFuzz::Bytes(parts[0].data, parts[0].data + parts[0].size), a);
    EXPECT_EQ(parts[1].size, 0u);
    EXPECT_EQ(SetApiFuzz::Bytes(parts[2].data, parts[2].data + parts[2].size), c);
    // Fewer separators than parts: the rest is empty. More: the last part keeps them.
    const auto two = SetApiFuzz::Split(joined.data(), joined.size(), 2);
    EXPECT_EQ(two[0].size, 3u);
    EXPECT_EQ(two[1].data + two[1].size, joined.data() + joined.size());
    const auto four = SetApiFuzz::Split(a.data(), a.size(), 4);
    EXPECT_EQ(four[0].size, 3u);
    EXPECT_EQ(four[3].size, 0u);
}

} // namespace
