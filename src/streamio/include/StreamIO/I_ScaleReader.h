#pragma once
// The reader of the scale stream of a frame: the x, y and intensity scales of each image.

#include <StreamIO/Export.h>

#include <RTE/Plugin.h>
#include <RTE/Scale.h>

#include <QString>

#include <cstdint>

namespace SetApi {

class STREAMIO_API I_ScaleReader : public RTE::I_Plugin {
public:
    ~I_ScaleReader() override;

    // Raises RTE::Exception when the scale file cannot be read or is damaged.
    virtual void Open(const QString& destination) = 0;
    // Fills the three scales that hold for the image.
    virtual void ReadScales(std::uint32_t image, RTE::S_Scale& x, RTE::S_Scale& y, RTE::S_Scale& intensity) = 0;
};

} // namespace SetApi
