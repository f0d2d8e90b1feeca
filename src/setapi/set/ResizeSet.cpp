#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/I_Set.h>

#include <RTE/Exception.h>

namespace SetApi {

void C_SetUtilities::ResizeSet(std::shared_ptr<I_Set> set, int count, BufferApi::I_Buffer* fill)
{
    RTE_VERIFY(set != nullptr, "ResizeSet: the set is null");
    std::unique_ptr<BufferApi::I_Buffer> lastBuffer;
    const auto size = [&] { return static_cast<long long>(set->GetSize()); };
    if (size() < count && !fill) {
        if (size() == 0)
            RTE_THROW(RTE::Exception, QStringLiteral("C_Set::Resize: Can't fill up if buffer==NULL and set is empty"));
        unsigned entries = 0, first = 0, last = 0;
        set->GetInfo(entries, first, last);
        lastBuffer = set->LoadBuffer(last);
        fill = lastBuffer.get();
    }
    while (size() < count)
        set->AppendBuffer(fill);
    if (count > 0) {
        // The size, not the last index: a plain set refuses it, and that is kept so.
        while (size() > count)
            set->RemoveBuffer(set->GetSize());
    }
}

} // namespace SetApi
