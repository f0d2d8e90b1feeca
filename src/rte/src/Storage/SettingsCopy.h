#pragma once
// Deep copy between any two settings objects, shared by the settings classes of this folder.

#include <Storage/Settings.h>

namespace Storage {
namespace Private {

// Copies the whole content of source into target, which must be empty of values and children.
void CopyContent(const Settings& source, Settings& target);

} // namespace Private
} // namespace Storage
