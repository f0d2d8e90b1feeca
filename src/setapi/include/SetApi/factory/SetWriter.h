#pragma once
// Stores buffers into a plain (file-based) set in the background, with a fixed pool of worker
// threads and a fixed number of queue places. A producer's Store takes a place (waiting while none
// is free: that wait is the whole back pressure, no buffer is dropped) and queues the buffer; a
// worker stores it with StoreBuffer and gives the place back. With more than one thread several
// buffers are stored at once, and completion order is not index order.
//
// The first failure of a worker is kept (later ones are not) and aborts the workers; the producer
// sees it at its next Store ("Can't store after error from former call.") or through IsError and
// GetErrorText. A producer waiting for a place when the workers end by a failure or an Abort is
// released: it gets the failure's refusal, or after an Abort its buffer is dropped. Log lines at info level on the logger "Set": "SetWriter create <path>" and
// "SetWriter closed".

#include <SetApi/Export.h>
#include <SetApi/factory/I_SetWriter.h>
#include <SetApi/factory/WorkerQueue.h>
#include <SetApi/factory/WorkerThread.h>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

#include <memory>
#include <string>
#include <vector>

namespace SetApi {

namespace Private {
class C_SetWriterExceptionHandler;
}

class SETAPI_API SetWriter : public I_SetWriter {
public:
    // Starts threadCount workers and sets out queueSize places. A queue size of 0 makes the first
    // Store wait for ever, and 0 threads store nothing; neither is refused.
    SetWriter(unsigned queueSize, unsigned threadCount);
    // Close().
    ~SetWriter() override;

    SetWriter(const SetWriter&) = delete;
    SetWriter& operator=(const SetWriter&) = delete;

    // Creates the set (identifier "Set", type 0x1100) and sets its pack type for word and float
    // data. A set that cannot be created raises nothing here; the next Store refuses with "Set
    // must be created".
    void Create(QString path, BufferApi::BufferPackType_t packType) override;
    void Store(std::shared_ptr<const DataObjects::ImageBufferVariant> buffer, unsigned index) override;
    void Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index) override;
    void Store(BufferApi::I_Buffer* buffer, unsigned index) override;
    // Ends the workers at once; queued work is left and freed with the writer. Producers waiting
    // for a place are released.
    void Abort() override;
    bool IsError() override;
    std::string GetErrorText() override;
    // Ends the workers after the work queued so far.
    void Stop() override;
    void WaitUntilFinished() override;
    // The set; does not wait.
    std::shared_ptr<I_Set> GetSetWhenFinished() const override;
    size_t GetFillLevel() const override;
    size_t GetQueueSize() const override;

    // Stop, WaitUntilFinished, make the stored files durable on disk (a failure of that becomes
    // the error text if there is none yet), then the log line.
    void Close();

private:
    void HandleException(const std::string& text);

    std::shared_ptr<I_Set> m_set;
    std::vector<boost::shared_ptr<WorkerThread>> m_threads;
    WorkerQueue m_freeQueue;
    WorkerQueue m_workQueue;
    boost::shared_ptr<Private::C_SetWriterExceptionHandler> m_exceptionHandler;
    boost::mutex m_errorMutex;
    std::string m_errorText;
    unsigned m_queueSize;
};

} // namespace SetApi
