#pragma once
// Helpers shared by the test programs.

#include <RTE/Logger.h>

#include <gtest/gtest.h>

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

// Writes bytes to a file as they stand.
void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);

} // namespace TestSupport
