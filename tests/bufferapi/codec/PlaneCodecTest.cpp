// Round trips through every codec, element size and chunk layout, bit-exact; plus the codec
// mapping and argument checks.

#include "PlaneTestData.h"

#include "codec/PackedPlaneFormat.h"
#include "codec/PlaneCodec.h"

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>

using namespace BufferApi::Private;

namespace {

std::vector<std::uint8_t> RoundTrip(PlaneCodec codec, const std::vector<std::uint8_t>& plane, unsigned elementSize,
                                    std::size_t chunkBytes = kDefaultChunkBytes)
{
    std::vector<std::uint8_t> packed;
    PackPlane(codec, plane.data(), plane.size(), elementSize, packed, chunkBytes);
    // Exactly sized, so that ASan sees any write past the end.
    std::vector<std::uint8_t> back(plane.size());
    UnpackPlane(codec, packed.data(), packed.size(), back.data(), back.size(), elementSize);
    return back;
}

std::string Name(PlaneCodec codec)
{
    return codec == PlaneCodec::Raw ? "Raw" : codec == PlaneCodec::Zlib ? "Zlib" : "Fast";
}

class PlaneCodecRoundTrip : public ::testing::TestWithParam<std::tuple<PlaneCodec, unsigned>> {
protected:
    PlaneCodec codec() const { return std::get<0>(GetParam()); }
    unsigned elementSize() const { return std::get<1>(GetParam()); }
};

} // namespace

TEST_P(PlaneCodecRoundTrip, EveryPlaneSizeAroundTheChunks)
{
    const std::size_t chunkElements = kDefaultChunkBytes / elementSize();
    for (std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(7), chunkElements, chunkElements + 1,
                              3 * chunkElements + chunkElements / 2}) {
        const auto smooth = PlaneTestData::Smooth(count, elementSize());
        EXPECT_EQ(RoundTrip(codec(), smooth, elementSize()), smooth) << count << " elements";
        const auto random = PlaneTestData::Random(count * elementSize());
        EXPECT_EQ(RoundTrip(codec(), random, elementSize()), random) << count << " random elements";
    }
}

TEST_P(PlaneCodecRoundTrip, SmallChunksMixingStoredAndPackedOnes)
{
    // Alternating random and smooth runs put stored and packed chunks into one stream.
    const std::size_t chunkBytes = 64 * elementSize();
    std::vector<std::uint8_t> plane;
    for (unsigned run = 0; run < 9; ++run) {
        const auto part = run % 2 ? PlaneTestData::Random(chunkBytes + 3 * elementSize(), run)
                                  : PlaneTestData::Smooth(200, elementSize(), run);
        plane.insert(plane.end(), part.begin(), part.end());
    }
    EXPECT_EQ(RoundTrip(codec(), plane, elementSize(), chunkBytes), plane);
    EXPECT_EQ(RoundTrip(codec(), plane, elementSize(), elementSize()), plane) << "one element per chunk";
}

TEST_P(PlaneCodecRoundTrip, UnalignedPlanes)
{
    const auto plane = PlaneTestData::Smooth(1001, elementSize());
    std::vector<std::uint8_t> source(plane.size() + 1);
    std::memcpy(source.data() + 1, plane.data(), plane.size());
    std::vector<std::uint8_t> packed;
    PackPlane(codec(), source.data() + 1, plane.size(), elementSize(), packed, 256 * elementSize());
    std::vector<std::uint8_t> back(plane.size() + 1);
    UnpackPlane(codec(), packed.data(), packed.size(), back.data() + 1, plane.size(), elementSize());
    EXPECT_EQ(std::vector<std::uint8_t>(back.begin() + 1, back.end()), plane);
}

INSTANTIATE_TEST_SUITE_P(AllCodecsAndSizes, PlaneCodecRoundTrip,
                         ::testing::Combine(::testing::Values(PlaneCodec::Raw, PlaneCodec::Zlib, PlaneCodec::Fast),
                                            ::testing::Values(1u, 2u, 4u, 8u)),
                         [](const auto& info) {
                             return Name(std::get<0>(info.param)) + "_" + std::to_string(std::get<1>(info.param));
                         });

