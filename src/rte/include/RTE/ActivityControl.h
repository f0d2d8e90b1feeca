#pragma once
// How a long operation learns that its user wants it to stop. The operation polls; it is never
// interrupted.

#include <RTE/Export.h>

namespace RTE {

class RTE_API I_ActivityControl {
public:
    virtual ~I_ActivityControl();
    virtual bool IsCancelled() const = 0;
};

} // namespace RTE
