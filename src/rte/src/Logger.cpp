#include <RTE/Logger.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>

namespace RTE {
namespace {

struct LoggingState {
    std::atomic<int> level{static_cast<int>(LogLevel::Info)};
    std::atomic<bool> hasOverrides{false};
    std::mutex mutex; // guards overrides and sink, and serialises sink calls
    std::map<std::string, LogLevel> overrides;
    Logging::Sink sink;
};

LoggingState& State()
{
    // Never destroyed: loggers may run during static destruction of other libraries.
    static LoggingState* state = new LoggingState;
    return *state;
}

void DefaultSink(LogLevel level, const std::string& logger, const std::string& text)
{
    std::fprintf(stderr, "%s [%s] %s\n", Logging::LevelName(level), logger.c_str(), text.c_str());
}

} // namespace

C_Logger::C_Logger(const std::string& name) : m_name(name) {}

bool C_Logger::isEnabled(LogLevel level) const
{
    LoggingState& state = State();
    if (level == LogLevel::Off)
        return false;
    if (state.hasOverrides.load(std::memory_order_acquire)) {
        std::lock_guard<std::mutex> lock(state.mutex);
        const auto it = state.overrides.find(m_name);
        if (it != state.overrides.end())
            return static_cast<int>(level) >= static_cast<int>(it->second);
    }
    return static_cast<int>(level) >= state.level.load(std::memory_order_relaxed);
}

void C_Logger::debug(const std::string& text) const { write(LogLevel::Debug, text); }

void C_Logger::info(const std::string& text) const { write(LogLevel::Info, text); }

void C_Logger::error(const std::string& text) const { write(LogLevel::Error, text); }

void C_Logger::write(LogLevel level, const std::string& text) const
{
    if (!isEnabled(level))
        return;
    LoggingState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (state.sink)
        state.sink(level, m_name, text);
    else
        DefaultSink(level, m_name, text);
}

namespace Logging {

void SetLevel(LogLevel level) { State().level.store(static_cast<int>(level)); }

LogLevel GetLevel() { return static_cast<LogLevel>(State().level.load()); }

void SetLevel(const std::string& logger, LogLevel level)
{
    LoggingState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.overrides[logger] = level;
    state.hasOverrides.store(true, std::memory_order_release);
}

void ClearLevel(const std::string& logger)
{
    LoggingState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.overrides.erase(logger);
    state.hasOverrides.store(!state.overrides.empty(), std::memory_order_release);
}

void SetSink(Sink sink)
{
    LoggingState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.sink = std::move(sink);
}

const char* LevelName(LogLevel level)
{
    switch (level) {
    case LogLevel::Debug: return "debug";
    case LogLevel::Info: return "info";
    case LogLevel::Error: return "error";
    case LogLevel::Off: return "off";
    }
    return "?";
}

} // namespace Logging
} // namespace RTE
