// The set factory: opening by identifier, creating, the persistent cache, registration,
// observers and concurrency.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace SetApi;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

C_SetFactory& Factory() { return C_SetFactory::Instance(); }

// A set class of the tests: remembers the path it was opened with.
class ProbeSet : public C_NullSet {
public:
    explicit ProbeSet(const std::string& name) : C_NullSet(name) {}
    bool IsOpen() const override { return true; }
};

std::string UniqueIdentifier(const std::string& stem)
{
    static std::atomic<int> counter{0};
    return "Test" + stem + std::to_string(counter++);
}

void WriteSetFile(const std::string& name, const std::string& lines)
{
    WriteFile(name + ".set", "// set file <" + name + ".set> created by a test\n\n#GROUP Sets\n" + lines);
}

class RecordingFactoryObserver : public I_SetFactoryObserver {
public:
    void OnCreate(const std::string& path) override { Add("create " + path); }
    void OnRemove(const std::string& path) override { Add("remove " + path); }
    void OnRename(const std::string& from, const std::string& to) override { Add("rename " + from + " " + to); }
    std::vector<std::string> Events() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
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

// Attaches for the length of a test only: the factory outlives every test.
struct ScopedObserver {
    RecordingFactoryObserver observer;
    ScopedObserver() { Factory().Attach(&observer); }
    ~ScopedObserver() { Factory().Detach(&observer); }
};

} // namespace

TEST(C_SetFactory, OpenOfTheEmptyPathIsANullSetAndLogsNothing)
{
    TestSupport::LogCapture log;
    const auto set = Factory().Open("");
    EXPECT_FALSE(set->IsOpen());
    EXPECT_TRUE(set->GetName().empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST(C_SetFactory, OpenOfAMissingSetCarriesThePath)
{
    TempDir dir;
    TestSupport::LogCapture log;
    const auto set = Factory().Open(dir / "absent.set");
    EXPECT_FALSE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "absent");
    EXPECT_NE(dynamic_cast<C_NullSet*>(set.get()), nullptr);
    EXPECT_TRUE(log.lines().empty());
}

TEST(C_SetFactory, OpenNormalisesTheName)
{
    TempDir dir;
    WriteSetFile(dir / "b", "SetType = 256;\n");
    // Backslashes, a set extension in any case and trailing blanks all lead to the same set.
    std::string windowsStyle = dir / "b.SeT  ";
    for (char& c : windowsStyle)
        if (c == '/')
            c = '\\';
    const auto set = Factory().Open(windowsStyle);
    ASSERT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "b");
    EXPECT_NE(dynamic_cast<C_Set*>(set.get()), nullptr);
}

TEST(C_SetFactory, TheIdentifierLineAloneChoosesTheClass)
{
    TempDir dir;
    const std::string identifier = UniqueIdentifier("Identified");
    Factory().Register(
        identifier, [](const std::string& path) -> I_Set* { return new ProbeSet(path); },
        [](const std::string& path, I_Set::E_SetType, bool) -> I_Set* { return new ProbeSet(path); });

    WriteSetFile(dir / "probe", "SetIdentifier = \"" + identifier + "\";\n");
    const auto probe = Factory().Open(dir / "probe");
    EXPECT_NE(dynamic_cast<ProbeSet*>(probe.get()), nullptr);
    EXPECT_EQ(probe->GetName(), dir / "probe");

    WriteSetFile(dir / "unknown", "SetIdentifier = \"NoSuchIdentifier\";\n");
    const auto unknown = Factory().Open(dir / "unknown");
    EXPECT_FALSE(unknown->IsOpen());
    EXPECT_EQ(unknown->GetName(), dir / "unknown");

    // A set file without identifier and callbacks is a plain set, whatever lies in its folder.
    WriteSetFile(dir / "plain", "SetComments = \"x\";\n");
    EXPECT_NE(dynamic_cast<C_Set*>(Factory().Open(dir / "plain").get()), nullptr);
}

TEST(C_SetFactory, CallbackValuesWithoutIdentifierNeedTheHostsSetCL)
{
    TempDir dir;
    WriteSetFile(dir / "callback", "SetLoadCallback = \"HostLoader\";\n");
    ASSERT_FALSE(Factory().IsRegistered("SetCL"));
    EXPECT_FALSE(Factory().Open(dir / "callback")->IsOpen());
}

