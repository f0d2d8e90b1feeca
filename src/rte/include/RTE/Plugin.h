#pragma once
// A plug-in: an object made by name through the plug-in registry (RTE/PluginRegistry.h) and
// RTE::C_PluginFactory (RTE/PluginFactory.h). Concrete plug-ins derive from an interface of
// their kind, which derives from I_Plugin.

#include <RTE/Export.h>

#include <string>

namespace RTE {

class RTE_API I_Plugin {
public:
    virtual ~I_Plugin();
    virtual std::string GetPluginName() const = 0;
    virtual std::string GetPluginType() const = 0;
    virtual std::string GetPluginDescription() const = 0;
};

// Whatever a creator needs to know about the place its plug-in is made for. Callers derive their
// own context; a creator casts to the one it expects and copes with null.
class RTE_API I_CreationContext {
public:
    virtual ~I_CreationContext();
};

// Makes one plug-in; owned by the caller. May throw or return null on failure.
using PluginCreator = I_Plugin* (*)(I_CreationContext* context);

} // namespace RTE
