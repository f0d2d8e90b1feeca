#include "records/StreamFailure.h"

#include <RTE/Exception.h>

namespace SetApi {
namespace Private {
namespace Records {

void Fail(const StreamLabel& label, const QString& text)
{
    RTE_THROW_MSG(RTE::Exception, label.kind << " '" << QString::fromStdString(label.path) << "' " << text);
}

void FailCorrupt(const StreamLabel& label, const QString& what)
{
    Fail(label, QStringLiteral("is corrupt (") + what + QStringLiteral(")"));
}

void FailTruncated(const StreamLabel& label, const QString& what)
{
    Fail(label, QStringLiteral("is truncated (") + what + QStringLiteral(")"));
}

} // namespace Records
} // namespace Private
} // namespace SetApi
