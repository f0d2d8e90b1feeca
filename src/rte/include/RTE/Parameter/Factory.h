#pragma once
// Making parameter nodes and looking at a node as its concrete kind.
//
// The short forms use the name as title, an empty description, read-write access and, for numbers,
// the default range of the kind. All of them raise RTE::VerificationFailed where the constructors do
// (a value outside its range, an empty range).

#include <RTE/Parameter/Category.h>
#include <RTE/Parameter/Double.h>
#include <RTE/Parameter/Enumeration.h>
#include <RTE/Parameter/Integer.h>
#include <RTE/Parameter/List.h>
#include <RTE/Parameter/Text.h>
#include <RTE/Parameter/Tree.h>

namespace RTE {
namespace Parameter {

RTE_API boost::shared_ptr<C_Tree> CreateTree();

RTE_API boost::shared_ptr<C_Category> CreateCategory(const QString& name, const QString& title,
                                                     const QString& description);

RTE_API boost::shared_ptr<C_Text> CreateText(const QString& name, const QString& value);
RTE_API boost::shared_ptr<C_Text> CreateText(const QString& name, const QString& title,
                                             const QString& description, E_AccessMode mode,
                                             const QString& value);

RTE_API boost::shared_ptr<C_Integer> CreateInteger(const QString& name, long long value);
RTE_API boost::shared_ptr<C_Integer> CreateInteger(const QString& name, const QString& title,
                                                   const QString& description, E_AccessMode mode,
                                                   long long value, const C_RangeT<long long>& range);

RTE_API boost::shared_ptr<C_Double> CreateDouble(const QString& name, double value);
RTE_API boost::shared_ptr<C_Double> CreateDouble(const QString& name, const QString& title,
                                                 const QString& description, E_AccessMode mode,
                                                 double value, const C_RangeT<double>& range);

// An enumeration without entries and with read-write access; add entries made by
// Private::CreateEnumerationEntry.
RTE_API boost::shared_ptr<C_Enumeration> CreateEnumeration(const QString& name, const QString& title,
                                                           const QString& description,
                                                           const char* editor = C_Enumeration::EditorComboBox);

RTE_API boost::shared_ptr<C_List> CreateList(const QString& name, const QString& title,
                                             const QString& description, C_List::ElementFactory factory);

namespace Private {
RTE_API boost::shared_ptr<C_EnumerationEntry> CreateEnumerationEntry(const QString& name, const QString& title,
                                                                     const QString& description, int value);
} // namespace Private

// The node as the named kind, or null if it is null or of another kind.
RTE_API boost::shared_ptr<C_Category> CastToCategory(const boost::shared_ptr<C_Node>& node);
RTE_API boost::shared_ptr<C_Text> CastToText(const boost::shared_ptr<C_Node>& node);
RTE_API boost::shared_ptr<C_Integer> CastToInteger(const boost::shared_ptr<C_Node>& node);
RTE_API boost::shared_ptr<C_Double> CastToDouble(const boost::shared_ptr<C_Node>& node);
RTE_API boost::shared_ptr<C_Enumeration> CastToEnumeration(const boost::shared_ptr<C_Node>& node);
RTE_API boost::shared_ptr<C_List> CastToList(const boost::shared_ptr<C_Node>& node);

} // namespace Parameter
} // namespace RTE
