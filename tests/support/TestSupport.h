#pragma once
// Helpers shared by the test programs.

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace TestSupport {

// A fresh folder for one test, removed with everything in it when the test ends.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Collects every log line while it lives, and restores the default sink and level after.
class LogCapture {
public:
    struct Line {
        RTE::LogLevel level;
        std::string logger;
        std::string text;
    };
    explicit LogCapture(RTE::LogLevel from = RTE::LogLevel::Debug);
    ~LogCapture();

    std::vector<Line> lines() const;
    bool contains(const std::string& logger, const std::string& textPart) const;

private:
    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
    RTE::LogLevel m_previousLevel;
};

// The text of the RTE::Exception that a call raises, or "(no exception)".
template <class Function>
std::string MessageOf(Function&& function)
{
    try {
        function();
    } catch (const RTE::Exception& e) {
        return e.message().toStdString();
    }
    return "(no exception)";
}

// The bits of a double, and the double of some bits, for bit-exact comparisons.
std::uint64_t BitsOf(double value);
double DoubleFromBits(std::uint64_t bits);

// Writes bytes to a file as they stand.
void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);

} // namespace TestSupport
