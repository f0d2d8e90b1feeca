#include "file/FileError.h"

#include <RTE/Exception.h>

namespace BufferApi {
namespace Private {
namespace BufferFile {

void Fail(const std::string& path, const QString& text)
{
    RTE_THROW_MSG(RTE::Exception, "Buffer file '" << path << "' " << text);
}

void FailCorrupt(const std::string& path, const QString& what)
{
    Fail(path, QStringLiteral("is corrupt (") + what + QStringLiteral(")"));
}

void FailTruncated(const std::string& path, const QString& what)
{
    Fail(path, QStringLiteral("is truncated (") + what + QStringLiteral(")"));
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
