// Out-of-line destructors of the pure interfaces, so that their type information lives in this
// library once.
#include <RTE/ActivityControl.h>
#include <RTE/ActivityFeedback.h>
#include <RTE/AttributesSink.h>

namespace RTE {

I_AttributesSink::~I_AttributesSink() = default;
I_ActivityControl::~I_ActivityControl() = default;
I_ActivityFeedback::~I_ActivityFeedback() = default;

} // namespace RTE
