#include <RTE/ThreadExceptionHandler.h>

#include <RTE/Logger.h>

namespace RTE {
namespace {

class LoggingThreadExceptionHandler : public I_ThreadExceptionHandler {
public:
    void OnException(const QString& text) override
    {
        C_Logger("Thread").error("Exception in thread: " + text.toStdString());
    }
};

} // namespace

I_ThreadExceptionHandler::~I_ThreadExceptionHandler() = default;

boost::shared_ptr<I_ThreadExceptionHandler> CreateDefaultThreadExeptionHandler()
{
    return boost::shared_ptr<I_ThreadExceptionHandler>(new LoggingThreadExceptionHandler);
}

} // namespace RTE