TEST(C_SetFactory, ARegisteredViewCallbackBeatsTheIdentifier)
{
    TempDir dir;
    const QString callback = QString::fromStdString(UniqueIdentifier("View"));
    QString seenPath;
    Factory().RegisterViewCallbackSet(callback, [&seenPath](const QString& path) {
        seenPath = path;
        return std::make_shared<ProbeSet>(path.toStdString());
    });
    WriteSetFile(dir / "view", "SetIdentifier = \"Set\";\nSetViewCallback = \"" + callback.toStdString() + "\";\n");
    const auto set = Factory().Open(dir / "view.set");
    EXPECT_NE(dynamic_cast<ProbeSet*>(set.get()), nullptr);
    EXPECT_EQ(seenPath.toStdString(), dir / "view");
}

TEST(C_SetFactory, AnOpenFunctionThatThrowsIsLoggedAndGivesANullSet)
{
    TempDir dir;
    const std::string failing = UniqueIdentifier("Failing");
    const std::string odd = UniqueIdentifier("Odd");
    Factory().Register(
        failing, [](const std::string&) -> I_Set* { throw std::runtime_error("disk on fire"); },
        [](const std::string&, I_Set::E_SetType, bool) -> I_Set* { return nullptr; });
    Factory().Register(
        odd, [](const std::string&) -> I_Set* { throw 42; },
        [](const std::string&, I_Set::E_SetType, bool) -> I_Set* { return nullptr; });
    WriteSetFile(dir / "failing", "SetIdentifier = \"" + failing + "\";\n");
    WriteSetFile(dir / "odd", "SetIdentifier = \"" + odd + "\";\n");

    TestSupport::LogCapture log;
    const auto set = Factory().Open(dir / "failing.set ");
    EXPECT_FALSE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "failing");
    EXPECT_TRUE(log.contains("Set", "Could not open set '" + dir / "failing" + "' --> 'disk on fire'"));

    EXPECT_FALSE(Factory().Open(dir / "odd")->IsOpen());
    EXPECT_TRUE(log.contains("Set", "Could not open set '" + dir / "odd" + "' --> unknown error"));
}

TEST(C_SetFactory, RegistrationIsCheckedInOrder)
{
    auto open = [](const std::string& path) -> I_Set* { return new ProbeSet(path); };
    auto create = [](const std::string& path, I_Set::E_SetType, bool) -> I_Set* { return new ProbeSet(path); };
    auto messageOf = [](auto&& call) {
        try {
            call();
        } catch (const RTE::VerificationFailed& e) {
            return e.message().toStdString();
        }
        return std::string("(no exception)");
    };
    const std::string identifier = UniqueIdentifier("Registered");
    EXPECT_EQ(messageOf([&] { Factory().Register("", open, create); }), "Set identifier is empty");
    EXPECT_EQ(messageOf([&] { Factory().Register("Set", open, create); }), "Set is already registered");
    EXPECT_EQ(messageOf([&] { Factory().Register(identifier, nullptr, create); }), "Open method is NULL");
    EXPECT_EQ(messageOf([&] { Factory().Register(identifier, open, nullptr); }), "Create method is NULL");
    EXPECT_FALSE(Factory().IsRegistered(identifier));
    Factory().Register(identifier, open, create);
    EXPECT_EQ(messageOf([&] { Factory().Register(identifier, open, create); }), "Set is already registered");
}

TEST(C_SetFactory, TheLibraryRegistersThePlainSetAndItsTypedCreators)
{
    EXPECT_TRUE(Factory().IsRegistered("Set"));
    for (const QString& name : {TypeIdentifiers::Image, TypeIdentifiers::Plot, TypeIdentifiers::Vector,
                                TypeIdentifiers::Surface})
        EXPECT_TRUE(Factory().IsTypedCreatorRegistered(name)) << name.toStdString();
}

TEST(C_SetFactory, CreateThroughTheRegistryTellsObservers)
{
    TempDir dir;
    ScopedObserver scoped;
    const auto set = Factory().Create(dir / "made.set", "", I_Set::SET_TYPE_VECTOR, true);
    ASSERT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetName(), dir / "made");
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_VECTOR);
    EXPECT_EQ(scoped.observer.Events(), std::vector<std::string>{"create " + dir / "made"});

    // An unknown identifier gives a null set with the path as given, and tells nobody.
    const auto unknown = Factory().Create(dir / "other.set", "NoSuchIdentifier", I_Set::SET_TYPE_IMAGE, true);
    EXPECT_FALSE(unknown->IsOpen());
    EXPECT_EQ(unknown->GetName(), dir / "other.set");
    EXPECT_EQ(scoped.observer.Events().size(), 1u);
}

