#include <RTE/Exception.h>
#include <RTE/IndexRange.h>
#include <RTE/Scale.h>

#include <support/TestSupport.h>

#include <limits>

TEST(ScaleTest, DefaultIsIdentityAndApplyIsLinear)
{
    const RTE::S_Scale identity;
    EXPECT_EQ(identity.factor, 1.0);
    EXPECT_EQ(identity.offset, 0.0);
    EXPECT_TRUE(identity.unit.isEmpty());
    EXPECT_DOUBLE_EQ(identity.Apply(12.5), 12.5);

    const RTE::S_Scale mm(0.5, -3.0, QStringLiteral("mm"), QStringLiteral("position"));
    EXPECT_DOUBLE_EQ(mm.Apply(10.0), 2.0);
    EXPECT_EQ(mm, RTE::S_Scale(0.5, -3.0, QStringLiteral("mm"), QStringLiteral("position")));
    EXPECT_NE(mm, RTE::S_Scale(0.5, -3.0, QStringLiteral("mm"), QStringLiteral("x")));
    EXPECT_NE(mm, RTE::S_Scale(0.5, -3.0, QStringLiteral("m"), QStringLiteral("position")));
    EXPECT_NE(mm, RTE::S_Scale(0.5, 3.0, QStringLiteral("mm"), QStringLiteral("position")));
}

TEST(IndexRangeTest, CountAndContains)
{
    const RTE::C_IndexRange range(2, 10, 3); // 2, 5, 8
    EXPECT_EQ(range.GetFirst(), 2u);
    EXPECT_EQ(range.GetLast(), 10u);
    EXPECT_EQ(range.GetStep(), 3u);
    EXPECT_EQ(range.Count(), 3u);
    EXPECT_TRUE(range.Contains(2));
    EXPECT_TRUE(range.Contains(8));
    EXPECT_FALSE(range.Contains(10));
    EXPECT_FALSE(range.Contains(1));
    EXPECT_FALSE(range.Contains(11));

    EXPECT_EQ(RTE::C_IndexRange(4, 4, 1).Count(), 1u);
    EXPECT_EQ(RTE::C_IndexRange().Count(), 1u);
    const RTE::C_IndexRange empty(5, 4, 1);
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Count(), 0u);
    EXPECT_FALSE(empty.Contains(4));

    const std::uint64_t max = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(RTE::C_IndexRange(0, max, 1).Count(), max); // saturates
    EXPECT_EQ(RTE::C_IndexRange(1, max, 1).Count(), max);
    EXPECT_EQ(RTE::C_IndexRange(0, max, max).Count(), 2u);
    EXPECT_TRUE(RTE::C_IndexRange(0, max, max).Contains(max));
}

TEST(IndexRangeTest, EqualityAndZeroStep)
{
    TestSupport::LogCapture log;
    EXPECT_EQ(RTE::C_IndexRange(1, 9, 2), RTE::C_IndexRange(1, 9, 2));
    EXPECT_NE(RTE::C_IndexRange(1, 9, 2), RTE::C_IndexRange(1, 9, 4));
    EXPECT_NE(RTE::C_IndexRange(1, 9, 2), RTE::C_IndexRange(0, 9, 2));
    EXPECT_THROW(RTE::C_IndexRange(0, 5, 0), RTE::VerificationFailed);
}
