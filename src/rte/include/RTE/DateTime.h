#pragma once
// A calendar date and time of day in local time, to the millisecond, and its text forms.

#include <RTE/Export.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace RTE {

class RTE_API C_DateTime {
public:
    // The present local time of this machine.
    static boost::shared_ptr<C_DateTime> Now();

    // month 1..12, day 1..days of that month, hour 0..23, minute 0..59, second 0..59,
    // millisecond 0..999, year 1..9999. Anything else raises RTE::VerificationFailed.
    C_DateTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
               int millisecond = 0);

    int GetYear() const { return m_year; }
    int GetMonth() const { return m_month; }
    int GetDay() const { return m_day; }
    int GetHour() const { return m_hour; }
    int GetMinute() const { return m_minute; }
    int GetSecond() const { return m_second; }
    int GetMilliSecond() const { return m_millisecond; }
    // 1 for Monday up to 7 for Sunday.
    int GetDayOfWeek() const;

    // The time as text. At each position of the format the longest of these tokens is replaced:
    //   "yyyy" year, 4 digits       "yy"  year, last 2 digits
    //   "mmm"  month, "Jan".."Dec"  "mm"  month, 2 digits
    //   "ddd"  weekday, "Mon".."Sun" "dd" day of month, 2 digits
    //   "HH"   hour 00..23          "MM"  minute, 2 digits
    //   "SS"   second, 2 digits     "zzz" milliseconds, 3 digits
    // Everything else is copied as it stands. Names are English whatever the locale, so
    // "ddd mmm dd HH:MM:SS yy" gives e.g. "Sat Nov 21 10:57:59 26".
    std::string ToString(const std::string& format) const;

    bool operator==(const C_DateTime& other) const;
    bool operator!=(const C_DateTime& other) const { return !(*this == other); }

private:
    int m_year;
    int m_month;
    int m_day;
    int m_hour;
    int m_minute;
    int m_second;
    int m_millisecond;
};

} // namespace RTE
