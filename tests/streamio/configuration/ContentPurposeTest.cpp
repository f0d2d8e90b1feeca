#include <StreamIO/ContentPurpose.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using SetApi::C_ContentPurpose;

TEST(ContentPurposeTest, FrameCountIncludesBothEnds)
{
    EXPECT_EQ(1u, C_ContentPurpose(true, false, true, 0, 0).FrameCount());
    EXPECT_EQ(5u, C_ContentPurpose(true, false, true, 3, 7).FrameCount());
    EXPECT_EQ(0u, C_ContentPurpose(true, false, true, 8, 7).FrameCount());
    const std::uint32_t max = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(1u, C_ContentPurpose(true, false, true, max, max).FrameCount());
    EXPECT_EQ(max, C_ContentPurpose(true, false, true, 1, max).FrameCount());
    // One more than the type holds saturates instead of wrapping to 0.
    EXPECT_EQ(max, C_ContentPurpose(true, false, true, 0, max).FrameCount());
}

TEST(ContentPurposeTest, LinksAndArgumentOrder)
{
    const C_ContentPurpose frame = C_ContentPurpose::CreateFrameLink(4);
    EXPECT_TRUE(frame.IsAssociatedToFrames());
    EXPECT_FALSE(frame.IsAssociatedToEntireImage());
    EXPECT_TRUE(frame.IsAssociatedToAllImages());
    EXPECT_EQ(4u, frame.StartFrame());
    EXPECT_EQ(4u, frame.EndFrame());
    EXPECT_EQ(C_ContentPurpose(true, false, true, 4, 4), frame);
    EXPECT_NE(C_ContentPurpose(true, false, true, 4, 5), frame);

    const C_ContentPurpose global = C_ContentPurpose::CreateGlobalAttributesLink();
    EXPECT_TRUE(global.IsAssociatedToEntireImage());
    EXPECT_FALSE(global.IsAssociatedToFrames());
    EXPECT_EQ(C_ContentPurpose(false, true, true, 0, 0), global);
}
