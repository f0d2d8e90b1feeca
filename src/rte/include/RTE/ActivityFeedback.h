#pragma once
// How a long operation reports how far it has come.

#include <RTE/Export.h>

#include <string>

namespace RTE {

class RTE_API I_ActivityFeedback {
public:
    virtual ~I_ActivityFeedback();
    // Progress in percent, 0 to 100.
    virtual void SetProgress(double percent) = 0;
    virtual void SetStatusText(const std::string& text) = 0;
};

} // namespace RTE
