#pragma once
// The concrete buffer: owned frames in order and the buffer attributes.

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <memory>
#include <vector>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API Buffer final : public I_Buffer {
public:
    Buffer() = default;

    unsigned GetNumberOfFrames() const override { return unsigned(m_frames.size()); }
    I_Frame* GetFrame(unsigned index) override;
    const I_Frame* GetFrame(unsigned index) const override;
    I_Frame* AddFrame(std::unique_ptr<I_Frame> frame) override;
    std::unique_ptr<I_Frame> RemoveFrame(unsigned index) override;
    AttributeStore& GetAttributeStore() override { return m_attributes; }
    const AttributeStore& GetAttributeStore() const override { return m_attributes; }
    std::unique_ptr<I_Buffer> Clone() const override;

private:
    std::vector<std::unique_ptr<I_Frame>> m_frames;
    AttributeStore m_attributes;
};

} // namespace Private
} // namespace BufferApi
