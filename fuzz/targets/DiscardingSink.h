#pragma once
// An attribute sink that touches every value it is handed and keeps nothing, so that the sanitizers
// see every byte a reader passes on.

#include <RTE/AttributesSink.h>

#include <cstdint>

namespace SetApiFuzz {

class DiscardingSink : public RTE::I_AttributesSink {
public:
    void Add(const QString& name, const QString& value) override { m_sum += unsigned(name.size() + value.size()); }
    void AddArray(const QString& name, std::size_t count, const double* values) override { Touch(name, count, values); }
    void AddArray(const QString& name, std::size_t count, const float* values) override { Touch(name, count, values); }
    void AddArray(const QString& name, std::size_t count, const int* values) override { Touch(name, count, values); }
    void AddArray(const QString& name, std::size_t count, const unsigned short* values) override
    {
        Touch(name, count, values);
    }

private:
    template <class T>
    void Touch(const QString& name, std::size_t count, const T* values)
    {
        m_sum += unsigned(name.size());
        for (std::size_t i = 0; i < count; ++i)
            m_sum += values[i] == T() ? 1u : 0u;
    }

    unsigned m_sum = 0;
};

} // namespace SetApiFuzz
