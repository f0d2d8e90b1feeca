#include <SetApi/set/CopyParameterValueSpec.h>
#include <SetApi/set/I_FileBasedSet.h>

#include <RTE/Exception.h>

namespace SetApi {

I_FileBasedSet::~I_FileBasedSet() = default;

CopyParameterValueSpec::CopyParameterValueSpec(CopyMode mode, const QString& parameterName)
    : m_mode(mode), m_parameterName(parameterName)
{
    // The texts stay as they are, although each names the opposite of the case it reports.
    const bool named = !parameterName.isEmpty();
    if (named && mode != SpecifiedParameterValue)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Parameter name is empty"));
    if (!named && mode == SpecifiedParameterValue)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Parameter name should be empty"));
}

CopyParameterValueSpec::~CopyParameterValueSpec() = default;

CopyParameterValueSpec::CopyMode CopyParameterValueSpec::GetCopyMode() const { return m_mode; }

QString CopyParameterValueSpec::GetSpecifiedParameterName() const { return m_parameterName; }

} // namespace SetApi
