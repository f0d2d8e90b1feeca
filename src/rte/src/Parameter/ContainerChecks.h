#pragma once
// Checks shared by the nodes that hold other nodes.

#include <RTE/Parameter/Node.h>

namespace RTE {
namespace Parameter {
namespace Private {

// Raises RTE::VerificationFailed unless `child` may be put into `container`: not null, without a
// parent, and not `container` itself or a node above it (which would make a cycle).
void CheckNewChild(const C_Node& container, const boost::shared_ptr<C_Node>& child);

} // namespace Private
} // namespace Parameter
} // namespace RTE
