#pragma once
// The reader of a scalar field stream: an image stream that also knows the field's name and the
// scale of its values.

#include <StreamIO/I_ImageFrameReader.h>

#include <RTE/Scale.h>

namespace SetApi {

class STREAMIO_API I_ScalarFieldReader : public I_ImageFrameReader {
public:
    ~I_ScalarFieldReader() override;

    virtual QString GetNameOfScalarField() const = 0;
    virtual RTE::S_Scale GetIntensityScale() const = 0;
};

} // namespace SetApi
