#include "ContainerChecks.h"

#include <RTE/Exception.h>

namespace RTE {
namespace Parameter {
namespace Private {

void CheckNewChild(const C_Node& container, const boost::shared_ptr<C_Node>& child)
{
    RTE_VERIFY(child != nullptr, "A parameter node must not be null");
    if (child->GetParent())
        RTE_THROW_MSG(VerificationFailed, "Parameter '" << child->GetName() << "' already belongs to '"
                                                        << child->GetParent()->GetName() << "'");
    for (const C_Node* node = &container; node; node = node->GetParent())
        if (node == child.get())
            RTE_THROW_MSG(VerificationFailed, "Parameter '" << child->GetName()
                                                            << "' cannot be put inside itself");
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
