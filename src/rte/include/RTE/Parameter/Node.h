#pragma once
// The base of every node of a parameter tree.
//
// A node has a name (fixed when it is made: categories index their children by it), a title and a
// description for users, an access mode, and the name of the editor a user interface should offer
// for it. Nodes are held by boost::shared_ptr; a node belongs to at most one parent (a category or a
// list) at a time.
//
// Change notification: Changed() fires after the VALUE of the node changed (text, number, selected
// enumeration entry), with the node as argument, and then the Changed() signal of the C_Tree the
// node is in fires too. Setting a value equal to the current one fires nothing. Changes of structure
// (adding or removing children, list elements or enumeration entries) and of attributes (title,
// description, access mode, editor, range) fire nothing.
//
// Nodes are not thread-safe: a tree is used by one thread at a time.

#include <RTE/Export.h>
#include <RTE/Parameter/AccessMode.h>

#include <QString>

#include <boost/shared_ptr.hpp>
#include <boost/signals2/signal.hpp>

#include <memory>

namespace RTE {
namespace Parameter {

class C_Tree;

enum class E_NodeKind { Category, Text, Integer, Double, Enumeration, List };

// "category", "text", "integer", "double", "enumeration", "list".
RTE_API const char* NodeKindName(E_NodeKind kind);

class RTE_API C_Node {
public:
    using ChangedSignal = boost::signals2::signal<void(C_Node&)>;

    virtual ~C_Node();
    C_Node(const C_Node&) = delete;
    C_Node& operator=(const C_Node&) = delete;

    virtual E_NodeKind GetKind() const = 0;

    // A deep copy with the same attributes, values and children, without parent and without any
    // signal connection. A list's copy shares the element factory.
    virtual boost::shared_ptr<C_Node> Clone() const = 0;

    const QString& GetName() const { return m_name; }
    const QString& GetTitle() const { return m_title; }
    void SetTitle(const QString& title) { m_title = title; }
    const QString& GetDescription() const { return m_description; }
    void SetDescription(const QString& description) { m_description = description; }

    E_AccessMode GetAccessMode() const { return m_accessMode; }
    // Raises RTE::VerificationFailed for a number that is not a mode.
    void SetAccessMode(E_AccessMode mode);

    // A constant such as C_Integer::EditorSpinBox; the pointer must stay valid as long as the node
    // (string literals and the editor constants do). Null raises RTE::VerificationFailed.
    const char* GetEditor() const { return m_editor; }
    void SetEditor(const char* editor);

    // The category or list holding the node, or null.
    C_Node* GetParent() const { return m_parent; }

    // Made at first use: most nodes are never watched, and a signal is costly to build.
    ChangedSignal& Changed();

protected:
    C_Node(const QString& name, const QString& title, const QString& description, E_AccessMode mode,
           const char* editor);

    // Takes title, description, access mode and editor of the other node.
    void CopyAttributesFrom(const C_Node& other);
    // Fires this node's signal and then the signal of the tree it is in.
    void NotifyChanged();

private:
    friend class C_Category;
    friend class C_List;
    friend class C_Tree;

    QString m_name;
    QString m_title;
    QString m_description;
    E_AccessMode m_accessMode;
    const char* m_editor;
    C_Node* m_parent = nullptr;
    C_Tree* m_tree = nullptr; // set on the root category of a tree only
    std::unique_ptr<ChangedSignal> m_changed;
};

} // namespace Parameter
} // namespace RTE
