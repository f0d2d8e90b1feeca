#include <SetApi/set/C_DataSetParameter.h>

#include "NarrowText.h"

#include <RTE/Parameter/Factory.h>

#include <limits>

namespace SetApi {

namespace P = RTE::Parameter;
using Private::FromNarrow;
using Private::ToNarrow;

namespace {
constexpr RTE::C_RangeT<long long> kIntegerRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
constexpr RTE::C_RangeT<double> kDoubleRange(-std::numeric_limits<double>::max(), std::numeric_limits<double>::max());
} // namespace

C_DataSetParameter::C_DataSetParameter() : m_tree(P::CreateTree())
{
    Add("SetType", 0);
    Add("SetGroups", std::string());
    Add("SetTime", std::string());
    Add("SetComments", std::string());
    Add("SetStart", 1);
    Add("SetInc", 1);
    Add("SetSourceSet", std::string());
    Add("SetViewCallback", std::string());
    Add("SetLoadCallback", std::string());
}

C_DataSetParameter::C_DataSetParameter(const C_DataSetParameter& other) = default;

C_DataSetParameter& C_DataSetParameter::operator=(const C_DataSetParameter& other) = default;

C_DataSetParameter::~C_DataSetParameter() = default;

boost::shared_ptr<P::C_Node> C_DataSetParameter::Find(const std::string& name) const
{
    // Exact names of the root's children only: a name holding '/' is a name, not a path.
    return m_tree->GetRoot()->Find(FromNarrow(name));
}

void C_DataSetParameter::Add(const std::string& name, const std::string& value)
{
    if (Has(name)) {
        SetValue(name, value);
        return;
    }
    const QString key = FromNarrow(name);
    m_tree->Add(P::CreateText(key, key, QString(), P::AccessInternal, FromNarrow(value)));
}

void C_DataSetParameter::Add(const std::string& name, int value)
{
    if (Has(name)) {
        SetValue(name, value);
        return;
    }
    const QString key = FromNarrow(name);
    m_tree->Add(P::CreateInteger(key, key, QString(), P::AccessInternal, value, kIntegerRange));
}

void C_DataSetParameter::Add(const std::string& name, double value)
{
    if (Has(name)) {
        SetValue(name, value);
        return;
    }
    const QString key = FromNarrow(name);
    m_tree->Add(P::CreateDouble(key, key, QString(), P::AccessInternal, value, kDoubleRange));
}

bool C_DataSetParameter::SetValue(const std::string& name, const std::string& value)
{
    const auto node = P::CastToText(Find(name));
    if (!node)
        return false;
    node->SetValue(FromNarrow(value));
    return true;
}

bool C_DataSetParameter::SetValue(const std::string& name, int value)
{
    const auto node = P::CastToInteger(Find(name));
    if (!node || !node->GetRange().Contains(value))
        return false;
    node->SetValue(value);
    return true;
}

bool C_DataSetParameter::SetValue(const std::string& name, double value)
{
    const auto node = P::CastToDouble(Find(name));
    if (!node || !node->Accepts(value))
        return false;
    node->SetValue(value);
    return true;
}

bool C_DataSetParameter::GetValue(const std::string& name, std::string& value) const
{
    value.clear();
    const auto node = P::CastToText(Find(name));
    if (!node)
        return false;
    value = ToNarrow(node->GetValue());
    return true;
}

bool C_DataSetParameter::GetValue(const std::string& name, int& value) const
{
    value = 0;
    const auto node = P::CastToInteger(Find(name));
    if (!node)
        return false;
    // Nodes made here hold ints only; a node put into the tree by other code may hold more.
    value = static_cast<int>(kIntegerRange.Clamp(node->GetValue()));
    return true;
}

bool C_DataSetParameter::GetValue(const std::string& name, double& value) const
{
    value = 0;
    const auto node = P::CastToDouble(Find(name));
    if (!node)
        return false;
    value = node->GetValue();
    return true;
}

bool C_DataSetParameter::Has(const std::string& name) const { return Find(name) != nullptr; }

bool C_DataSetParameter::IsString(const std::string& name) const { return P::CastToText(Find(name)) != nullptr; }

bool C_DataSetParameter::IsDouble(const std::string& name) const { return P::CastToDouble(Find(name)) != nullptr; }

std::uint64_t C_DataSetParameter::GetSize() const { return m_tree->GetChildCount(); }

std::string C_DataSetParameter::GetName(std::uint64_t index) const
{
    if (index >= GetSize())
        return std::string();
    return ToNarrow(m_tree->GetChildAt(static_cast<unsigned>(index))->GetName());
}

} // namespace SetApi
