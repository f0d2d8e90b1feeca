#pragma once
// Decouples a camera's acquisition thread from the disk: Store puts the buffer and its index into
// a bounded queue and returns at once; one worker thread takes the buffers in order and appends
// them to a stream set through a BufferStreamWriter. When the disk falls behind, the queue fills
// and the producer blocks (nothing is dropped), and that wait is remembered
// (HasWaitedOnFullQueue). The queue size is the memory budget for disk stalls; 0 removes the
// limit.
//
// Failures on the worker (an index out of order, an image of another shape, a failed write) never
// reach the producer as exceptions: they are collected in the error text, one line each, and the
// recording goes on with the next buffer.
//
// Lifecycle: constructed (the worker waits), Create (accepting), Stop (draining, no longer
// accepting), finished (worker gone), Close or GetSetWhenFinished (streams complete). Abort leads
// from any state to finished and abandons the queue. Owners call Close, or Stop and
// WaitUntilFinished, before destruction: a worker still running at destruction terminates the
// program.

#include <SetApi/Export.h>
#include <SetApi/factory/I_SetWriter.h>

#include <QString>

#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>

#include <cstdint>
#include <memory>

namespace SetApi {

namespace Private {
struct StreamSetWriterState;
}

class SETAPI_API StreamSetWriter : public I_SetWriter {
public:
    // Starts the worker, which waits for Create and the first buffer. Logs "StreamSetWriter
    // initialize with queue size of <n>".
    explicit StreamSetWriter(unsigned queueSize);
    // Logs "StreamSetWriter closed, max queue size = <n>[ with waits], <errors or 'without
    // errors'>" and tells the set factory's observers that the set now exists.
    ~StreamSetWriter() override;

    StreamSetWriter(const StreamSetWriter&) = delete;
    StreamSetWriter& operator=(const StreamSetWriter&) = delete;

    // Creates the stream set (type 0x1100) through a BufferStreamWriter with this compression.
    void Create(QString name, BufferApi::BufferPackType_t compression) override;
    // Enqueue; the shared forms copy no pixel data. RTE::VerificationFailed "Buffer must not be
    // empty" for a null pointer, "StreamSet must be created" before Create. After Stop or Abort the
    // buffer is dropped without an error.
    void Store(std::shared_ptr<const DataObjects::ImageBufferVariant> buffer, unsigned index) override;
    void Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index) override;
    void Store(BufferApi::I_Buffer* buffer, unsigned index) override;
    void Abort() override;
    bool IsError() override;
    std::string GetErrorText() override;
    void Stop() override;
    void WaitUntilFinished() override;
    // Completes the streams and opens the set through the factory. RTE::VerificationFailed
    // "Stream set writer did not finish the writing actions." while the worker runs.
    std::shared_ptr<I_Set> GetSetWhenFinished() const override;
    size_t GetFillLevel() const override;
    size_t GetQueueSize() const override;

    // Stop, WaitUntilFinished, and complete the streams.
    void Close();
    // The largest queue length reached.
    size_t GetMaxQueueSize() const;
    bool HasWaitedOnFullQueue() const;
    // The worker takes no buffers until Resume (Stop overrides a pause: the queue is drained).
    void Pause();
    // A slow disk to try things out: the worker stands still until the queue is full; the enqueue
    // that finds it full resumes it.
    void PauseSimulation();
    void Resume();

private:
    QString m_name;
    std::unique_ptr<Private::StreamSetWriterState> m_state;
    boost::thread m_worker;
    mutable boost::mutex m_joinMutex;
    std::uint32_t m_queueSize;
};

} // namespace SetApi
