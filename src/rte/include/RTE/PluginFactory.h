#pragma once
// Makes registered plug-ins by key and name. Creation fails softly: an unknown plug-in, a creator
// that throws or one that returns null gives no object, and the reason is logged at error level
// on the logger "Plugin". Thread-safe.

#include <RTE/Export.h>
#include <RTE/Plugin.h>

#include <memory>
#include <string>

namespace RTE {

class RTE_API C_PluginFactory {
public:
    static C_PluginFactory& GetInstance();

    C_PluginFactory(const C_PluginFactory&) = delete;
    C_PluginFactory& operator=(const C_PluginFactory&) = delete;

    // A new plug-in owned by the caller, or null.
    I_Plugin* Create(const std::string& key, const std::string& name, I_CreationContext* context = nullptr) const;
    std::unique_ptr<I_Plugin> CreateUnique(const std::string& key, const std::string& name,
                                           I_CreationContext* context = nullptr) const;

private:
    C_PluginFactory() = default;
};

} // namespace RTE
