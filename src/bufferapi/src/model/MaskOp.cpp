#include <BufferApi/MaskOp.h>

#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>

#include <cstring>

namespace BufferApi {
namespace MaskOp {

void CopyMask(I_Frame* source, unsigned sourcePlane, I_Frame* target, unsigned targetPlane)
{
    RTE_VERIFY(source != nullptr && target != nullptr, "CopyMask needs a source and a target frame");
    if (source->GetWidth() != target->GetWidth() || source->GetHeight() != target->GetHeight())
        RTE_THROW_MSG(RTE::VerificationFailed, "CopyMask: source of " << source->GetWidth() << " x " << source->GetHeight()
                                                                      << " and target of " << target->GetWidth() << " x "
                                                                      << target->GetHeight() << " differ in size");
    if (sourcePlane >= source->GetDepth())
        RTE_THROW_MSG(RTE::VerificationFailed, "CopyMask: source plane " << sourcePlane << " out of range (depth "
                                                                         << source->GetDepth() << ")");
    if (targetPlane >= target->GetDepth())
        RTE_THROW_MSG(RTE::VerificationFailed, "CopyMask: target plane " << targetPlane << " out of range (depth "
                                                                         << target->GetDepth() << ")");
    RTE_VERIFY(target->HasData(), "CopyMask: the target frame has no plane memory");
    const I_Component* sourceMask = source->GetMask();
    const I_PlaneBase* from = sourceMask != nullptr ? sourceMask->GetPlane(sourcePlane) : nullptr;
    RTE_VERIFY(from == nullptr || from->HasData(), "CopyMask: the source mask has no plane memory");

    I_PlaneBase* to = target->AddMask()->GetPlane(targetPlane);
    RTE_VERIFY(to->HasData() && to->GetByteSize() == std::size_t(target->GetWidth()) * target->GetHeight(),
               "CopyMask: the target mask is not a byte plane with memory");
    if (from == nullptr)
        std::memset(to->GetData(), 1, to->GetByteSize());
    else {
        RTE_VERIFY(from->GetByteSize() == to->GetByteSize(), "CopyMask: the source mask is not a byte plane");
        std::memmove(to->GetData(), from->GetData(), to->GetByteSize());
    }
}

} // namespace MaskOp
} // namespace BufferApi
