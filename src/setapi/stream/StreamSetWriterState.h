#pragma once
// The inside of a StreamSetWriter: the queue between the producers and the worker, the flags that
// steer the worker, and the BufferStreamWriter the worker stores into. Shared by the writer (on the
// producers' threads) and its worker function (on the worker thread).
//
// Locking: one mutex guards the queue, the high water mark, the error text and the presence of the
// BufferStreamWriter. The flags are atomic and set without the mutex; every setter that must wake
// the worker passes through the mutex once before it signals, so that a worker that has just found
// the flag unset and is about to wait cannot miss the signal.

#include <SetApi/stream/BufferStreamWriter.h>

#include <QString>

#include <boost/thread/condition_variable.hpp>
#include <boost/thread/mutex.hpp>

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>

namespace BufferApi {
class I_Buffer;
}
namespace DataObjects {
class ImageBufferVariant;
}

namespace SetApi {
namespace Private {

// One queued image: exactly one of the two pointers is set.
struct StreamSetWriterItem {
    std::shared_ptr<const BufferApi::I_Buffer> buffer;
    std::shared_ptr<const DataObjects::ImageBufferVariant> variant;
    unsigned index = 0;
};

struct StreamSetWriterState {
    explicit StreamSetWriterState(std::uint32_t capacity) : queueCapacity(capacity) {}

    // Leave at once, dropping what is queued.
    std::atomic<bool> abort{false};
    // No new items; drain the queue, then leave.
    std::atomic<bool> stop{false};
    // The worker takes no items.
    std::atomic<bool> paused{false};
    // A full queue resumes a paused worker (a slow disk to try things out).
    std::atomic<bool> simulated{false};
    // A producer has waited on a full queue.
    std::atomic<bool> waited{false};

    // Items must arrive with consecutive indices from 0. Touched by the worker only.
    bool checkOrder = true;
    std::uint32_t nextIndex = 0;

    // Null until Create, and again once the streams are completed.
    std::unique_ptr<BufferStreamWriter> writer;
    // 0 means no limit.
    const std::uint32_t queueCapacity;
    std::uint32_t highWater = 0;
    std::deque<StreamSetWriterItem> queue;

    boost::mutex mutex;
    boost::condition_variable notEmpty;
    boost::condition_variable notFull;
    // Every failure so far, each followed by "\n".
    QString errorText;

    // Sets a flag and wakes the worker without a lost wake-up.
    void SetAndSignalNotEmpty(std::atomic<bool>& flag, bool value);
    // Appends one item, waiting while the queue is full. Drops it after Stop or Abort.
    void Enqueue(StreamSetWriterItem item);
    void AppendError(const QString& text);
};

// The worker's loop: takes the items in queue order and stores them until Stop has drained the
// queue or Abort.
class StreamSetWriterFunction {
public:
    explicit StreamSetWriterFunction(StreamSetWriterState& state) : m_state(state) {}
    void operator()();

private:
    void StoreItem(const StreamSetWriterItem& item);
    StreamSetWriterState& m_state;
};

} // namespace Private
} // namespace SetApi
