#include <RTE/DateTime.h>
#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <QDate>

TEST(DateTimeTest, SetTimeFormatOnAFixedDate)
{
    const RTE::C_DateTime time(2026, 11, 21, 10, 57, 59, 7);
    EXPECT_EQ(time.ToString("ddd mmm dd HH:MM:SS yy"), "Sat Nov 21 10:57:59 26");
    EXPECT_EQ(time.ToString("yyyyddmm_HHMMSS"), "20262111_105759");
    EXPECT_EQ(time.ToString("yyyy-mm-dd HH:MM:SS.zzz"), "2026-11-21 10:57:59.007");
}

TEST(DateTimeTest, LongestTokenWinsAndOtherTextIsCopied)
{
    const RTE::C_DateTime time(2001, 2, 3, 4, 5, 6, 789);
    EXPECT_EQ(time.ToString("yyy"), "01y");         // "yy" then a plain 'y'
    EXPECT_EQ(time.ToString("yyyyy"), "2001y");
    EXPECT_EQ(time.ToString("mmmm"), "Febm");
    EXPECT_EQ(time.ToString("dddd"), "Satd");
    EXPECT_EQ(time.ToString("m d H M S z"), "m d H M S z");
    EXPECT_EQ(time.ToString("zzzz"), "789z");
    EXPECT_EQ(time.ToString(""), "");
    EXPECT_EQ(time.ToString(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(DateTimeTest, WeekdaysAndMonthsAcrossTheCalendar)
{
    // Checked against Qt's calendar for a spread of dates, leap days included.
    const int dates[][3] = {{1, 1, 1}, {1900, 2, 28}, {2000, 2, 29}, {2024, 2, 29}, {2023, 12, 31}, {9999, 12, 31}};
    const char* const days[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    for (const auto& d : dates) {
        const RTE::C_DateTime time(d[0], d[1], d[2]);
        const int expected = QDate(d[0], d[1], d[2]).dayOfWeek();
        EXPECT_EQ(time.GetDayOfWeek(), expected) << d[0] << "-" << d[1] << "-" << d[2];
        EXPECT_EQ(time.ToString("ddd"), days[expected - 1]);
    }
    const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int month = 1; month <= 12; ++month)
        EXPECT_EQ(RTE::C_DateTime(2020, month, 1).ToString("mmm"), months[month - 1]);
}

TEST(DateTimeTest, InvalidPartsAreRefused)
{
    TestSupport::LogCapture log;
    EXPECT_THROW(RTE::C_DateTime(2023, 2, 29), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(1900, 2, 29), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 13, 1), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 0, 1), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(0, 1, 1), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 1, 1, 24), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 1, 1, 0, 60), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 1, 1, 0, 0, -1), RTE::VerificationFailed);
    EXPECT_THROW(RTE::C_DateTime(2023, 1, 1, 0, 0, 0, 1000), RTE::VerificationFailed);
}

TEST(DateTimeTest, NowIsTheLocalDate)
{
    const QDate before = QDate::currentDate();
    const boost::shared_ptr<RTE::C_DateTime> now = RTE::C_DateTime::Now();
    const QDate after = QDate::currentDate();
    ASSERT_TRUE(now);
    const QDate date(now->GetYear(), now->GetMonth(), now->GetDay());
    EXPECT_TRUE(date == before || date == after);
    EXPECT_EQ(now->ToString("yyyy").size(), 4u);
}
