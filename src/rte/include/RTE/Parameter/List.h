#pragma once
// A parameter node holding an ordered list of element nodes.
//
// New elements come from the list's element factory, so that every element has the shape the
// owner of the list wants (kind, range, nested lists with their own factories). Elements need not
// have distinct names. The factory is code: it is shared by copies of the list and is not written
// to text (see docs/formats/parameter-tree.md for how reading finds it).

#include <RTE/Parameter/Node.h>

#include <functional>
#include <vector>

namespace RTE {
namespace Parameter {

class RTE_API C_List : public C_Node {
public:
    static const char* const EditorLineEdit; // "LineEdit", the default

    using ElementFactory = std::function<boost::shared_ptr<C_Node>()>;

    C_List(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
           ElementFactory factory);
    ~C_List() override;

    E_NodeKind GetKind() const override { return E_NodeKind::List; }
    boost::shared_ptr<C_Node> Clone() const override;

    const ElementFactory& GetElementFactory() const { return m_factory; }
    void SetElementFactory(ElementFactory factory) { m_factory = std::move(factory); }

    // Makes an element with the factory, appends it and returns it. Raises RTE::VerificationFailed
    // if the list has no factory or the factory gives null or a node that has a parent.
    boost::shared_ptr<C_Node> Append();
    // Appends a node made elsewhere. Raises RTE::VerificationFailed for null, a node that has a
    // parent, or a node that holds this list.
    void Append(const boost::shared_ptr<C_Node>& element);

    unsigned GetSize() const { return static_cast<unsigned>(m_elements.size()); }
    // Raises RTE::VerificationFailed behind the end.
    boost::shared_ptr<C_Node> GetAt(unsigned index) const;
    // Raises RTE::VerificationFailed behind the end.
    void Remove(unsigned index);
    void Clear();

private:
    ElementFactory m_factory;
    std::vector<boost::shared_ptr<C_Node>> m_elements;
};

} // namespace Parameter
} // namespace RTE
