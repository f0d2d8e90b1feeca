#pragma once
// How a producer (a camera's acquisition thread) hands over buffers to be stored in a set in the
// background. Order of calls for a recording: Create, any number of Store, Stop and
// WaitUntilFinished (or the implementation's Close), GetSetWhenFinished.
//
// Store never drops a buffer silently: when the writer cannot keep up it blocks the producer until
// a queue place is free. Failures on the writer's side do not reach the producer as exceptions of
// the worker; they are read through IsError and GetErrorText.

#include <SetApi/Export.h>

#include <BufferApi/PackType.h>

#include <QString>

#include <cstddef>
#include <memory>
#include <string>

namespace BufferApi {
class I_Buffer;
}
namespace DataObjects {
class ImageBufferVariant;
}

namespace SetApi {

class I_Set;

class SETAPI_API I_SetWriter {
public:
    virtual ~I_SetWriter();
    virtual void Create(QString path, BufferApi::BufferPackType_t packType) = 0;
    // The shared forms copy no pixel data; the raw pointer form copies the buffer, and the caller
    // keeps its own.
    virtual void Store(std::shared_ptr<const DataObjects::ImageBufferVariant> buffer, unsigned index) = 0;
    virtual void Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index) = 0;
    virtual void Store(BufferApi::I_Buffer* buffer, unsigned index) = 0;
    virtual void Abort() = 0;
    virtual bool IsError() = 0;
    virtual std::string GetErrorText() = 0;
    virtual void Stop() = 0;
    virtual void WaitUntilFinished() = 0;
    virtual std::shared_ptr<I_Set> GetSetWhenFinished() const = 0;
    // Buffers accepted and not yet stored.
    virtual size_t GetFillLevel() const = 0;
    virtual size_t GetQueueSize() const = 0;
};

} // namespace SetApi
