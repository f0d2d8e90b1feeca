#include <Storage/SettingsNode.h>

#include <RTE/Exception.h>

#include "SettingsCopy.h"

namespace Storage {

SettingsNode::SettingsNode(const QString& name) : m_name(name) {}

SettingsNode::SettingsNode(const Settings& source) { Private::CopyContent(source, *this); }

SettingsNode::SettingsNode(const SettingsNode& other) : Settings(other)
{
    Private::CopyContent(other, *this);
}

SettingsNode& SettingsNode::operator=(const SettingsNode& other)
{
    if (this != &other) {
        SettingsNode copy(other);
        SwapContent(copy);
    }
    return *this;
}

SettingsNode::~SettingsNode()
{
    // Tear the tree down level by level rather than by recursion, so that a deep tree cannot
    // exhaust the stack.
    std::vector<std::unique_ptr<SettingsNode>> doomed = std::move(m_children);
    while (!doomed.empty()) {
        std::unique_ptr<SettingsNode> node = std::move(doomed.back());
        doomed.pop_back();
        for (std::unique_ptr<SettingsNode>& child : node->m_children)
            doomed.push_back(std::move(child));
        node->m_children.clear();
    }
}

QString SettingsNode::GetName() const { return m_name; }

void SettingsNode::SetName(const QString& name) { m_name = name; }

QString SettingsNode::GetClass() const { return m_class; }

void SettingsNode::SetClass(const QString& className) { m_class = className; }

int SettingsNode::GetVersion() const { return m_version; }

void SettingsNode::SetVersion(int version) { m_version = version; }

QStringList SettingsNode::GetValueNames() const
{
    QStringList names;
    names.reserve(static_cast<qsizetype>(m_values.size()));
    for (const auto& value : m_values)
        names.append(value.first);
    return names;
}

bool SettingsNode::HasValue(const QString& name) const { return m_valueIndex.contains(name); }

QString SettingsNode::GetValue(const QString& name, const QString& defaultValue) const
{
    const auto found = m_valueIndex.constFind(name);
    if (found == m_valueIndex.constEnd())
        return defaultValue;
    return m_values[static_cast<std::size_t>(found.value())].second;
}

void SettingsNode::SetValue(const QString& name, const QString& value)
{
    const auto found = m_valueIndex.constFind(name);
    if (found != m_valueIndex.constEnd()) {
        m_values[static_cast<std::size_t>(found.value())].second = value;
        return;
    }
    m_values.emplace_back(name, value);
    m_valueIndex.insert(name, static_cast<int>(m_values.size() - 1));
}

bool SettingsNode::RemoveValue(const QString& name)
{
    const auto found = m_valueIndex.find(name);
    if (found == m_valueIndex.end())
        return false;
    const std::size_t position = static_cast<std::size_t>(found.value());
    m_valueIndex.erase(found);
    m_values.erase(m_values.begin() + static_cast<std::ptrdiff_t>(position));
    for (std::size_t i = position; i < m_values.size(); ++i)
        m_valueIndex[m_values[i].first] = static_cast<int>(i);
    return true;
}

int SettingsNode::GetChildCount() const { return static_cast<int>(m_children.size()); }

void SettingsNode::CheckChildIndex(int index) const
{
    if (index < 0 || index >= GetChildCount())
        RTE_THROW_MSG(RTE::VerificationFailed, "Settings child index " << index << " is out of range: '" << m_name
                                                                       << "' has " << GetChildCount() << " children");
}

const Settings& SettingsNode::GetChild(int index) const
{
    CheckChildIndex(index);
    return *m_children[static_cast<std::size_t>(index)];
}

Settings& SettingsNode::GetChild(int index)
{
    CheckChildIndex(index);
    return *m_children[static_cast<std::size_t>(index)];
}

const Settings* SettingsNode::FindChild(const QString& name) const
{
    for (const auto& child : m_children)
        if (child->m_name == name)
            return child.get();
    return nullptr;
}

Settings* SettingsNode::FindChild(const QString& name)
{
    return const_cast<Settings*>(static_cast<const SettingsNode*>(this)->FindChild(name));
}

Settings& SettingsNode::AddChild(const QString& name)
{
    m_children.push_back(std::make_unique<SettingsNode>(name));
    return *m_children.back();
}

void SettingsNode::RemoveChild(int index)
{
    CheckChildIndex(index);
    m_children.erase(m_children.begin() + index);
}

std::unique_ptr<Settings> SettingsNode::Clone() const
{
    auto copy = std::make_unique<SettingsNode>();
    Private::CopyContent(*this, *copy);
    return copy;
}

void SettingsNode::SwapContent(SettingsNode& other) noexcept
{
    m_name.swap(other.m_name);
    m_class.swap(other.m_class);
    std::swap(m_version, other.m_version);
    m_values.swap(other.m_values);
    m_valueIndex.swap(other.m_valueIndex);
    m_children.swap(other.m_children);
}

} // namespace Storage
