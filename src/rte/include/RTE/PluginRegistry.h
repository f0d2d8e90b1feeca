#pragma once
// The process-wide list of plug-ins: for each key (the kind of plug-in, e.g. a reader type) and
// name, a description and the function that makes it. Thread-safe. Registration normally happens
// at library load through a PluginRegistration object at namespace scope.

#include <RTE/Export.h>
#include <RTE/Plugin.h>

#include <mutex>
#include <string>
#include <vector>

namespace RTE {

class RTE_API C_PluginRegistry {
public:
    struct Entry {
        std::string key;
        std::string name;
        std::string description;
        PluginCreator create = nullptr;
    };

    // Lives until the process ends; usable during static initialisation and destruction.
    static C_PluginRegistry& GetInstance();

    C_PluginRegistry(const C_PluginRegistry&) = delete;
    C_PluginRegistry& operator=(const C_PluginRegistry&) = delete;

    // Adds a plug-in; the same key and name again replaces the earlier entry in its place.
    // An empty key or a null creator raises RTE::VerificationFailed.
    void RegisterPlugin(const std::string& key, const std::string& name, const std::string& description,
                        PluginCreator create);
    // Removes the entry; false if there was none.
    bool UnregisterPlugin(const std::string& key, const std::string& name);

    // The entries of one key, in order of first registration.
    std::vector<Entry> GetPlugins(const std::string& key) const;
    // The creator of key and name, or null.
    PluginCreator FindCreator(const std::string& key, const std::string& name) const;

private:
    C_PluginRegistry() = default;

    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

// Registers a plug-in when constructed, typically as a static object beside the plug-in class:
//   static const RTE::PluginRegistration registration("ImageReader", "ImageReaderV1", "...",
//                                                      &ImageReaderV1::CreateObject);
// A refused registration is logged (logger "Plugin"), never thrown, so that loading a library
// cannot fail on it; the plug-in is then simply not found.
class RTE_API PluginRegistration {
public:
    PluginRegistration(const std::string& key, const std::string& name, const std::string& description,
                       PluginCreator create);
};

} // namespace RTE
