#pragma once
// The two helpers of SetWriter: the unit of work that stores one buffer, and the receiver of a
// worker's failure.

#include <SetApi/factory/WorkerQueue.h>

#include <RTE/ThreadExceptionHandler.h>

#include <boost/function.hpp>

#include <memory>
#include <string>

namespace BufferApi {
class I_Buffer;
}

namespace SetApi {

class I_Set;

namespace Private {

// Stores one buffer under its index. The buffer is let go as soon as it is stored, so that an
// object that goes back to the free queue as a queue place keeps no image in memory. An object
// made with no set and no buffer is such a place only, and is never run.
class C_SetWriterFunction : public I_WorkerThreadFunction {
public:
    C_SetWriterFunction() = default;
    C_SetWriterFunction(std::shared_ptr<I_Set> set, std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index);

    void operator()() override;

private:
    std::shared_ptr<I_Set> m_set;
    std::shared_ptr<const BufferApi::I_Buffer> m_buffer;
    unsigned m_index = 0;
};

// Hands the text of a worker's failure to the writer. Called on the failing worker's thread.
class C_SetWriterExceptionHandler : public RTE::I_ThreadExceptionHandler {
public:
    using Function = boost::function<void(const std::string&)>;

    explicit C_SetWriterExceptionHandler(Function function);

    void OnException(const QString& text) override;

private:
    Function m_function;
};

} // namespace Private
} // namespace SetApi
