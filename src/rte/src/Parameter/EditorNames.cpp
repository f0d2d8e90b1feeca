#include "EditorNames.h"

#include <RTE/Parameter/Double.h>
#include <RTE/Parameter/Enumeration.h>
#include <RTE/Parameter/Integer.h>
#include <RTE/Parameter/List.h>
#include <RTE/Parameter/Text.h>

#include <mutex>
#include <set>
#include <string>

namespace RTE {
namespace Parameter {
namespace Private {

const char* InternEditor(const QString& name, const char* kindDefault)
{
    if (name.size() > kMaxEditorNameLength)
        return nullptr;
    // Editors are C strings: a NUL would cut the name, which would then write out as another one.
    if (name.contains(QChar(0)))
        return nullptr;
    const std::string utf8 = name.toStdString();
    if (utf8 == kindDefault)
        return kindDefault;
    for (const char* known : {C_Text::EditorLineEdit, C_Integer::EditorSpinBox, C_Double::EditorSpinBox,
                              C_Enumeration::EditorComboBox, C_List::EditorLineEdit, ""})
        if (utf8 == known)
            return known;

    // Kept for the life of the process; set elements never move.
    static std::mutex mutex;
    static std::set<std::string>* names = new std::set<std::string>;
    std::lock_guard<std::mutex> lock(mutex);
    auto it = names->find(utf8);
    if (it == names->end()) {
        if (names->size() >= kMaxUnknownEditorNames)
            return nullptr;
        it = names->insert(utf8).first;
    }
    return it->c_str();
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
