// The queued stream set writer: producers enqueue, one worker stores in index order through a
// BufferStreamWriter, failures on the worker become lines of the error text.

#include <SetApi/stream/StreamSetWriter.h>

#include "StreamSetWriterState.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/BufferStreamWriter.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>
#include <string>
#include <utility>

namespace SetApi {

namespace Private {

void StreamSetWriterState::SetAndSignalNotEmpty(std::atomic<bool>& flag, bool value)
{
    flag = value;
    // The worker tests the flags under the mutex before it waits; passing through the mutex here
    // means it either saw the new value or is already waiting when the signal comes.
    { boost::lock_guard<boost::mutex> lock(mutex); }
    notEmpty.notify_all();
}

void StreamSetWriterState::Enqueue(StreamSetWriterItem item)
{
    if (abort || stop)
        return;
    boost::unique_lock<boost::mutex> lock(mutex);
    RTE_VERIFY(writer != nullptr, "StreamSet must be created");
    if (queueCapacity != 0 && queue.size() >= queueCapacity) {
        if (simulated) {
            paused = false;
            notEmpty.notify_all();
        }
        // Only the queue length ends this wait: after Abort nothing will empty the queue, which
        // is why Abort is meant for a time when no producer runs.
        while (queue.size() >= queueCapacity)
            notFull.wait(lock);
        waited = true;
    }
    queue.push_back(std::move(item));
    if (queue.size() > highWater)
        highWater = static_cast<std::uint32_t>(queue.size());
    notEmpty.notify_all();
}

void StreamSetWriterState::AppendError(const QString& text)
{
    boost::lock_guard<boost::mutex> lock(mutex);
    errorText += text;
    errorText += QLatin1Char('\n');
}

void StreamSetWriterFunction::operator()()
{
    for (;;) {
        if (m_state.abort)
            return;
        StreamSetWriterItem item;
        {
            boost::unique_lock<boost::mutex> lock(m_state.mutex);
            while (m_state.queue.empty() || m_state.paused) {
                // Stop overrides a pause: what is queued is still stored.
                if (m_state.abort || m_state.stop)
                    break;
                m_state.notEmpty.wait(lock);
            }
            if (m_state.abort || m_state.queue.empty()) {
                // Drained after Stop: the next pass ends the thread.
                if (m_state.stop)
                    m_state.abort = true;
                continue;
            }
            item = std::move(m_state.queue.front());
            m_state.queue.pop_front();
        }
        m_state.notFull.notify_all();
        StoreItem(item);
        // The item's references go here: the buffer is freed unless the producer holds it too.
    }
}

void StreamSetWriterFunction::StoreItem(const StreamSetWriterItem& item)
{
    // Nothing may leave the worker thread: every failure becomes a line of the error text and the
    // recording goes on with the next item.
    try {
        if (m_state.checkOrder && item.index != m_state.nextIndex)
            RTE_THROW_MSG(RTE::VerificationFailed, "Store must be called in order, got index "
                                                       << item.index << " but need " << m_state.nextIndex);
        // The writer exists: items are accepted only after Create, and it is destroyed only once
        // the worker is gone.
        BufferStreamWriter& writer = *m_state.writer;
        if (item.variant)
            writer.Store(*item.variant);
        else
            writer.Store(item.buffer);
        ++m_state.nextIndex;
    } catch (const RTE::Exception& e) {
        m_state.AppendError(e.message());
    } catch (const std::exception& e) {
        const QString text = QString::fromUtf8(e.what());
        RTE::C_Logger("Set").error("StreamSetWriter store " + std::to_string(item.index) + ": " + text.toStdString());
        m_state.AppendError(text);
    } catch (...) {
        RTE::C_Logger("Set").error("StreamSetWriter store " + std::to_string(item.index) + ": unknown exception");
        m_state.AppendError(QStringLiteral("unknown exception"));
    }
}

} // namespace Private

StreamSetWriter::StreamSetWriter(unsigned queueSize)
    : m_state(std::make_unique<Private::StreamSetWriterState>(queueSize))
    , m_worker(Private::StreamSetWriterFunction(*m_state))
    , m_queueSize(queueSize)
{
    RTE::C_Logger("Set").info("StreamSetWriter initialize with queue size of " + std::to_string(queueSize));
}

StreamSetWriter::~StreamSetWriter()
{
    std::string text = "StreamSetWriter closed, max queue size = ";
    {
        boost::lock_guard<boost::mutex> lock(m_state->mutex);
        text += std::to_string(m_state->highWater);
        if (m_state->waited)
            text += " with waits";
        text += ", ";
        text += m_state->errorText.isEmpty() ? std::string("without errors") : m_state->errorText.toStdString();
    }
    RTE::C_Logger("Set").info(text);

    // Only now is the recording visible to the factory's observers.
    try {
        C_SetFactory::Instance().NotifyOnCreate(m_name.toStdString());
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error(std::string("StreamSetWriter notify on create: ") + e.what());
    } catch (...) {
        RTE::C_Logger("Set").error("StreamSetWriter notify on create: unknown exception");
    }

    bool running = false;
    {
        boost::lock_guard<boost::mutex> lock(m_joinMutex);
        running = m_worker.joinable();
    }
    // The worker works on the state destroyed next: an owner that neither closed nor stopped and
    // waited has a bug that must not pass silently.
    if (running)
        std::terminate();
}

void StreamSetWriter::Create(QString name, BufferApi::BufferPackType_t compression)
{
    {
        boost::lock_guard<boost::mutex> lock(m_state->mutex);
        // The worker may already be storing into the existing writer.
        RTE_VERIFY(m_state->writer == nullptr, "StreamSet is already created");
    }
    auto writer = std::make_unique<BufferStreamWriter>(
        name, static_cast<I_Set::E_SetType>(I_Set::SET_TYPE_RECORDING | I_Set::SET_TYPE_IMAGE), compression);
    {
        boost::lock_guard<boost::mutex> lock(m_state->mutex);
        m_state->writer = std::move(writer);
    }
    m_name = name;
    RTE::C_Logger("Set").info("StreamSetWriter create " + name.toStdString() + " with compression type " +
                              std::to_string(static_cast<int>(compression)));
}

void StreamSetWriter::Store(std::shared_ptr<const DataObjects::ImageBufferVariant> buffer, unsigned index)
{
    RTE_VERIFY(buffer != nullptr, "Buffer must not be empty");
    Private::StreamSetWriterItem item;
    item.variant = std::move(buffer);
    item.index = index;
    m_state->Enqueue(std::move(item));
}

void StreamSetWriter::Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index)
{
    RTE_VERIFY(buffer != nullptr, "Buffer must not be empty");
    Private::StreamSetWriterItem item;
    item.buffer = std::move(buffer);
    item.index = index;
    m_state->Enqueue(std::move(item));
}

