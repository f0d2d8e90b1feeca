#include <RTE/Parameter/Factory.h>

#include <boost/make_shared.hpp>

namespace RTE {
namespace Parameter {

boost::shared_ptr<C_Tree> CreateTree() { return boost::make_shared<C_Tree>(); }

boost::shared_ptr<C_Category> CreateCategory(const QString& name, const QString& title, const QString& description)
{
    return boost::make_shared<C_Category>(name, title, description);
}

boost::shared_ptr<C_Text> CreateText(const QString& name, const QString& value)
{
    return boost::make_shared<C_Text>(name, name, QString(), AccessReadWrite, value);
}

boost::shared_ptr<C_Text> CreateText(const QString& name, const QString& title, const QString& description,
                                     E_AccessMode mode, const QString& value)
{
    return boost::make_shared<C_Text>(name, title, description, mode, value);
}

boost::shared_ptr<C_Integer> CreateInteger(const QString& name, long long value)
{
    return boost::make_shared<C_Integer>(name, name, QString(), AccessReadWrite, value);
}

boost::shared_ptr<C_Integer> CreateInteger(const QString& name, const QString& title, const QString& description,
                                           E_AccessMode mode, long long value, const C_RangeT<long long>& range)
{
    return boost::make_shared<C_Integer>(name, title, description, mode, value, range);
}

boost::shared_ptr<C_Double> CreateDouble(const QString& name, double value)
{
    return boost::make_shared<C_Double>(name, name, QString(), AccessReadWrite, value);
}

boost::shared_ptr<C_Double> CreateDouble(const QString& name, const QString& title, const QString& description,
                                         E_AccessMode mode, double value, const C_RangeT<double>& range)
{
    return boost::make_shared<C_Double>(name, title, description, mode, value, range);
}

boost::shared_ptr<C_Enumeration> CreateEnumeration(const QString& name, const QString& title,
                                                   const QString& description, const char* editor)
{
    return boost::make_shared<C_Enumeration>(name, title, description, AccessReadWrite, editor);
}

boost::shared_ptr<C_List> CreateList(const QString& name, const QString& title, const QString& description,
                                     C_List::ElementFactory factory)
{
    return boost::make_shared<C_List>(name, title, description, AccessReadWrite, std::move(factory));
}

namespace Private {
boost::shared_ptr<C_EnumerationEntry> CreateEnumerationEntry(const QString& name, const QString& title,
                                                             const QString& description, int value)
{
    return boost::make_shared<C_EnumerationEntry>(name, title, description, value);
}
} // namespace Private

boost::shared_ptr<C_Category> CastToCategory(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::Category ? boost::static_pointer_cast<C_Category>(node) : nullptr;
}

boost::shared_ptr<C_Text> CastToText(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::Text ? boost::static_pointer_cast<C_Text>(node) : nullptr;
}

boost::shared_ptr<C_Integer> CastToInteger(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::Integer ? boost::static_pointer_cast<C_Integer>(node) : nullptr;
}

boost::shared_ptr<C_Double> CastToDouble(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::Double ? boost::static_pointer_cast<C_Double>(node) : nullptr;
}

boost::shared_ptr<C_Enumeration> CastToEnumeration(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::Enumeration ? boost::static_pointer_cast<C_Enumeration>(node)
                                                              : nullptr;
}

boost::shared_ptr<C_List> CastToList(const boost::shared_ptr<C_Node>& node)
{
    return node && node->GetKind() == E_NodeKind::List ? boost::static_pointer_cast<C_List>(node) : nullptr;
}

} // namespace Parameter
} // namespace RTE
