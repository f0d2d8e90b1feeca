#include <RTE/Parameter/ParameterServer.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

namespace RTE {
namespace Parameter {

C_ParameterServer& C_ParameterServer::GetInstance()
{
    // Never destroyed: trees may be asked for during static destruction of other libraries.
    static C_ParameterServer* instance = new C_ParameterServer;
    return *instance;
}

void C_ParameterServer::RegisterDefinition(const std::string& name, Definition definition)
{
    RTE_VERIFY(static_cast<bool>(definition), "A parameter tree definition must not be empty");
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_definitions.emplace(name, definition).second) {
        m_definitions[name] = std::move(definition);
        C_Logger("Parameter").debug("Parameter tree definition '" + name + "' replaced");
    }
}

bool C_ParameterServer::HasDefinition(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_definitions.count(name) != 0;
}

boost::shared_ptr<C_Tree> C_ParameterServer::Get(const std::string& name, int key)
{
    Definition definition;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto tree = m_trees.find({name, key});
        if (tree != m_trees.end())
            return tree->second;
        const auto found = m_definitions.find(name);
        if (found == m_definitions.end())
            RTE_THROW_MSG(Exception, "No parameter tree definition named '" << name << "'");
        definition = found->second;
    }
    boost::shared_ptr<C_Tree> made = definition(); // without the lock: a definition may use the server
    if (!made)
        RTE_THROW_MSG(Exception, "The parameter tree definition '" << name << "' made no tree");
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_trees.emplace(std::make_pair(name, key), made).first->second; // an earlier winner stays
}

bool C_ParameterServer::Remove(const std::string& name, int key)
{
    boost::shared_ptr<C_Tree> removed; // released outside the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_trees.find({name, key});
    if (it == m_trees.end())
        return false;
    removed = it->second;
    m_trees.erase(it);
    return true;
}

DefinitionAutoRegistration::DefinitionAutoRegistration(const QString& name,
                                                       std::function<boost::shared_ptr<C_Tree>()> definition)
{
    C_ParameterServer::GetInstance().RegisterDefinition(name.toStdString(), std::move(definition));
}

} // namespace Parameter
} // namespace RTE