void StreamSetWriter::Store(BufferApi::I_Buffer* buffer, unsigned index)
{
    RTE_VERIFY(buffer != nullptr, "Buffer must not be empty");
    // The caller keeps its buffer and may reuse it at once: the queue gets a copy.
    Store(std::shared_ptr<const BufferApi::I_Buffer>(BufferApi::CreateBufferCopy(*buffer)), index);
}

void StreamSetWriter::Abort() { m_state->SetAndSignalNotEmpty(m_state->abort, true); }

bool StreamSetWriter::IsError()
{
    boost::lock_guard<boost::mutex> lock(m_state->mutex);
    return !m_state->errorText.isEmpty();
}

std::string StreamSetWriter::GetErrorText()
{
    boost::lock_guard<boost::mutex> lock(m_state->mutex);
    return m_state->errorText.toStdString();
}

void StreamSetWriter::Stop() { m_state->SetAndSignalNotEmpty(m_state->stop, true); }

void StreamSetWriter::WaitUntilFinished()
{
    boost::lock_guard<boost::mutex> lock(m_joinMutex);
    if (!m_worker.joinable())
        return;
    RTE_VERIFY(m_worker.get_id() != boost::this_thread::get_id(),
               "The stream set writer's worker cannot wait for itself to finish");
    m_worker.join();
}

std::shared_ptr<I_Set> StreamSetWriter::GetSetWhenFinished() const
{
    {
        boost::lock_guard<boost::mutex> lock(m_joinMutex);
        RTE_VERIFY(!m_worker.joinable(), "Stream set writer did not finish the writing actions.");
    }
    std::unique_ptr<BufferStreamWriter> writer;
    {
        boost::lock_guard<boost::mutex> lock(m_state->mutex);
        writer = std::move(m_state->writer);
    }
    m_state->notFull.notify_all();
    // Destroying the writer completes the streams.
    writer.reset();
    return C_SetFactory::Instance().Open(m_name.toStdString());
}

size_t StreamSetWriter::GetFillLevel() const
{
    boost::lock_guard<boost::mutex> lock(m_state->mutex);
    return m_state->queue.size();
}

size_t StreamSetWriter::GetQueueSize() const { return m_queueSize; }

void StreamSetWriter::Close()
{
    Stop();
    WaitUntilFinished();
    std::unique_ptr<BufferStreamWriter> writer;
    {
        boost::lock_guard<boost::mutex> lock(m_state->mutex);
        writer = std::move(m_state->writer);
    }
    m_state->notFull.notify_all();
    writer.reset();
}

size_t StreamSetWriter::GetMaxQueueSize() const
{
    boost::lock_guard<boost::mutex> lock(m_state->mutex);
    return m_state->highWater;
}

bool StreamSetWriter::HasWaitedOnFullQueue() const { return m_state->waited; }

void StreamSetWriter::Pause() { m_state->paused = true; }

void StreamSetWriter::PauseSimulation()
{
    m_state->simulated = true;
    m_state->paused = true;
}

void StreamSetWriter::Resume() { m_state->SetAndSignalNotEmpty(m_state->paused, false); }

} // namespace SetApi
