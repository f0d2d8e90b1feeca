#pragma once
// A parameter node grouping named children in order.
//
// Child names are unique within a category and may hold any character; Find looks a name up in
// constant time. Paths: FindPath splits at '/' and descends through categories, so a child whose
// name holds '/' is reached by Find only.

#include <RTE/Parameter/Node.h>

#include <QHash>

#include <vector>

namespace RTE {
namespace Parameter {

class RTE_API C_Category : public C_Node {
public:
    C_Category(const QString& name, const QString& title, const QString& description,
               E_AccessMode mode = AccessReadWrite);
    ~C_Category() override;

    E_NodeKind GetKind() const override { return E_NodeKind::Category; }
    boost::shared_ptr<C_Node> Clone() const override;

    // Appends a child. Raises RTE::VerificationFailed for null, an empty name, a name the category
    // already has, a node that has a parent, or a node that holds this category.
    void Add(const boost::shared_ptr<C_Node>& child);
    // Null if there is no child of that name.
    boost::shared_ptr<C_Node> Find(const QString& name) const;
    // Null if any step is missing or is not a category. An empty path gives null.
    boost::shared_ptr<C_Node> FindPath(const QString& path) const;
    // Whether a child of that name was there.
    bool Remove(const QString& name);
    void Clear();

    unsigned GetChildCount() const { return static_cast<unsigned>(m_children.size()); }
    // Raises RTE::VerificationFailed behind the end.
    boost::shared_ptr<C_Node> GetChildAt(unsigned index) const;

private:
    std::vector<boost::shared_ptr<C_Node>> m_children;
    QHash<QString, boost::shared_ptr<C_Node>> m_index;
};

} // namespace Parameter
} // namespace RTE
