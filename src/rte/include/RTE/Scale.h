#pragma once
// A linear scale from raw values to physical ones: physical = factor * raw + offset, in unit.

#include <RTE/Export.h>

#include <QString>

namespace RTE {

struct RTE_API S_Scale {
    // The default is the identity with empty texts.
    S_Scale(double factor = 1.0, double offset = 0.0, const QString& unit = QString(),
            const QString& description = QString());

    double Apply(double raw) const { return factor * raw + offset; }

    bool operator==(const S_Scale& other) const;
    bool operator!=(const S_Scale& other) const { return !(*this == other); }

    double factor;
    double offset;
    QString unit;
    QString description;
};

} // namespace RTE
