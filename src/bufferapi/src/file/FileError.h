#pragma once
// The failures of the buffer file reader: RTE::Exception with a text that begins
// "Buffer file '<path>'", so that every message names the file.

#include <QString>

#include <string>

namespace BufferApi {
namespace Private {
namespace BufferFile {

// "Buffer file '<path>' <text>".
[[noreturn]] void Fail(const std::string& path, const QString& text);
// "Buffer file '<path>' is corrupt (<what>)".
[[noreturn]] void FailCorrupt(const std::string& path, const QString& what);
// "Buffer file '<path>' is truncated (<what>)".
[[noreturn]] void FailTruncated(const std::string& path, const QString& what);

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
