#include <BufferApi/Attributes.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <algorithm>

namespace BufferApi {
namespace Attributes {

namespace {
void CopyStore(AttributeStore& target, const AttributeStore& source, bool overwrite)
{
    for (std::size_t i = 0; i < source.GetCount(); ++i) {
        const I_AttributeBase& attribute = source.At(i);
        if (overwrite || target.Find(attribute.GetName()) == nullptr)
            target.Set(attribute.Clone());
    }
}
} // namespace

void Copy(I_Buffer* target, I_Buffer* source, bool global, bool frames, bool overwrite)
{
    RTE_VERIFY(target != nullptr && source != nullptr, "Attributes::Copy needs a target and a source buffer");
    if (target == source)
        return;
    if (global)
        CopyStore(target->GetAttributeStore(), source->GetAttributeStore(), overwrite);
    if (frames) {
        const unsigned count = std::min(target->GetNumberOfFrames(), source->GetNumberOfFrames());
        for (unsigned f = 0; f < count; ++f)
            CopyStore(target->GetFrame(f)->GetAttributeStore(), source->GetFrame(f)->GetAttributeStore(), overwrite);
    }
}

} // namespace Attributes
} // namespace BufferApi
