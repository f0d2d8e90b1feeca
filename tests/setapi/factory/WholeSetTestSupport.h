#pragma once
// Helpers of the tests of the whole-set operations: a set on disk with buffer files and a child
// set, the content of a set as it lies on disk, and an observer of the factory.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/set/C_Set.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace WholeSet {

using Operation = RTE::FaultInjectingFileSystem::Operation;

// Every operation that changes the file system and can be made to fail.
inline const std::vector<Operation>& ChangingOperations()
{
    static const std::vector<Operation> operations{Operation::Rename, Operation::RemoveFile,
                                                   Operation::RemoveDirectory, Operation::CopyFile,
                                                   Operation::CreateDirectory};
    return operations;
}

// The content of a set: ".set" for its set file, and each file of its folder (sub-folders
// included) by relative path. Empty when neither exists.
using Content = std::map<std::string, std::string>;

inline Content ContentOf(const std::string& set)
{
    Content content;
    if (RTE::FileSystem::Exists(set + ".set"))
        content[".set"] = TestSupport::ReadFile(set + ".set");
    for (const std::string& file : RTE::FileSystem::GetFiles(set, ".*", true, false))
        content[file] = TestSupport::ReadFile(set + "/" + file);
    return content;
}

// A plain set with two buffer files (one read-only), a file of another kind, and a child set.
inline void MakeSet(const std::string& set, const std::string& seed)
{
    std::unique_ptr<SetApi::C_Set>(SetApi::C_Set::Create(set, SetApi::I_Set::SET_TYPE_IMAGE, true));
    TestSupport::WriteFile(set + "/B00001.im7", seed + std::string("\0\x01\xff one", 8));
    TestSupport::WriteFile(set + "/B00002.im7", seed + " two");
    namespace fs = boost::filesystem;
    fs::permissions(set + "/B00002.im7", fs::owner_read | fs::group_read | fs::others_read);
    TestSupport::WriteFile(set + "/notes.txt", seed + " notes");
    std::unique_ptr<SetApi::C_Set>(SetApi::C_Set::Create(set + "/Child", SetApi::I_Set::SET_TYPE_VECTOR, true));
    TestSupport::WriteFile(set + "/Child/B00001.vc7", seed + " child");
}

// A test that starts with the set "Run" of MakeSet in a scratch folder and its content on disk.
class SourceSetTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        MakeSet(m_from, "source");
        m_source = ContentOf(m_from);
    }

    TestSupport::TempDir m_dir;
    const std::string m_from = m_dir / "Run";
    Content m_source;
};

class RecordingObserver : public SetApi::I_SetFactoryObserver {
public:
    void OnCreate(const std::string& path) override { Add("create " + path); }
    void OnRemove(const std::string& path) override { Add("remove " + path); }
    void OnRename(const std::string& from, const std::string& to) override { Add("rename " + from + " " + to); }
    std::vector<std::string> Events() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.clear();
    }

private:
    void Add(const std::string& event)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
    }
    mutable std::mutex m_mutex;
    std::vector<std::string> m_events;
};

// Attached to the factory for the length of a test only: the factory outlives every test.
class ScopedObserver : public RecordingObserver {
public:
    ScopedObserver() { SetApi::C_SetFactory::Instance().Attach(this); }
    ~ScopedObserver() override { SetApi::C_SetFactory::Instance().Detach(this); }
};

} // namespace WholeSet
