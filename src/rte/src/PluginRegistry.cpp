#include <RTE/PluginRegistry.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <algorithm>

namespace RTE {

C_PluginRegistry& C_PluginRegistry::GetInstance()
{
    // Never destroyed: plug-in libraries may register or be looked up during static destruction.
    static C_PluginRegistry* registry = new C_PluginRegistry;
    return *registry;
}

void C_PluginRegistry::RegisterPlugin(const std::string& key, const std::string& name,
                                      const std::string& description, PluginCreator create)
{
    RTE_VERIFY(!key.empty(), "Plug-in key must not be empty");
    RTE_VERIFY(create != nullptr, "Plug-in creator must not be null");
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [&](const Entry& e) { return e.key == key && e.name == name; });
    if (it != m_entries.end()) {
        it->description = description;
        it->create = create;
    } else {
        m_entries.push_back(Entry{key, name, description, create});
    }
}

bool C_PluginRegistry::UnregisterPlugin(const std::string& key, const std::string& name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [&](const Entry& e) { return e.key == key && e.name == name; });
    if (it == m_entries.end())
        return false;
    m_entries.erase(it);
    return true;
}

std::vector<C_PluginRegistry::Entry> C_PluginRegistry::GetPlugins(const std::string& key) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Entry> result;
    for (const Entry& e : m_entries)
        if (e.key == key)
            result.push_back(e);
    return result;
}

PluginCreator C_PluginRegistry::FindCreator(const std::string& key, const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry& e : m_entries)
        if (e.key == key && e.name == name)
            return e.create;
    return nullptr;
}

PluginRegistration::PluginRegistration(const std::string& key, const std::string& name,
                                       const std::string& description, PluginCreator create)
{
    try {
        C_PluginRegistry::GetInstance().RegisterPlugin(key, name, description, create);
    } catch (const std::exception& e) {
        C_Logger("Plugin").error("Registration of plug-in '" + name + "' of type '" + key +
                                 "' refused: " + e.what());
    }
}

} // namespace RTE