TEST(PlaneCodec, FloatingPointBitPatternsSurviveUnchanged)
{
    const float floats[] = {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::signaling_NaN(), std::numeric_limits<float>::infinity(),
                            -0.0f, std::numeric_limits<float>::denorm_min(), 1.5f, -2.25e30f};
    const double doubles[] = {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::signaling_NaN(), -std::numeric_limits<double>::infinity(),
                              -0.0, std::numeric_limits<double>::denorm_min(), 1.0 / 3.0, 6.02e23};
    std::vector<std::uint8_t> floatPlane, doublePlane;
    for (int repeat = 0; repeat < 500; ++repeat) {
        const std::uint32_t nanPayload = 0x7fc00000u | std::uint32_t(repeat); // NaNs with varying payloads
        const auto* f = reinterpret_cast<const std::uint8_t*>(floats);
        floatPlane.insert(floatPlane.end(), f, f + sizeof floats);
        const auto* p = reinterpret_cast<const std::uint8_t*>(&nanPayload);
        floatPlane.insert(floatPlane.end(), p, p + 4);
        const auto* d = reinterpret_cast<const std::uint8_t*>(doubles);
        doublePlane.insert(doublePlane.end(), d, d + sizeof doubles);
    }
    for (PlaneCodec codec : {PlaneCodec::Zlib, PlaneCodec::Fast}) {
        EXPECT_EQ(RoundTrip(codec, floatPlane, 4, 1024), floatPlane) << Name(codec);
        EXPECT_EQ(RoundTrip(codec, doublePlane, 8, 1024), doublePlane) << Name(codec);
    }
}

TEST(PlaneCodec, PacksSmoothDataAndStoresRandomDataWithSmallOverhead)
{
    const auto smooth = PlaneTestData::Smooth(100000, 2);
    const auto random = PlaneTestData::Random(200000);
    for (PlaneCodec codec : {PlaneCodec::Zlib, PlaneCodec::Fast}) {
        std::vector<std::uint8_t> packed;
        PackPlane(codec, smooth.data(), smooth.size(), 2, packed);
        EXPECT_LT(packed.size(), smooth.size() / 2) << Name(codec);
        PackPlane(codec, random.data(), random.size(), 2, packed);
        EXPECT_EQ(packed.size(), random.size() + PackedPlane::kHeaderBytes + PackedPlane::kTableEntryBytes)
            << Name(codec);
    }
}

TEST(PlaneCodec, OutputIsClearedAndIndependentOfItsPreviousContent)
{
    const auto plane = PlaneTestData::Smooth(5000, 2);
    for (PlaneCodec codec : {PlaneCodec::Raw, PlaneCodec::Zlib, PlaneCodec::Fast}) {
        std::vector<std::uint8_t> fresh, reused(100000, 0xAB);
        PackPlane(codec, plane.data(), plane.size(), 2, fresh, 1024);
        PackPlane(codec, plane.data(), plane.size(), 2, reused, 1024);
        EXPECT_EQ(fresh, reused) << Name(codec);
    }
}

TEST(PlaneCodec, PackTypesMapToCodecs)
{
    EXPECT_EQ(CodecForPackType(0), PlaneCodec::Raw);
    EXPECT_EQ(CodecForPackType(2), PlaneCodec::Zlib);
    for (int packType : {1, 3, 4, 255, -1, std::numeric_limits<int>::max()})
        EXPECT_EQ(CodecForPackType(packType), PlaneCodec::Fast) << packType;
}

TEST(PlaneCodec, StoredIdsMapToCodecsAndUnknownOnesAreRefused)
{
    TestSupport::LogCapture log;
    EXPECT_EQ(CodecFromStoredId(0), PlaneCodec::Raw);
    EXPECT_EQ(CodecFromStoredId(1), PlaneCodec::Zlib);
    EXPECT_EQ(CodecFromStoredId(2), PlaneCodec::Fast);
    EXPECT_EQ(TestSupport::MessageOf([] { CodecFromStoredId(3); }), "Unknown plane codec 3");
    EXPECT_THROW(CodecFromStoredId(0x101), RTE::Exception);
}

TEST(PlaneCodec, BadArgumentsAreRefused)
{
    TestSupport::LogCapture log;
    const auto plane = PlaneTestData::Smooth(64, 8);
    std::vector<std::uint8_t> out, back(plane.size());
    EXPECT_THROW(PackPlane(PlaneCodec::Fast, plane.data(), plane.size(), 3, out), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(PlaneCodec::Fast, plane.data(), 7, 2, out), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(PlaneCodec::Fast, nullptr, 8, 2, out), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(static_cast<PlaneCodec>(7), plane.data(), 8, 2, out), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(PlaneCodec::Zlib, plane.data(), plane.size(), 4, out, 6), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(PlaneCodec::Zlib, plane.data(), plane.size(), 4, out, 0), RTE::VerificationFailed);
    EXPECT_THROW(PackPlane(PlaneCodec::Zlib, plane.data(), plane.size(), 4, out, kMaxChunkBytes + 4),
                 RTE::VerificationFailed);
    PackPlane(PlaneCodec::Fast, plane.data(), plane.size(), 8, out);
    EXPECT_THROW(UnpackPlane(PlaneCodec::Fast, out.data(), out.size(), back.data(), back.size(), 5),
                 RTE::VerificationFailed);
    EXPECT_THROW(UnpackPlane(PlaneCodec::Fast, out.data(), out.size(), nullptr, back.size(), 8),
                 RTE::VerificationFailed);
}
