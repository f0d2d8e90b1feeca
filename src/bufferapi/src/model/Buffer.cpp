#include "model/Buffer.h"

#include <RTE/Exception.h>

#include <utility>

namespace BufferApi {

I_Buffer::~I_Buffer() = default;

bool I_Buffer::IsVectorBuffer() const
{
    if (GetNumberOfFrames() == 0)
        return false;
    const E_FrameKind kind = GetFrame(0)->GetKind();
    return kind == E_FrameKind::Vector || kind == E_FrameKind::Vector3C;
}

namespace Private {

namespace {
[[noreturn]] void FrameOutOfRange(unsigned index, std::size_t count)
{
    RTE_THROW_MSG(RTE::VerificationFailed,
                  "Frame number " << index << " out of range (buffer has " << unsigned(count) << " frames)");
}
} // namespace

I_Frame* Buffer::GetFrame(unsigned index)
{
    if (index >= m_frames.size())
        FrameOutOfRange(index, m_frames.size());
    return m_frames[index].get();
}

const I_Frame* Buffer::GetFrame(unsigned index) const
{
    if (index >= m_frames.size())
        FrameOutOfRange(index, m_frames.size());
    return m_frames[index].get();
}

I_Frame* Buffer::AddFrame(std::unique_ptr<I_Frame> frame)
{
    RTE_VERIFY(frame != nullptr, "A buffer cannot take a null frame");
    m_frames.push_back(std::move(frame));
    return m_frames.back().get();
}

std::unique_ptr<I_Frame> Buffer::RemoveFrame(unsigned index)
{
    if (index >= m_frames.size())
        FrameOutOfRange(index, m_frames.size());
    std::unique_ptr<I_Frame> frame = std::move(m_frames[index]);
    m_frames.erase(m_frames.begin() + index);
    return frame;
}

std::unique_ptr<I_Buffer> Buffer::Clone() const
{
    auto copy = std::make_unique<Buffer>();
    copy->m_attributes = m_attributes;
    copy->m_frames.reserve(m_frames.size());
    for (const auto& frame : m_frames)
        copy->m_frames.push_back(frame->Clone());
    return copy;
}

} // namespace Private
} // namespace BufferApi
