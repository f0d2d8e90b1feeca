#pragma once
// An in-memory buffer: an owned, ordered list of frames with buffer attributes. A buffer made by
// ImportBuffer, CreateBuffer or a set's LoadBuffer belongs to the caller; a buffer handed to a
// set's StoreBuffer stays the caller's. A buffer is used by one thread at a time.

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Export.h>

#include <memory>

namespace BufferApi {

class I_Frame;

class BUFFERAPI_API I_Buffer {
public:
    virtual ~I_Buffer();
    virtual unsigned GetNumberOfFrames() const = 0;
    // Frame number `index`; another index raises RTE::VerificationFailed.
    virtual I_Frame* GetFrame(unsigned index) = 0;
    virtual const I_Frame* GetFrame(unsigned index) const = 0;
    // Appends a frame, which the buffer owns from now on; returns it. Null raises
    // RTE::VerificationFailed.
    virtual I_Frame* AddFrame(std::unique_ptr<I_Frame> frame) = 0;
    // Takes frame `index` out of the buffer and hands it to the caller.
    virtual std::unique_ptr<I_Frame> RemoveFrame(unsigned index) = 0;

    virtual AttributeStore& GetAttributeStore() = 0;
    virtual const AttributeStore& GetAttributeStore() const = 0;

    // A deep copy of frames and attributes.
    virtual std::unique_ptr<I_Buffer> Clone() const = 0;

    // True when frame 0 is a vector frame (I_FrameVector or I_FrameVector3C): such a buffer is
    // stored under the extension "vc7" rather than "im7".
    bool IsVectorBuffer() const;
};

} // namespace BufferApi
