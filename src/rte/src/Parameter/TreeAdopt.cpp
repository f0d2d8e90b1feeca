#include "TreeText.h"

#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <boost/make_shared.hpp>

#include <vector>

namespace RTE {
namespace Parameter {
namespace Private {

namespace {

class Adopter {
public:
    Adopter(const ParsedTree& parsed, const QString& sourceName) : m_parsed(parsed), m_source(sourceName) {}

    // Walks categories by name; a written list meets the list of the same path below `previous`.
    void Walk(C_Category& written, const C_Category* previous)
    {
        for (unsigned i = 0; i < written.GetChildCount(); ++i) {
            const boost::shared_ptr<C_Node> child = written.GetChildAt(i);
            const boost::shared_ptr<C_Node> old = previous ? previous->Find(child->GetName()) : nullptr;
            if (child->GetKind() == E_NodeKind::Category) {
                Walk(static_cast<C_Category&>(*child), CastToCategory(old).get());
            } else if (child->GetKind() == E_NodeKind::List) {
                const auto oldList = CastToList(old);
                if (oldList && oldList->GetElementFactory()) {
                    auto& list = static_cast<C_List&>(*child);
                    list.SetElementFactory(oldList->GetElementFactory());
                    Fill(list, Elements(list));
                }
            }
        }
    }

private:
    static std::vector<boost::shared_ptr<C_Node>> Elements(const C_List& list)
    {
        std::vector<boost::shared_ptr<C_Node>> elements;
        for (unsigned i = 0; i < list.GetSize(); ++i)
            elements.push_back(list.GetAt(i));
        return elements;
    }

    // Replaces the elements of `target` by `source`: made by its factory and filled, or copied.
    void Fill(C_List& target, const std::vector<boost::shared_ptr<C_Node>>& source)
    {
        target.Clear();
        for (const auto& element : source) {
            if (target.GetElementFactory())
                Apply(*target.Append(), *element);
            else
                target.Append(element->Clone());
        }
    }

    // Gives `target` (made by an element factory) the attributes, value and children of `source`.
    void Apply(C_Node& target, const C_Node& source)
    {
        if (target.GetKind() != source.GetKind()) {
            const auto it = m_parsed.lineOf.find(&source);
            RTE_THROW_MSG(Exception, m_source << ":" << (it == m_parsed.lineOf.end() ? 0u : it->second)
                                              << ": the list '" << (target.GetParent() ? target.GetParent()->GetName() : QString())
                                              << "' makes elements of kind " << NodeKindName(target.GetKind())
                                              << ", the text has one of kind " << NodeKindName(source.GetKind()));
        }
        target.SetTitle(source.GetTitle());
        target.SetDescription(source.GetDescription());
        target.SetAccessMode(source.GetAccessMode());
        target.SetEditor(source.GetEditor());
        switch (source.GetKind()) {
        case E_NodeKind::Text:
            static_cast<C_Text&>(target).SetValue(static_cast<const C_Text&>(source).GetValue());
            break;
        case E_NodeKind::Integer: {
            const auto& from = static_cast<const C_Integer&>(source);
            static_cast<C_Integer&>(target).SetValueAndRange(from.GetValue(), from.GetRange());
            break;
        }
        case E_NodeKind::Double: {
            const auto& from = static_cast<const C_Double&>(source);
            static_cast<C_Double&>(target).SetValueAndRange(from.GetValue(), from.GetRange());
            break;
        }
        case E_NodeKind::Enumeration: {
            const auto& from = static_cast<const C_Enumeration&>(source);
            auto& to = static_cast<C_Enumeration&>(target);
            to.ClearEntries();
            for (unsigned i = 0; i < from.GetEntryCount(); ++i)
                to.AddEntry(boost::make_shared<C_EnumerationEntry>(*from.GetEntry(i)));
            to.SetSelectedIndex(from.GetSelectedIndex());
            break;
        }
        case E_NodeKind::List:
            Fill(static_cast<C_List&>(target), Elements(static_cast<const C_List&>(source)));
            break;
        case E_NodeKind::Category: {
            const auto& from = static_cast<const C_Category&>(source);
            auto& to = static_cast<C_Category&>(target);
            std::vector<boost::shared_ptr<C_Node>> children;
            for (unsigned i = 0; i < from.GetChildCount(); ++i) {
                const boost::shared_ptr<C_Node> written = from.GetChildAt(i);
                const boost::shared_ptr<C_Node> made = to.Find(written->GetName());
                if (made && made->GetKind() == written->GetKind()) {
                    Apply(*made, *written);
                    children.push_back(made);
                } else {
                    children.push_back(written->Clone());
                }
            }
            to.Clear();
            for (const auto& child : children)
                to.Add(child);
            break;
        }
        }
    }

    const ParsedTree& m_parsed;
    QString m_source;
};

} // namespace

void AdoptListFactories(ParsedTree& parsed, const C_Category& previous, const QString& sourceName)
{
    Adopter(parsed, sourceName).Walk(*parsed.root, &previous);
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
