#pragma once
// Named loggers. A C_Logger is only a name: making one on the spot costs a string copy, and a
// message below the level in force costs one atomic load. Where messages go and from which level on
// is set through RTE::Logging, never through the environment or a configuration file.
// The default sink writes "<level> [<name>] <text>" lines to standard error, from level Info on.

#include <RTE/Export.h>

#include <functional>
#include <string>

namespace RTE {

enum class LogLevel { Debug = 0, Info = 1, Error = 2, Off = 3 };

class RTE_API C_Logger {
public:
    explicit C_Logger(const std::string& name);

    void debug(const std::string& text) const;
    void info(const std::string& text) const;
    void error(const std::string& text) const;

    bool isEnabled(LogLevel level) const;
    const std::string& name() const { return m_name; }

private:
    void write(LogLevel level, const std::string& text) const;
    std::string m_name;
};

namespace Logging {
// Receives every message that passes the level check; may be called from any thread, one call at a
// time (calls are serialised by the library).
using Sink = std::function<void(LogLevel level, const std::string& logger, const std::string& text)>;

// The level from which messages are written, for all loggers without a level of their own.
RTE_API void SetLevel(LogLevel level);
RTE_API LogLevel GetLevel();
// A level for the logger of that name only; ClearLevel returns it to the general level.
RTE_API void SetLevel(const std::string& logger, LogLevel level);
RTE_API void ClearLevel(const std::string& logger);
// Replaces the sink; an empty function restores the default sink on standard error.
RTE_API void SetSink(Sink sink);
RTE_API const char* LevelName(LogLevel level);
} // namespace Logging

} // namespace RTE
