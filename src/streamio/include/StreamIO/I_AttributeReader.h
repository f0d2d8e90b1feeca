#pragma once
// The reader of an attribute stream: one record of named attributes per image.

#include <StreamIO/Export.h>

#include <RTE/AttributesSink.h>
#include <RTE/Plugin.h>

#include <QString>

#include <cstdint>

namespace SetApi {

class STREAMIO_API I_AttributeReader : public RTE::I_Plugin {
public:
    ~I_AttributeReader() override;

    // Raises RTE::Exception when the stream cannot be read.
    virtual void Open(const QString& destination) = 0;
    // Hands every attribute of the image to the sink. An image past the end of the stream, or a
    // damaged record, raises RTE::Exception.
    virtual void ReadAttributes(std::uint32_t image, RTE::I_AttributesSink& sink) = 0;
};

} // namespace SetApi
