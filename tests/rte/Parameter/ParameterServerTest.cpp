#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/ParameterServer.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/TestSupport.h"

using namespace RTE::Parameter;

namespace {

std::atomic<int> g_made{0};

boost::shared_ptr<C_Tree> MakeServerTestTree()
{
    ++g_made;
    auto tree = CreateTree();
    tree->Add(CreateInteger("Cycle", 0));
    return tree;
}

const DefinitionAutoRegistration g_registration("ParameterServerTest", &MakeServerTestTree);

} // namespace

TEST(ParameterServer, StaticRegistrationHappensAtLoad)
{
    EXPECT_TRUE(C_ParameterServer::GetInstance().HasDefinition("ParameterServerTest"));
}

TEST(ParameterServer, OneTreePerKeyUntilRemoved)
{
    C_ParameterServer& server = C_ParameterServer::GetInstance();
    const auto first = server.Get("ParameterServerTest", 1);
    EXPECT_EQ(server.Get("ParameterServerTest", 1), first);
    const auto other = server.Get("ParameterServerTest", 2);
    EXPECT_NE(other, first);

    CastToInteger(first->Find("Cycle"))->SetValue(5);
    EXPECT_TRUE(server.Remove("ParameterServerTest", 1));
    EXPECT_FALSE(server.Remove("ParameterServerTest", 1));
    const auto fresh = server.Get("ParameterServerTest", 1);
    EXPECT_NE(fresh, first);
    EXPECT_EQ(CastToInteger(fresh->Find("Cycle"))->GetValue(), 0);
    EXPECT_EQ(CastToInteger(first->Find("Cycle"))->GetValue(), 5); // the holder keeps its tree
    server.Remove("ParameterServerTest", 1);
    server.Remove("ParameterServerTest", 2);
}

TEST(ParameterServer, UnknownNamesAndNullDefinitionsFail)
{
    TestSupport::LogCapture log;
    C_ParameterServer& server = C_ParameterServer::GetInstance();
    EXPECT_THROW(server.Get("NoSuchDefinition", 0), RTE::Exception);
    server.RegisterDefinition("ParameterServerTest.Null", [] { return boost::shared_ptr<C_Tree>(); });
    EXPECT_THROW(server.Get("ParameterServerTest.Null", 0), RTE::Exception);
    EXPECT_THROW(server.RegisterDefinition("ParameterServerTest.Empty", {}), RTE::VerificationFailed);
    EXPECT_TRUE(log.contains("Exception", "NoSuchDefinition"));
}

TEST(ParameterServer, DefinitionsMayUseTheServer)
{
    C_ParameterServer& server = C_ParameterServer::GetInstance();
    server.RegisterDefinition("ParameterServerTest.Nested", [&server] {
        return boost::make_shared<C_Tree>(*server.Get("ParameterServerTest", 77));
    });
    EXPECT_TRUE(server.Get("ParameterServerTest.Nested", 0)->Find("Cycle"));
    server.Remove("ParameterServerTest.Nested", 0);
    server.Remove("ParameterServerTest", 77);
}

TEST(ParameterServer, ConcurrentCallersOfOneKeyGetOneTree)
{
    C_ParameterServer& server = C_ParameterServer::GetInstance();
    constexpr int kThreads = 8;
    std::vector<boost::shared_ptr<C_Tree>> results(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round)
                server.Get("ParameterServerTest", 1000 + round);
            results[static_cast<size_t>(i)] = server.Get("ParameterServerTest", 1000);
        });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, results[0]);
    for (int round = 0; round < 50; ++round)
        server.Remove("ParameterServerTest", 1000 + round);
}
