#include "SettingsCopy.h"

#include <utility>
#include <vector>

namespace Storage {
namespace Private {

namespace {

void CopyOwnContent(const Settings& source, Settings& target)
{
    target.SetName(source.GetName());
    target.SetClass(source.GetClass());
    target.SetVersion(source.GetVersion());
    for (const QString& name : source.GetValueNames())
        target.SetValue(name, source.GetValue(name));
}

} // namespace

// An explicit work list in place of recursion keeps the copy independent of the stack depth.
// Every node is handled before its children, which are appended in their order.
void CopyContent(const Settings& source, Settings& target)
{
    std::vector<std::pair<const Settings*, Settings*>> work{{&source, &target}};
    for (std::size_t next = 0; next < work.size(); ++next) {
        const Settings& from = *work[next].first;
        Settings& to = *work[next].second;
        CopyOwnContent(from, to);
        for (int i = 0; i < from.GetChildCount(); ++i) {
            const Settings& child = from.GetChild(i);
            work.emplace_back(&child, &to.AddChild(child.GetName()));
        }
    }
}

} // namespace Private
} // namespace Storage
