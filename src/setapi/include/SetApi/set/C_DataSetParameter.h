#pragma once
// The named parameters of a set, as written in its set file.
//
// A thin layer over a parameter tree: each parameter is a node directly below the tree's root, in
// set file order, with the parameter's name as name and title, an empty description and the
// internal access mode. Kinds: text, integer (32-bit range) and double (the finite range). There is
// no conversion between kinds: a value of another kind than the node is refused.
//
// Copies share one tree: a copy and its source see each other's changes.
// Names and texts are narrow strings here and QString in the tree; the conversion keeps every byte
// sequence (text that is not UTF-8 comes back unchanged).
// Not thread-safe; the set holding it serialises access.

#include <SetApi/Export.h>

#include <RTE/Parameter/Tree.h>

#include <cstdint>
#include <string>

namespace SetApi {

class SETAPI_API C_DataSetParameter {
public:
    // A new tree with the standard keys, in this order: SetType (int 0), SetGroups, SetTime,
    // SetComments (texts), SetStart (int 1), SetInc (int 1), SetSourceSet, SetViewCallback,
    // SetLoadCallback (texts, empty).
    C_DataSetParameter();
    C_DataSetParameter(const C_DataSetParameter& other);
    C_DataSetParameter& operator=(const C_DataSetParameter& other);
    virtual ~C_DataSetParameter();

    // Sets the value of the parameter of that name if there is one (only if the kind fits, else
    // nothing changes); otherwise appends a new parameter of the value's kind. An empty name raises
    // RTE::VerificationFailed, and so does a new double that is not finite.
    void Add(const std::string& name, const std::string& value);
    void Add(const std::string& name, int value);
    void Add(const std::string& name, double value);

    // True if a parameter of that name and exactly that kind exists and took the value (a double
    // outside the finite range is refused).
    bool SetValue(const std::string& name, const std::string& value);
    bool SetValue(const std::string& name, int value);
    bool SetValue(const std::string& name, double value);

    // The output is first cleared to empty or 0; true if a parameter of that name and kind exists.
    bool GetValue(const std::string& name, std::string& value) const;
    bool GetValue(const std::string& name, int& value) const;
    bool GetValue(const std::string& name, double& value) const;

    bool Has(const std::string& name) const;
    bool IsString(const std::string& name) const;
    bool IsDouble(const std::string& name) const;

    std::uint64_t GetSize() const;
    // The name of parameter `index` in order, or empty behind the end.
    std::string GetName(std::uint64_t index) const;

    boost::shared_ptr<RTE::Parameter::C_Tree> GetTree() const { return m_tree; }

private:
    boost::shared_ptr<RTE::Parameter::C_Node> Find(const std::string& name) const;

    boost::shared_ptr<RTE::Parameter::C_Tree> m_tree;
};

} // namespace SetApi
