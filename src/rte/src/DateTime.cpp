#include <RTE/DateTime.h>

#include <RTE/Exception.h>

#include <QDateTime>

#include <cstring>

namespace RTE {
namespace {

const char* const MonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const DayNames[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return (month == 2 && IsLeapYear(year)) ? 29 : days[month - 1];
}

void AppendNumber(std::string& out, int value, int digits)
{
    std::string text = std::to_string(value);
    if (static_cast<int>(text.size()) < digits)
        out.append(static_cast<std::size_t>(digits) - text.size(), '0');
    out += text;
}

bool StartsWith(const std::string& text, std::size_t position, const char* token)
{
    return text.compare(position, std::strlen(token), token) == 0;
}

} // namespace

boost::shared_ptr<C_DateTime> C_DateTime::Now()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QDate date = now.date();
    const QTime time = now.time();
    return boost::shared_ptr<C_DateTime>(new C_DateTime(date.year(), date.month(), date.day(), time.hour(),
                                                        time.minute(), time.second(), time.msec()));
}

C_DateTime::C_DateTime(int year, int month, int day, int hour, int minute, int second, int millisecond)
    : m_year(year), m_month(month), m_day(day), m_hour(hour), m_minute(minute), m_second(second),
      m_millisecond(millisecond)
{
    RTE_VERIFY(year >= 1 && year <= 9999, "Year out of range 1..9999");
    RTE_VERIFY(month >= 1 && month <= 12, "Month out of range 1..12");
    RTE_VERIFY(day >= 1 && day <= DaysInMonth(year, month), "Day out of range for the month");
    RTE_VERIFY(hour >= 0 && hour <= 23, "Hour out of range 0..23");
    RTE_VERIFY(minute >= 0 && minute <= 59, "Minute out of range 0..59");
    RTE_VERIFY(second >= 0 && second <= 59, "Second out of range 0..59");
    RTE_VERIFY(millisecond >= 0 && millisecond <= 999, "Millisecond out of range 0..999");
}

int C_DateTime::GetDayOfWeek() const
{
    // Sakamoto's method on the proleptic Gregorian calendar; 0 is Sunday.
    static const int offsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const int y = m_month < 3 ? m_year - 1 : m_year;
    const int sundayBased = (y + y / 4 - y / 100 + y / 400 + offsets[m_month - 1] + m_day) % 7;
    return sundayBased == 0 ? 7 : sundayBased;
}

std::string C_DateTime::ToString(const std::string& format) const
{
    std::string out;
    out.reserve(format.size() + 8);
    std::size_t i = 0;
    while (i < format.size()) {
        if (StartsWith(format, i, "yyyy")) {
            AppendNumber(out, m_year, 4);
            i += 4;
        } else if (StartsWith(format, i, "yy")) {
            AppendNumber(out, m_year % 100, 2);
            i += 2;
        } else if (StartsWith(format, i, "mmm")) {
            out += MonthNames[m_month - 1];
            i += 3;
        } else if (StartsWith(format, i, "mm")) {
            AppendNumber(out, m_month, 2);
            i += 2;
        } else if (StartsWith(format, i, "ddd")) {
            out += DayNames[GetDayOfWeek() - 1];
            i += 3;
        } else if (StartsWith(format, i, "dd")) {
            AppendNumber(out, m_day, 2);
            i += 2;
        } else if (StartsWith(format, i, "HH")) {
            AppendNumber(out, m_hour, 2);
            i += 2;
        } else if (StartsWith(format, i, "MM")) {
            AppendNumber(out, m_minute, 2);
            i += 2;
        } else if (StartsWith(format, i, "SS")) {
            AppendNumber(out, m_second, 2);
            i += 2;
        } else if (StartsWith(format, i, "zzz")) {
            AppendNumber(out, m_millisecond, 3);
            i += 3;
        } else {
            out += format[i];
            ++i;
        }
    }
    return out;
}

bool C_DateTime::operator==(const C_DateTime& other) const
{
    return m_year == other.m_year && m_month == other.m_month && m_day == other.m_day &&
           m_hour == other.m_hour && m_minute == other.m_minute && m_second == other.m_second &&
           m_millisecond == other.m_millisecond;
}

} // namespace RTE
