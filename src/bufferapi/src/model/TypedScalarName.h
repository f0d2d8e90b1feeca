#pragma once
// How a typed scalar's name maps to the name of the component that holds it.

#include <string>

namespace BufferApi {
namespace Private {

constexpr const char* TYPED_SCALAR_PREFIX = "TS:";

inline std::string TypedScalarComponentName(const std::string& scalarName)
{
    return TYPED_SCALAR_PREFIX + scalarName;
}

// Whether the component holds a typed scalar; if so its name goes to `scalarName`.
inline bool TypedScalarNameOf(const std::string& componentName, std::string& scalarName)
{
    const std::string prefix = TYPED_SCALAR_PREFIX;
    if (componentName.size() <= prefix.size() || componentName.compare(0, prefix.size(), prefix) != 0)
        return false;
    scalarName = componentName.substr(prefix.size());
    return true;
}

} // namespace Private
} // namespace BufferApi
