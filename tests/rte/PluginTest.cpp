#include <RTE/Exception.h>
#include <RTE/PluginFactory.h>
#include <RTE/PluginRegistry.h>

#include <support/TestSupport.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

class TestContext : public RTE::I_CreationContext {
public:
    std::string folder = "context-folder";
};

class TestPlugin : public RTE::I_Plugin {
public:
    explicit TestPlugin(std::string name, std::string note = {}) : m_name(std::move(name)), note(std::move(note)) {}
    std::string GetPluginName() const override { return m_name; }
    std::string GetPluginType() const override { return "RteTestPlugin"; }
    std::string GetPluginDescription() const override { return "plug-in of the runtime tests"; }

private:
    std::string m_name;

public:
    std::string note;
};

RTE::I_Plugin* CreateAlpha(RTE::I_CreationContext* context)
{
    auto* test = dynamic_cast<TestContext*>(context);
    return new TestPlugin("Alpha", test ? test->folder : "");
}
RTE::I_Plugin* CreateAlphaV2(RTE::I_CreationContext*) { return new TestPlugin("Alpha", "v2"); }
RTE::I_Plugin* CreateBeta(RTE::I_CreationContext*) { return new TestPlugin("Beta"); }
RTE::I_Plugin* CreateThrowing(RTE::I_CreationContext*) { throw std::runtime_error("no camera attached"); }
RTE::I_Plugin* CreateThrowingOther(RTE::I_CreationContext*) { throw 1; }
RTE::I_Plugin* CreateNull(RTE::I_CreationContext*) { return nullptr; }

// Registered at load time, as plug-in libraries do.
const RTE::PluginRegistration StaticRegistration("RteTestStatic", "Static", "registered at load", &CreateBeta);

const char* const Key = "RteTestPlugin";

class PluginTest : public ::testing::Test {
protected:
    ~PluginTest() override
    {
        for (const auto& entry : RTE::C_PluginRegistry::GetInstance().GetPlugins(Key))
            RTE::C_PluginRegistry::GetInstance().UnregisterPlugin(Key, entry.name);
    }
    RTE::C_PluginRegistry& registry = RTE::C_PluginRegistry::GetInstance();
    RTE::C_PluginFactory& factory = RTE::C_PluginFactory::GetInstance();
};

} // namespace

TEST_F(PluginTest, StaticRegistrationIsThereAtStart)
{
    const auto plugin = factory.CreateUnique("RteTestStatic", "Static");
    ASSERT_TRUE(plugin);
    EXPECT_EQ(plugin->GetPluginName(), "Beta");
}

TEST_F(PluginTest, CreatesByKeyAndNameAndPassesTheContext)
{
    registry.RegisterPlugin(Key, "Alpha", "first", &CreateAlpha);
    registry.RegisterPlugin(Key, "Beta", "second", &CreateBeta);
    registry.RegisterPlugin("OtherKey", "Alpha", "elsewhere", &CreateBeta);

    TestContext context;
    std::unique_ptr<RTE::I_Plugin> alpha(factory.Create(Key, "Alpha", &context));
    ASSERT_TRUE(alpha);
    EXPECT_EQ(alpha->GetPluginName(), "Alpha");
    EXPECT_EQ(static_cast<TestPlugin&>(*alpha).note, "context-folder");
    EXPECT_EQ(static_cast<TestPlugin&>(*factory.CreateUnique(Key, "Alpha")).note, "");
    EXPECT_EQ(factory.CreateUnique(Key, "Beta")->GetPluginName(), "Beta");

    const auto entries = registry.GetPlugins(Key);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, "Alpha");
    EXPECT_EQ(entries[0].description, "first");
    EXPECT_EQ(entries[1].name, "Beta");
    EXPECT_TRUE(registry.UnregisterPlugin("OtherKey", "Alpha"));
    EXPECT_FALSE(registry.UnregisterPlugin("OtherKey", "Alpha"));
}

TEST_F(PluginTest, ReRegisteringReplacesInPlace)
{
    registry.RegisterPlugin(Key, "Alpha", "first", &CreateAlpha);
    registry.RegisterPlugin(Key, "Beta", "second", &CreateBeta);
    registry.RegisterPlugin(Key, "Alpha", "replaced", &CreateAlphaV2);
    const auto entries = registry.GetPlugins(Key);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].description, "replaced");
    EXPECT_EQ(static_cast<TestPlugin&>(*factory.CreateUnique(Key, "Alpha")).note, "v2");
}

TEST_F(PluginTest, CreationFailsSoftlyAndLogs)
{
    TestSupport::LogCapture log;
    registry.RegisterPlugin(Key, "Throwing", "", &CreateThrowing);
    registry.RegisterPlugin(Key, "ThrowingOther", "", &CreateThrowingOther);
    registry.RegisterPlugin(Key, "Null", "", &CreateNull);

    EXPECT_EQ(factory.Create(Key, "Missing"), nullptr);
    EXPECT_EQ(factory.Create("NoSuchKey", "Alpha"), nullptr);
    EXPECT_EQ(factory.Create(Key, "Throwing"), nullptr);
    EXPECT_EQ(factory.Create(Key, "ThrowingOther"), nullptr);
    EXPECT_FALSE(factory.CreateUnique(Key, "Null"));

    EXPECT_TRUE(log.contains("Plugin", "'Missing' of type 'RteTestPlugin'"));
    EXPECT_TRUE(log.contains("Plugin", "no camera attached"));
    EXPECT_TRUE(log.contains("Plugin", "unknown exception"));
    EXPECT_TRUE(log.contains("Plugin", "'Null'"));
}

TEST_F(PluginTest, BadRegistrationsAreRefused)
{
    TestSupport::LogCapture log;
    EXPECT_THROW(registry.RegisterPlugin(Key, "Nothing", "", nullptr), RTE::VerificationFailed);
    EXPECT_THROW(registry.RegisterPlugin("", "Alpha", "", &CreateAlpha), RTE::VerificationFailed);
    // The static helper never throws; the refusal is logged and the plug-in stays unknown.
    EXPECT_NO_THROW(RTE::PluginRegistration(Key, "Nothing", "", nullptr));
    EXPECT_TRUE(log.contains("Plugin", "'Nothing'"));
    EXPECT_TRUE(registry.GetPlugins(Key).empty());
}

TEST_F(PluginTest, ConcurrentRegistrationAndCreation)
{
    TestSupport::LogCapture log; // misses are logged
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([this, t] {
            for (int i = 0; i < 200; ++i) {
                const std::string name = "N" + std::to_string(t) + "_" + std::to_string(i % 10);
                registry.RegisterPlugin(Key, name, "", i % 2 ? &CreateAlpha : &CreateBeta);
                delete factory.Create(Key, name);
                registry.GetPlugins(Key);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(registry.GetPlugins(Key).size(), 40u);
}
