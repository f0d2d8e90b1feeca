// Packing into caller memory: the stream is the one PackPlane makes, it never reaches past the
// room PackedPlaneCapacity names (not even for data that does not pack), and too little room is
// refused before anything is written.

#include "PlaneTestData.h"

#include "codec/PlaneCodec.h"

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace BufferApi::Private;
using PlaneTestData::Random;
using PlaneTestData::Smooth;

TEST(PlaneCodecInto, GivesPackPlanesStreamWithinTheNamedRoom)
{
    const std::uint8_t guard = 0xA5;
    const std::size_t guardBytes = 64;
    for (const PlaneCodec codec : {PlaneCodec::Raw, PlaneCodec::Zlib, PlaneCodec::Fast}) {
        for (const bool smooth : {true, false}) {
            // 3 chunks of 4 KiB and a short last one, so that the chunk table has several entries.
            const std::vector<std::uint8_t> plane = smooth ? Smooth(6150, 2) : Random(12300);
            const std::size_t chunkBytes = 4096;
            SCOPED_TRACE(std::to_string(int(codec)) + (smooth ? " smooth" : " random"));

            std::vector<std::uint8_t> expected;
            PackPlane(codec, plane.data(), plane.size(), 2, expected, chunkBytes);

            const std::size_t capacity = PackedPlaneCapacity(codec, plane.size(), chunkBytes);
            std::vector<std::uint8_t> room(capacity + guardBytes, guard);
            const std::size_t written =
                PackPlaneInto(codec, plane.data(), plane.size(), 2, room.data(), capacity, chunkBytes);
            ASSERT_EQ(written, expected.size());
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), room.begin()));
            for (std::size_t i = capacity; i < room.size(); ++i)
                ASSERT_EQ(room[i], guard) << "written past the room at " << i;

            std::vector<std::uint8_t> back(plane.size());
            UnpackPlane(codec, room.data(), written, back.data(), back.size(), 2);
            EXPECT_TRUE(back == plane);

            std::fill(room.begin(), room.end(), guard);
            TestSupport::LogCapture log;
            EXPECT_THROW(PackPlaneInto(codec, plane.data(), plane.size(), 2, room.data(), capacity - 1, chunkBytes),
                         RTE::VerificationFailed);
            EXPECT_EQ(std::count(room.begin(), room.end(), guard), std::ptrdiff_t(room.size()));
        }
    }
}
