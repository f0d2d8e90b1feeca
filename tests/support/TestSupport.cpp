#include "TestSupport.h"

#include <boost/filesystem.hpp>

#include <cstring>
#include <fstream>
#include <sstream>

namespace TestSupport {

TempDir::TempDir()
{
    namespace fs = boost::filesystem;
    const fs::path base = fs::temp_directory_path() / fs::unique_path("setapi-test-%%%%-%%%%-%%%%");
    fs::create_directories(base);
    m_path = base.generic_string();
}

TempDir::~TempDir()
{
    boost::system::error_code ignored;
    boost::filesystem::remove_all(m_path, ignored);
}

LogCapture::LogCapture(RTE::LogLevel from) : m_previousLevel(RTE::Logging::GetLevel())
{
    RTE::Logging::SetLevel(from);
    RTE::Logging::SetSink([this](RTE::LogLevel level, const std::string& logger, const std::string& text) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back({level, logger, text});
    });
}

LogCapture::~LogCapture()
{
    RTE::Logging::SetSink({});
    RTE::Logging::SetLevel(m_previousLevel);
}

std::vector<LogCapture::Line> LogCapture::lines() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

bool LogCapture::contains(const std::string& logger, const std::string& textPart) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const Line& line : m_lines)
        if (line.logger == logger && line.text.find(textPart) != std::string::npos)
            return true;
    return false;
}

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double DoubleFromBits(std::uint64_t bits)
{
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

} // namespace TestSupport
