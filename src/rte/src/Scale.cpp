#include <RTE/Scale.h>

namespace RTE {

S_Scale::S_Scale(double factor_, double offset_, const QString& unit_, const QString& description_)
    : factor(factor_), offset(offset_), unit(unit_), description(description_)
{
}

bool S_Scale::operator==(const S_Scale& other) const
{
    return factor == other.factor && offset == other.offset && unit == other.unit &&
           description == other.description;
}

} // namespace RTE
