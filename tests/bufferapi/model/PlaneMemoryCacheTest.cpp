// The cache of freed plane memory: reuse of exactly matching blocks, zero-filling on reuse when
// asked, and the limit.
#include "model/AlignedMemory.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/PlaneMemoryCache.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

using namespace BufferApi;

namespace {

// Restores the limit (and empties the cache) whatever the test did.
class PlaneMemoryCache : public ::testing::Test {
protected:
    void SetUp() override { SetPlaneMemoryCacheLimit(0); SetPlaneMemoryCacheLimit(DEFAULT_PLANE_MEMORY_CACHE_LIMIT); }
    void TearDown() override { SetPlaneMemoryCacheLimit(0); SetPlaneMemoryCacheLimit(DEFAULT_PLANE_MEMORY_CACHE_LIMIT); }
};

constexpr std::size_t kLarge = 1 << 20;

} // namespace

TEST_F(PlaneMemoryCache, ReusesAFreedBlockOfTheSameSizeAndZeroFillsItWhenAsked)
{
    void* first = nullptr;
    {
        Private::AlignedBlock block = Private::AllocateAligned(kLarge, false);
        first = block.get();
        std::memset(first, 0xAB, kLarge);
    }
    EXPECT_GE(GetPlaneMemoryCacheSize(), kLarge);

    Private::AlignedBlock again = Private::AllocateAligned(kLarge, true);
    EXPECT_EQ(again.get(), first);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(again.get()) % Private::PLANE_ALIGNMENT, 0u);
    const auto* bytes = static_cast<const unsigned char*>(again.get());
    for (std::size_t i = 0; i < kLarge; i += 4093)
        ASSERT_EQ(bytes[i], 0) << i;
    EXPECT_EQ(GetPlaneMemoryCacheSize(), 0u);

    // Another size finds nothing to reuse.
    Private::AlignedBlock other = Private::AllocateAligned(kLarge + 4096, false);
    EXPECT_NE(other.get(), first);
}

TEST_F(PlaneMemoryCache, KeepsNoMoreThanTheLimitAndNothingWithALimitOfZero)
{
    SetPlaneMemoryCacheLimit(3 * kLarge);
    {
        Private::AlignedBlock a = Private::AllocateAligned(kLarge, false);
        Private::AlignedBlock b = Private::AllocateAligned(kLarge, false);
        Private::AlignedBlock c = Private::AllocateAligned(kLarge, false);
        Private::AlignedBlock d = Private::AllocateAligned(kLarge, false);
    }
    EXPECT_LE(GetPlaneMemoryCacheSize(), 3 * kLarge);
    EXPECT_GT(GetPlaneMemoryCacheSize(), 0u);

    SetPlaneMemoryCacheLimit(0);
    EXPECT_EQ(GetPlaneMemoryCacheSize(), 0u);
    { Private::AlignedBlock e = Private::AllocateAligned(kLarge, false); }
    EXPECT_EQ(GetPlaneMemoryCacheSize(), 0u);

    // Small blocks never go to the cache.
    SetPlaneMemoryCacheLimit(DEFAULT_PLANE_MEMORY_CACHE_LIMIT);
    { Private::AlignedBlock small = Private::AllocateAligned(4096, false); }
    EXPECT_EQ(GetPlaneMemoryCacheSize(), 0u);
}

TEST_F(PlaneMemoryCache, AFrameForOverwriteStillZeroFillsWhatIsAddedLater)
{
    // Leave a dirty block of the added plane's size in the cache.
    const unsigned width = 1024, height = 512;
    {
        Private::AlignedBlock dirty = Private::AllocateAligned(std::size_t(width) * height, false);
        std::memset(dirty.get(), 0xFF, std::size_t(width) * height);
    }
    std::unique_ptr<I_FrameImage> frame(CreateImageFrameForOverwrite(DATATYPE_WORD, width, height, 1));
    const auto* added =
        static_cast<const unsigned char*>(frame->AddComponent("Extra", DATATYPE_BYTE)->GetPlane(0)->GetData());
    for (std::size_t i = 0; i < std::size_t(width) * height; i += 997)
        ASSERT_EQ(added[i], 0) << i;
}
