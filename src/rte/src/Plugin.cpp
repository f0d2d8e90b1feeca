#include <RTE/Plugin.h>

namespace RTE {

I_Plugin::~I_Plugin() = default;

I_CreationContext::~I_CreationContext() = default;

} // namespace RTE
