#pragma once
// Receives named attributes, one call per attribute: a text, or an array of numbers that the call
// copies before it returns.

#include <RTE/Export.h>

#include <QString>

#include <cstddef>

namespace RTE {

class RTE_API I_AttributesSink {
public:
    virtual ~I_AttributesSink();

    virtual void Add(const QString& name, const QString& value) = 0;
    virtual void AddArray(const QString& name, std::size_t count, const double* values) = 0;
    virtual void AddArray(const QString& name, std::size_t count, const float* values) = 0;
    virtual void AddArray(const QString& name, std::size_t count, const int* values) = 0;
    virtual void AddArray(const QString& name, std::size_t count, const unsigned short* values) = 0;
};

} // namespace RTE
