#pragma once
// A linear scale of one axis of a frame (or of a typed scalar's values): value = factor * x + offset,
// with the unit and a description of the scaled quantity.

#include <BufferApi/Export.h>

#include <memory>
#include <string>

namespace BufferApi {

class BUFFERAPI_API I_Scale {
public:
    virtual ~I_Scale();
    virtual double GetFactor() const = 0;
    virtual double GetOffset() const = 0;
    virtual const std::string& GetUnit() const = 0;
    virtual const std::string& GetDescription() const = 0;
    // factor * value + offset.
    virtual double Apply(double value) const = 0;
    virtual std::unique_ptr<I_Scale> Clone() const = 0;
};

// Makes scales. Thread-safe; the scales it returns belong to the caller.
class BUFFERAPI_API C_ScaleFactory {
public:
    static C_ScaleFactory& GetInstance();
    I_Scale* CreateLinearScale(double factor, double offset, const std::string& unit,
                               const std::string& description) const;
    // Factor 1, offset 0, no texts.
    I_Scale* CreateIdentityScale() const;

private:
    C_ScaleFactory() = default;
};

} // namespace BufferApi
