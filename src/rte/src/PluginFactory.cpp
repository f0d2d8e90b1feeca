#include <RTE/PluginFactory.h>

#include <RTE/Logger.h>
#include <RTE/PluginRegistry.h>

#include <exception>

namespace RTE {
namespace {

std::string Describe(const std::string& key, const std::string& name)
{
    return "plug-in '" + name + "' of type '" + key + "'";
}

} // namespace

C_PluginFactory& C_PluginFactory::GetInstance()
{
    static C_PluginFactory* factory = new C_PluginFactory;
    return *factory;
}

I_Plugin* C_PluginFactory::Create(const std::string& key, const std::string& name, I_CreationContext* context) const
{
    const C_Logger logger("Plugin");
    // The creator runs outside the registry's lock, so that it may itself use the registry.
    const PluginCreator create = C_PluginRegistry::GetInstance().FindCreator(key, name);
    if (!create) {
        logger.error("No " + Describe(key, name) + " is registered");
        return nullptr;
    }
    try {
        I_Plugin* plugin = create(context);
        if (!plugin)
            logger.error("Creating " + Describe(key, name) + " gave no object");
        return plugin;
    } catch (const std::exception& e) {
        logger.error("Creating " + Describe(key, name) + " failed: " + e.what());
    } catch (...) {
        logger.error("Creating " + Describe(key, name) + " failed: unknown exception");
    }
    return nullptr;
}

std::unique_ptr<I_Plugin> C_PluginFactory::CreateUnique(const std::string& key, const std::string& name,
                                                        I_CreationContext* context) const
{
    return std::unique_ptr<I_Plugin>(Create(key, name, context));
}

} // namespace RTE
