// The background writer for plain sets. Two queues carry the same function objects in a circle:
// the free queue holds idle ones, whose count is the number of buffers that may still be
// accepted, and the work queue holds those that wait for a worker. A producer takes a place from
// the free queue (waiting while there is none) and puts a filled object into the work queue; a
// worker runs it and gives it back to the free queue.

#include <SetApi/factory/SetWriter.h>

#include "SetWriterFunction.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/I_Set.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <DataObjects/ImageConversion.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <boost/bind/bind.hpp>

#include <utility>

namespace SetApi {
namespace {

// The checks every Store makes before it takes a queue place, in this order.
void VerifyStorable(SetWriter& writer, bool hasBuffer)
{
    if (writer.IsError())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Can't store after error from former call."));
    // A set that could not be created is no set: storing into it would drop every buffer unseen.
    const std::shared_ptr<I_Set> set = writer.GetSetWhenFinished();
    RTE_VERIFY(set && set->IsOpen(), "Set must be created");
    RTE_VERIFY(hasBuffer, "Buffer must be valid");
}

} // namespace

SetWriter::SetWriter(unsigned queueSize, unsigned threadCount)
    : m_exceptionHandler(boost::shared_ptr<Private::C_SetWriterExceptionHandler>(
          new Private::C_SetWriterExceptionHandler(
              boost::bind(&SetWriter::HandleException, this, boost::placeholders::_1)))),
      m_queueSize(queueSize)
{
    try {
        m_threads.reserve(threadCount);
        for (unsigned i = 0; i < threadCount; ++i)
            m_threads.push_back(
                boost::shared_ptr<WorkerThread>(new WorkerThread(m_workQueue, m_freeQueue, m_exceptionHandler)));
    } catch (...) {
        // A thread that could not be started: the ones running must end before the queues go.
        Abort();
        WaitUntilFinished();
        throw;
    }
    // All queue places are made now, so that the steady state allocates nothing but the one
    // function object per buffer.
    for (unsigned i = 0; i < queueSize; ++i)
        m_freeQueue.Push(boost::shared_ptr<I_WorkerThreadFunction>(new Private::C_SetWriterFunction()));
}

SetWriter::~SetWriter() { Close(); }

void SetWriter::Create(QString path, BufferApi::BufferPackType_t packType)
{
    m_set = C_SetFactory::Instance().Create(path.toStdString(), std::string(),
                                            I_Set::E_SetType(I_Set::SET_TYPE_RECORDING | I_Set::SET_TYPE_IMAGE), true);
    // A set whose set file could not be written (a full disk) would take every buffer and then not
    // open: it counts as not created.
    const std::string name = C_SetUtilities::PrepareSetName(path.toStdString());
    if (m_set && m_set->IsOpen() && !RTE::FileSystem::Exists(name + ".set"))
        m_set = std::make_shared<C_NullSet>(name);
    if (m_set && m_set->IsOpen()) {
        m_set->SetPackTypeWord(packType);
        m_set->SetPackTypeFloat(packType);
        // A recording writes each buffer file once and reads none back soon: past the page cache
        // is the fast way to the disk.
        if (auto* plain = dynamic_cast<C_Set*>(m_set.get()))
            plain->SetDirectIo(true);
    }
    // Logged even when the set did not open: the next Store runs into the unusable set.
    RTE::C_Logger("Set").info("SetWriter create " + path.toStdString());
}

void SetWriter::Store(std::shared_ptr<const DataObjects::ImageBufferVariant> buffer, unsigned index)
{
    if (!buffer) {
        Store(std::shared_ptr<const BufferApi::I_Buffer>(), index);
        return;
    }
    VerifyStorable(*this, true);
    Store(std::shared_ptr<const BufferApi::I_Buffer>(DataObjects::CreateBufferFromImageBuffer(*buffer, true)), index);
}

void SetWriter::Store(BufferApi::I_Buffer* buffer, unsigned index)
{
    if (!buffer) {
        Store(std::shared_ptr<const BufferApi::I_Buffer>(), index);
        return;
    }
    // Checked before the copy as well, so that a writer that cannot store copies nothing.
    VerifyStorable(*this, true);
    Store(std::shared_ptr<const BufferApi::I_Buffer>(BufferApi::CreateBufferCopy(*buffer)), index);
}

void SetWriter::Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index)
{
    VerifyStorable(*this, buffer != nullptr);
    // Waiting here for a free place is the whole back pressure: the producer is slowed down and
    // no buffer is dropped.
    boost::shared_ptr<I_WorkerThreadFunction> place = m_freeQueue.Pop();
    if (!place) {
        // The end mark of a failure or an Abort: no worker will give a place back, so waiting on
        // would never end. The mark stays for the next producer. A failed writer refuses the
        // buffer as a Store after the failure would; an aborted one drops it.
        m_freeQueue.Push(place);
        if (IsError())
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Can't store after error from former call."));
        return;
    }
    place.reset(new Private::C_SetWriterFunction(m_set, std::move(buffer), index));
    m_workQueue.Push(std::move(place));
}

void SetWriter::Abort()
{
    for (const boost::shared_ptr<WorkerThread>& thread : m_threads) {
        thread->Cancel();
        m_workQueue.Push(boost::shared_ptr<I_WorkerThreadFunction>());
    }
    // Producers waiting for a place would otherwise wait for ever: the workers that give places
    // back are ending. A null place releases them (see Store).
    m_freeQueue.Push(boost::shared_ptr<I_WorkerThreadFunction>());
}

bool SetWriter::IsError()
{
    boost::lock_guard<boost::mutex> lock(m_errorMutex);
    return !m_errorText.empty();
}

std::string SetWriter::GetErrorText()
{
    boost::lock_guard<boost::mutex> lock(m_errorMutex);
    return m_errorText;
}

void SetWriter::Stop()
{
    // One end mark per thread behind the queued work: first in, first out, so all of it is done.
    for (std::size_t i = 0; i < m_threads.size(); ++i)
        m_workQueue.Push(boost::shared_ptr<I_WorkerThreadFunction>());
}

void SetWriter::WaitUntilFinished()
{
    for (const boost::shared_ptr<WorkerThread>& thread : m_threads)
        thread->Join();
}

std::shared_ptr<I_Set> SetWriter::GetSetWhenFinished() const { return m_set; }

size_t SetWriter::GetFillLevel() const
{
    // After an Abort the free queue also holds the end mark, which is no place.
    const size_t free = m_freeQueue.Size();
    return free >= GetQueueSize() ? 0 : GetQueueSize() - free;
}

size_t SetWriter::GetQueueSize() const { return m_queueSize; }

void SetWriter::Close()
{
    Stop();
    WaitUntilFinished();
    // The buffer files are durable when the writer is closed, their names included.
    if (m_set && m_set->IsOpen()) {
        try {
            RTE::FileSystem::SyncFolder(m_set->GetName());
        } catch (const std::exception& e) {
            boost::lock_guard<boost::mutex> lock(m_errorMutex);
            if (m_errorText.empty())
                m_errorText = e.what();
        }
    }
    RTE::C_Logger("Set").info("SetWriter closed");
}

void SetWriter::HandleException(const std::string& text)
{
    // Only the first failure is kept and aborts the workers; the error mutex is held through
    // Abort, which takes the queue mutexes one at a time.
    boost::lock_guard<boost::mutex> lock(m_errorMutex);
    if (!m_errorText.empty())
        return;
    m_errorText = text;
    if (m_errorText.empty())
        m_errorText = "Unknown error";
    Abort();
}

} // namespace SetApi
