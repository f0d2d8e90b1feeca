#include "ProgressLine.h"

#include <cmath>
#include <cstdio>

namespace SetApiTool {

namespace {

constexpr double BytesPerMegabyte = 1e6;

std::string Megabytes(unsigned long long bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", double(bytes) / BytesPerMegabyte);
    return text;
}

// "m:ss", or "h:mm:ss" from an hour on; beyond 99 hours the figure says nothing useful.
std::string Duration(double seconds)
{
    if (!(seconds < 99 * 3600.0))
        return ">99 h";
    const long long whole = std::llround(seconds);
    char text[32];
    if (whole >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    return text;
}

} // namespace

std::string FormatCopyProgress(const S_CopyProgress& progress)
{
    std::string text = std::to_string(progress.copiedFiles) + "/" + std::to_string(progress.totalFiles) + " files, " +
                       Megabytes(progress.copiedBytes) + "/" + Megabytes(progress.totalBytes) + " MB, ";
    if (progress.copiedBytes == 0 || progress.seconds <= 0)
        return text + "-- MB/s, -- left";
    const double rate = double(progress.copiedBytes) / progress.seconds;
    char figure[32];
    std::snprintf(figure, sizeof figure, "%.1f", rate / BytesPerMegabyte);
    const unsigned long long left =
        progress.totalBytes > progress.copiedBytes ? progress.totalBytes - progress.copiedBytes : 0;
    return text + figure + " MB/s, " + Duration(double(left) / rate) + " left";
}

ProgressLine::ProgressLine(std::ostream& out) : m_out(out) {}

ProgressLine::~ProgressLine()
{
    Finish();
}

void ProgressLine::Show(const std::string& text)
{
    m_out << '\r' << text;
    if (text.size() < m_shownLength)
        m_out << std::string(m_shownLength - text.size(), ' ');
    m_out.flush();
    m_shownLength = text.size();
    m_open = true;
}

void ProgressLine::Finish()
{
    if (!m_open)
        return;
    m_out << '\n';
    m_out.flush();
    m_open = false;
    m_shownLength = 0;
}

} // namespace SetApiTool
