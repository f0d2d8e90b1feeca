#pragma once
// Named parameter tree definitions, and one tree per name and key made from them on demand.
//
// A definition is a function that builds a fresh tree. Libraries register theirs at load time with
// a static DefinitionAutoRegistration object. Get(name, key) builds the tree from the definition the
// first time a key is asked for and gives the same tree for that key afterwards, until Remove.
// All operations are thread-safe. A definition runs without any lock held, so it may use the
// server itself; if two threads ask for a new key at once, one tree wins and both get it.

#include <RTE/Export.h>
#include <RTE/Parameter/Tree.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace RTE {
namespace Parameter {

class RTE_API C_ParameterServer {
public:
    using Definition = std::function<boost::shared_ptr<C_Tree>()>;

    static C_ParameterServer& GetInstance();

    // Registers or replaces the definition of that name. An empty function raises
    // RTE::VerificationFailed. Trees made before stay as they are.
    void RegisterDefinition(const std::string& name, Definition definition);
    bool HasDefinition(const std::string& name) const;

    // Raises RTE::Exception for a name without definition or a definition that gives null.
    boost::shared_ptr<C_Tree> Get(const std::string& name, int key);
    // Forgets the tree of that name and key (holders keep theirs); the next Get makes a new one.
    // Whether there was one.
    bool Remove(const std::string& name, int key);

private:
    C_ParameterServer() = default;

    mutable std::mutex m_mutex;
    std::map<std::string, Definition> m_definitions;
    std::map<std::pair<std::string, int>, boost::shared_ptr<C_Tree>> m_trees;
};

// Registers a definition when constructed; meant as a static object at namespace scope:
//   static RTE::Parameter::DefinitionAutoRegistration reg("Hypersampling", &MakeTree);
class RTE_API DefinitionAutoRegistration {
public:
    DefinitionAutoRegistration(const QString& name, std::function<boost::shared_ptr<C_Tree>()> definition);
};

} // namespace Parameter
} // namespace RTE
