// Widening a packed plane in place to a larger target: rows moved to the target's stride, the rest
// zeroed, for every element size.

#include <SetApi/stream/PlaneWidening.h>

#include <RTE/Exception.h>

#include "support/TestSupport.h"

#include <cstdint>
#include <vector>

using SetApi::Private::WidenPlane;
using TestSupport::MessageOf;

namespace {

template <typename T>
class Widening : public ::testing::Test {};

using ElementTypes = ::testing::Types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(Widening, ElementTypes);

// A target of W x H elements whose first w x h hold a packed plane of non-zero values, and garbage
// (never zero) behind it, as a reused buffer would hold.
template <typename T>
std::vector<T> PackedPlane(unsigned w, unsigned h, unsigned W, unsigned H)
{
    std::vector<T> data(std::size_t(W) * H, T(0x5A));
    for (std::size_t i = 0; i < std::size_t(w) * h; ++i)
        data[i] = T(i + 1);
    return data;
}

template <typename T>
void ExpectWidened(const std::vector<T>& data, unsigned w, unsigned h, unsigned W, unsigned H)
{
    unsigned wrong = 0;
    for (unsigned y = 0; y < H; ++y)
        for (unsigned x = 0; x < W; ++x) {
            const T want = x < w && y < h ? T(std::size_t(y) * w + x + 1) : T(0);
            wrong += data[std::size_t(y) * W + x] != want;
        }
    EXPECT_EQ(wrong, 0u) << w << "x" << h << " -> " << W << "x" << H;
}

} // namespace

TYPED_TEST(Widening, MovesRowsToTheWiderStrideAndZeroesAroundThem)
{
    using T = TypeParam;
    const struct {
        unsigned w, h, W, H;
    } cases[] = {
        {320, 240, 640, 480}, // both larger
        {5, 7, 9, 7},         // wider only: the last row overlaps its own source
        {9, 3, 9, 8},         // taller only: rows stay, the rest is zeroed
        {1, 1, 3, 2},
        {0, 4, 6, 5},         // nothing to keep
        {7, 0, 7, 2},
    };
    for (const auto& c : cases) {
        std::vector<T> data = PackedPlane<T>(c.w, c.h, c.W, c.H);
        WidenPlane(data.data(), sizeof(T), c.w, c.h, c.W, c.H);
        ExpectWidened(data, c.w, c.h, c.W, c.H);
    }
}

TYPED_TEST(Widening, LeavesAPlaneOfTheTargetSizeUntouched)
{
    using T = TypeParam;
    std::vector<T> data = PackedPlane<T>(4, 3, 4, 3);
    const std::vector<T> before = data;
    WidenPlane(data.data(), sizeof(T), 4, 3, 4, 3);
    EXPECT_EQ(data, before);
}

TEST(Widening, RefusesOtherElementSizesAndSmallerTargetsBeforeTouchingTheData)
{
    std::vector<std::uint8_t> data(64, 7);
    EXPECT_EQ(MessageOf([&] { WidenPlane(data.data(), 3, 2, 2, 4, 4); }),
              "Planes of 3-byte elements cannot be widened.");
    EXPECT_EQ(MessageOf([&] { WidenPlane(data.data(), 16, 4, 4, 4, 4); }),
              "Planes of 16-byte elements cannot be widened.");
    EXPECT_EQ(MessageOf([&] { WidenPlane(data.data(), 1, 5, 2, 4, 4); }), "A plane cannot be widened to a smaller size.");
    EXPECT_EQ(MessageOf([&] { WidenPlane(data.data(), 1, 2, 5, 4, 4); }), "A plane cannot be widened to a smaller size.");
    EXPECT_EQ(data, std::vector<std::uint8_t>(64, 7));
}
