#include <RTE/Exception.h>
#include <RTE/TimeSpan.h>

#include <support/TestSupport.h>

#include <cmath>
#include <limits>

using RTE::TimeSpan;

TEST(TimeSpanTest, UnitsAndConversions)
{
    EXPECT_EQ(RTE::PicoSeconds(5).ToPicoSeconds(), 5);
    EXPECT_EQ(RTE::NanoSeconds(3), RTE::PicoSeconds(3000));
    EXPECT_EQ(RTE::MicroSeconds(2), RTE::NanoSeconds(2000));
    EXPECT_EQ(RTE::MilliSeconds(7), RTE::MicroSeconds(7000));
    EXPECT_EQ(RTE::Seconds(1), RTE::MilliSeconds(1000));
    EXPECT_EQ(TimeSpan(42).ToPicoSeconds(), 42);
    EXPECT_EQ(TimeSpan().ToPicoSeconds(), 0);

    EXPECT_EQ(RTE::PicoSeconds(2999).ToNanoSeconds(), 2);
    EXPECT_EQ(RTE::PicoSeconds(-2999).ToNanoSeconds(), -2); // toward zero
    EXPECT_DOUBLE_EQ(RTE::NanoSeconds(1500).ToMicroSecondsAsDouble(), 1.5);
    EXPECT_DOUBLE_EQ(RTE::MilliSeconds(250).ToSecondsAsDouble(), 0.25);
    EXPECT_DOUBLE_EQ(RTE::MicroSeconds(250).ToMilliSecondsAsDouble(), 0.25);
}

TEST(TimeSpanTest, Arithmetic)
{
    const TimeSpan a = RTE::MicroSeconds(10);
    const TimeSpan b = RTE::MicroSeconds(4);
    EXPECT_EQ(a + b, RTE::MicroSeconds(14));
    EXPECT_EQ(b - a, RTE::MicroSeconds(-6));
    EXPECT_EQ(-a, RTE::MicroSeconds(-10));
    EXPECT_EQ(a * 0.5, RTE::MicroSeconds(5));
    EXPECT_EQ(2.0 * b, RTE::MicroSeconds(8));
    EXPECT_EQ(a / 4.0, RTE::NanoSeconds(2500));
    EXPECT_DOUBLE_EQ(a / b, 2.5);
    // Scaling rounds to the nearest picosecond, also below zero.
    EXPECT_EQ(RTE::PicoSeconds(3) * 0.5, RTE::PicoSeconds(2));
    EXPECT_EQ(RTE::PicoSeconds(10) * -0.01, RTE::PicoSeconds(0));
    EXPECT_EQ(RTE::PicoSeconds(100) * -0.016, RTE::PicoSeconds(-2));
    // Large counts keep full precision through scaling where an extended format exists.
    if (std::numeric_limits<long double>::digits >= 64) {
        const TimeSpan large(std::numeric_limits<std::int64_t>::max() - 1);
        EXPECT_EQ(large * 1.0, large);
        EXPECT_EQ(RTE::PicoSeconds(9007199254740993LL) / 1.0, RTE::PicoSeconds(9007199254740993LL));
    }

    TimeSpan sum;
    sum += a;
    sum -= b;
    EXPECT_EQ(sum, RTE::MicroSeconds(6));
}

TEST(TimeSpanTest, Orderings)
{
    const TimeSpan small = RTE::NanoSeconds(1);
    const TimeSpan big = RTE::NanoSeconds(2);
    EXPECT_TRUE(small < big);
    EXPECT_TRUE(small <= big);
    EXPECT_TRUE(small <= small);
    EXPECT_TRUE(big > small);
    EXPECT_TRUE(big >= big);
    EXPECT_TRUE(small != big);
    EXPECT_FALSE(big < small);
    EXPECT_TRUE(RTE::NanoSeconds(-1) < TimeSpan());
}

TEST(TimeSpanTest, DivisionByZeroSpanFollowsDoubleRules)
{
    EXPECT_TRUE(std::isinf(RTE::NanoSeconds(5) / TimeSpan()));
    EXPECT_GT(RTE::NanoSeconds(5) / TimeSpan(), 0.0);
    EXPECT_LT(RTE::NanoSeconds(-5) / TimeSpan(), 0.0);
    EXPECT_TRUE(std::isnan(TimeSpan() / TimeSpan()));
}

TEST(TimeSpanTest, OverflowIsRefusedNotWrapped)
{
    TestSupport::LogCapture log;
    const TimeSpan max(std::numeric_limits<std::int64_t>::max());
    const TimeSpan min(std::numeric_limits<std::int64_t>::min());
    EXPECT_THROW(max + RTE::PicoSeconds(1), RTE::VerificationFailed);
    EXPECT_THROW(min - RTE::PicoSeconds(1), RTE::VerificationFailed);
    EXPECT_THROW(RTE::PicoSeconds(0) - min, RTE::VerificationFailed);
    EXPECT_THROW(-min, RTE::VerificationFailed);
    EXPECT_THROW(max * 2.0, RTE::VerificationFailed);
    EXPECT_THROW(RTE::NanoSeconds(1) / 0.0, RTE::VerificationFailed);
    EXPECT_THROW(RTE::NanoSeconds(1) * std::nan(""), RTE::VerificationFailed);
    EXPECT_THROW(RTE::Seconds(10000000), RTE::VerificationFailed);
    EXPECT_THROW(RTE::MilliSeconds(std::numeric_limits<long long>::min()), RTE::VerificationFailed);
    EXPECT_EQ(max + min, RTE::PicoSeconds(-1));
    EXPECT_EQ(RTE::Seconds(9000000).ToSecondsAsDouble(), 9e6);
}
