#pragma once
// Whether one set lies inside the folder of another, for the whole-set operations: copying or
// moving a set into its own folder would copy without end, and replacing a set by one of its own
// children would delete the source before it is copied.

#include <string>

namespace SetApi {
namespace Private {

// Compares the absolute, lexically normalised names in upper case, like C_SetFactory::Same;
// touches no file.
bool IsInsideSetFolder(const std::string& inner, const std::string& outer);

} // namespace Private
} // namespace SetApi
