#pragma once
// Receives the text of an exception that left the function of an RTE::Thread. It is called on
// that thread, after the function has ended, so it must be safe to call from any thread.

#include <RTE/Export.h>

#include <QString>

#include <boost/shared_ptr.hpp>

namespace RTE {

class RTE_API I_ThreadExceptionHandler {
public:
    virtual ~I_ThreadExceptionHandler();
    // text: what() of a standard exception, or "unknown exception" for anything else.
    virtual void OnException(const QString& text) = 0;
};

// A handler that writes the text at error level to the logger "Thread".
RTE_API boost::shared_ptr<I_ThreadExceptionHandler> CreateDefaultThreadExeptionHandler();

} // namespace RTE