TEST(C_SetFactory, ACreateFunctionThatThrowsIsSwallowedWithoutALog)
{
    const std::string identifier = UniqueIdentifier("CreateFails");
    Factory().Register(
        identifier, [](const std::string& path) -> I_Set* { return new ProbeSet(path); },
        [](const std::string&, I_Set::E_SetType, bool) -> I_Set* { throw std::runtime_error("no room"); });
    ScopedObserver scoped;
    TestSupport::LogCapture log;
    const auto set = Factory().Create("/nowhere/x", identifier, I_Set::SET_TYPE_IMAGE, false);
    EXPECT_FALSE(set->IsOpen());
    EXPECT_EQ(set->GetName(), "/nowhere/x");
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(scoped.observer.Events().empty());
}

TEST(C_SetFactory, TypedCreatorsAreReplacedByALaterRegistration)
{
    TempDir dir;
    const QString name = QString::fromStdString(UniqueIdentifier("Typed"));
    Factory().Register(name, [](const QString&) -> std::shared_ptr<I_Set> { throw std::runtime_error("first"); });
    EXPECT_FALSE(Factory().Create(QString::fromStdString(dir / "t"), name)->IsOpen());
    Factory().Register(name, [](const QString& path) { return std::make_shared<ProbeSet>(path.toStdString()); });
    ScopedObserver scoped;
    const auto set = Factory().Create(QString::fromStdString(dir / "t"), name);
    EXPECT_NE(dynamic_cast<ProbeSet*>(set.get()), nullptr);
    EXPECT_EQ(scoped.observer.Events(), std::vector<std::string>{"create " + dir / "t"});
    EXPECT_FALSE(Factory().Create(QString::fromStdString(dir / "u"), QStringLiteral("NoSuchType"))->IsOpen());
}

TEST(C_SetFactory, TypedImageCreatorMakesAnImageSetWithItsFolder)
{
    TempDir dir;
    const auto set = Factory().Create(QString::fromStdString(dir / "images"), TypeIdentifiers::Image);
    ASSERT_TRUE(set->IsOpen());
    EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_IMAGE);
    EXPECT_TRUE(RTE::FileSystem::IsDirectory(dir / "images"));
    EXPECT_TRUE(Factory().Exists(dir / "images"));
    EXPECT_EQ(Factory().Open(dir / "images")->GetTypeIdentifier(), QStringLiteral("SET_TYPE_ID_IMAGE"));
}

TEST(C_SetFactory, ExistsNeedsTheSetFileOrAPinnedSet)
{
    TempDir dir;
    EXPECT_FALSE(Factory().Exists(""));
    RTE::FileSystem::CreateDirectory(dir / "folderOnly");
    EXPECT_FALSE(Factory().Exists(dir / "folderOnly"));
    WriteSetFile(dir / "real", "");
    EXPECT_TRUE(Factory().Exists(dir / "real.set"));
    EXPECT_TRUE(Factory().Exists(dir / "real"));

    const auto pinned = std::make_shared<ProbeSet>(dir / "pinned");
    Factory().AddPersistant(pinned);
    EXPECT_TRUE(Factory().Exists(dir / "pinned"));
    Factory().RemovePersistant(pinned);
    EXPECT_FALSE(Factory().Exists(dir / "pinned"));
}

TEST(C_SetFactory, PinnedSetsAreFoundByTheExactName)
{
    TempDir dir;
    WriteSetFile(dir / "Pinned", "");
    const auto pinned = Factory().Open(dir / "Pinned");
    ASSERT_TRUE(pinned->IsOpen());
    Factory().AddPersistant(pinned);
    EXPECT_EQ(Factory().Open(dir / "Pinned.set").get(), pinned.get());
    EXPECT_EQ(Factory().Open(dir / "Pinned").get(), pinned.get());

    // Unpinned sets are not kept: each Open makes a new object.
    WriteSetFile(dir / "Loose", "");
    EXPECT_NE(Factory().Open(dir / "Loose").get(), Factory().Open(dir / "Loose").get());

    // Another case is another name: the file is opened afresh (here it does not exist in that case).
    std::string otherCase = dir / "pinned";
    EXPECT_NE(Factory().Open(otherCase).get(), pinned.get());

    Factory().RemovePersistant(pinned);
    EXPECT_NE(Factory().Open(dir / "Pinned").get(), pinned.get());
    Factory().RemovePersistant(pinned); // not there any more: nothing happens
}

