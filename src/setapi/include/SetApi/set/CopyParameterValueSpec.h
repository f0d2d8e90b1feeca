#pragma once
// How CopyBufferFromSet names the target file of a copied buffer: with no parameter value, with
// the parameter name and value taken from the source's file name, or with a named parameter whose
// value is taken from the source's path.

#include <SetApi/Export.h>

#include <QString>

namespace SetApi {

class SETAPI_API CopyParameterValueSpec {
public:
    enum CopyMode { NoParameterValue = 0, ParameterValueFromFilename = 1, SpecifiedParameterValue = 2 };

    // A name goes with SpecifiedParameterValue only, and that mode needs one; anything else raises
    // RTE::VerificationFailed. (The two texts each name the opposite of the case they report.)
    explicit CopyParameterValueSpec(CopyMode mode = NoParameterValue, const QString& parameterName = QString());
    virtual ~CopyParameterValueSpec();

    virtual CopyMode GetCopyMode() const;
    virtual QString GetSpecifiedParameterName() const;

private:
    CopyMode m_mode;
    QString m_parameterName;
};

} // namespace SetApi
