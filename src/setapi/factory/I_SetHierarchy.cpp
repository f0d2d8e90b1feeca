#include <SetApi/factory/I_SetHierarchy.h>

namespace SetApi {

I_SetHierarchy::~I_SetHierarchy() = default;

} // namespace SetApi