TEST(C_SetFactory, ObserversAreAttachedOnceAndDetachedCompletely)
{
    RecordingFactoryObserver first, second;
    Factory().Attach(&first);
    Factory().Attach(&second);
    Factory().Attach(&first);
    Factory().NotifyOnRemove("/a");
    Factory().NotifyOnCreate("/b");
    Factory().Detach(&first);
    Factory().NotifyOnRemove("/c");
    Factory().Detach(&second);
    EXPECT_EQ(first.Events(), (std::vector<std::string>{"remove /a", "create /b"}));
    EXPECT_EQ(second.Events(), (std::vector<std::string>{"remove /a", "create /b", "remove /c"}));
}

TEST(C_SetFactory, DataChangedReachesConnectedSlots)
{
    std::vector<QString> paths;
    boost::signals2::scoped_connection connection =
        Factory().ConnectToDataChanged([&paths](const QString& path) { paths.push_back(path); });
    Factory().NotifyOnDataChanged("/data/x");
    connection.disconnect();
    Factory().NotifyOnDataChanged("/data/y");
    EXPECT_EQ(paths, std::vector<QString>{QStringLiteral("/data/x")});
}

TEST(C_SetFactory, OpenFunctionsMayOpenOtherSets)
{
    // A set class whose open function opens its sub-set through the factory, as loops and virtual
    // sets do: the cache mutex is recursive.
    TempDir dir;
    const std::string identifier = UniqueIdentifier("Nested");
    Factory().Register(
        identifier,
        [](const std::string& path) -> I_Set* {
            const auto inner = C_SetFactory::Instance().Open(path + "/inner");
            return inner->IsOpen() ? new ProbeSet(path) : nullptr;
        },
        [](const std::string& path, I_Set::E_SetType, bool) -> I_Set* { return new ProbeSet(path); });
    RTE::FileSystem::CreateDirectory(dir / "outer");
    WriteSetFile(dir / "outer", "SetIdentifier = \"" + identifier + "\";\n");
    WriteSetFile(dir / "outer/inner", "");
    EXPECT_NE(dynamic_cast<ProbeSet*>(Factory().Open(dir / "outer").get()), nullptr);
}

TEST(C_SetFactory, OpenAndCreateFromManyThreadsAtOnce)
{
    TempDir dir;
    const int setCount = 8;
    for (int i = 0; i < setCount; ++i) {
        auto set = Factory().Create(dir / ("s" + std::to_string(i)), "Set", I_Set::SET_TYPE_IMAGE, true);
        ASSERT_TRUE(set->IsOpen());
    }
    ScopedObserver scoped;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 50; ++round) {
                const std::string name = dir / ("s" + std::to_string((t + round) % setCount));
                const auto set = Factory().Open(name);
                if (!set->IsOpen() || set->GetName() != name || set->GetSetType() != I_Set::SET_TYPE_IMAGE)
                    ++failures;
                if (round % 10 == 0) {
                    const auto made = Factory().Create(dir / ("t" + std::to_string(t) + "_" + std::to_string(round)),
                                                       "Set", I_Set::SET_TYPE_VECTOR, true);
                    if (!made->IsOpen())
                        ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(scoped.observer.Events().size(), 20u);
}

TEST(C_SetFactory, ObserversRunOneAtATimeUnderTheObserverMutex)
{
    // Notifications from several threads never overlap: an observer needs no lock of its own.
    class OverlapObserver : public I_SetFactoryObserver {
    public:
        void OnCreate(const std::string&) override { Enter(); }
        void OnRemove(const std::string&) override { Enter(); }
        void OnRename(const std::string&, const std::string&) override { Enter(); }
        std::atomic<int> inside{0};
        std::atomic<int> overlaps{0};
        std::atomic<int> calls{0};

    private:
        void Enter()
        {
            if (inside.fetch_add(1) != 0)
                ++overlaps;
            std::this_thread::yield();
            ++calls;
            inside.fetch_sub(1);
        }
    } observer;
    Factory().Attach(&observer);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i) {
                if (t % 2)
                    Factory().NotifyOnCreate("/c");
                else
                    Factory().NotifyOnRemove("/r");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    Factory().Detach(&observer);
    EXPECT_EQ(observer.calls.load(), 800);
    EXPECT_EQ(observer.overlaps.load(), 0);
}
