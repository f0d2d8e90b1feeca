#pragma once
// The failures of the side-stream readers (attributes, scales, traces): RTE::Exception with a text
// that names the kind of stream and the file, e.g. "Attribute stream '/a/Attributes0_.attr' is
// corrupt (record of image 3 fails its checksum)", so that a log line tells which file is bad.

#include <QString>

#include <string>

namespace SetApi {
namespace Private {
namespace Records {

// Which stream and which of its files a failure is about.
struct StreamLabel {
    QString kind; // "Attribute stream", "Scale file", "Trace stream"
    std::string path;
};

// "<kind> '<path>' <text>".
[[noreturn]] void Fail(const StreamLabel& label, const QString& text);
// "<kind> '<path>' is corrupt (<what>)".
[[noreturn]] void FailCorrupt(const StreamLabel& label, const QString& what);
// "<kind> '<path>' is truncated (<what>)".
[[noreturn]] void FailTruncated(const StreamLabel& label, const QString& what);

} // namespace Records
} // namespace Private
} // namespace SetApi
