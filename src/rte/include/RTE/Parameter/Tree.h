#pragma once
// A parameter tree: an unnamed root category with the tree's nodes, and a signal for their changes.
//
// Copying a tree (constructor or assignment) copies every node deeply: the copy has nodes of its
// own. Signal connections are never copied; an assigned-to tree keeps the connections of its own
// Changed() signal. Changed() fires after the value of any node in the tree changed, with that node
// as argument (see C_Node); it does not fire for structure changes, for Read or for assignment.
//
// Text form: docs/formats/parameter-tree.md. Reading replaces the whole content only when the text
// was read completely; on any error the tree stays as it was.
//
// Not thread-safe: a tree is used by one thread at a time.

#include <RTE/Export.h>
#include <RTE/Parameter/Category.h>

#include <iosfwd>

namespace RTE {
namespace Parameter {

class RTE_API C_Tree {
public:
    using ChangedSignal = boost::signals2::signal<void(C_Node&)>;

    C_Tree();
    C_Tree(const C_Tree& other);
    C_Tree& operator=(const C_Tree& other);
    ~C_Tree();

    const boost::shared_ptr<C_Category>& GetRoot() const { return m_root; }

    // As C_Category::Add on the root.
    void Add(const boost::shared_ptr<C_Node>& node);
    // A child of the root of exactly that name, else the node at that '/'-separated path; or null.
    boost::shared_ptr<C_Node> Find(const QString& nameOrPath) const;
    unsigned GetChildCount() const { return m_root->GetChildCount(); }
    boost::shared_ptr<C_Node> GetChildAt(unsigned index) const { return m_root->GetChildAt(index); }
    bool Remove(const QString& name) { return m_root->Remove(name); }

    ChangedSignal& Changed() { return m_changed; }

    // Writes the text form. Raises RTE::Exception if the stream fails.
    void Write(std::ostream& out) const;
    // Replaces the content by the text form read from the stream. sourceName names the input in
    // failures, which are RTE::Exception with "<sourceName>:<line>: <what is wrong>".
    void Read(std::istream& in, const QString& sourceName);
    static boost::shared_ptr<C_Tree> ReadNew(std::istream& in, const QString& sourceName);

    // The same on a file. Writing raises RTE::FileWriteError, reading RTE::FileError for a file that
    // cannot be opened.
    void WriteFile(const QString& path) const;
    void ReadFile(const QString& path);

private:
    friend class C_Node;
    void Adopt(const boost::shared_ptr<C_Category>& root);

    boost::shared_ptr<C_Category> m_root;
    ChangedSignal m_changed;
};

} // namespace Parameter
} // namespace RTE
