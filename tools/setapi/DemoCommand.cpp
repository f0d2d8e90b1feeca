#include "BufferComparison.h"
#include "Commands.h"
#include "DemoBuffers.h"
#include "SetPrinter.h"

#include <BufferApi/I_Buffer.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <Storage/SettingsNode.h>

#include <iostream>
#include <memory>
#include <vector>

namespace SetApiTool {

namespace {

// The synthetic images: modest in size, so that the demo stays quick.
constexpr unsigned ImageCount = 3;
constexpr unsigned ImageWidth = 640;
constexpr unsigned ImageHeight = 480;

using SetApi::C_SetFactory;
using SetApi::I_Set;

std::shared_ptr<I_Set> Require(std::shared_ptr<I_Set> set, const std::string& what)
{
    if (!set->IsOpen())
        RTE_THROW_MSG(RTE::Exception, "could not create " << what << " '" << set->GetName() << "'");
    return set;
}

SetApi::C_Set& AsPlainSet(const std::shared_ptr<I_Set>& set)
{
    auto* plain = dynamic_cast<SetApi::C_Set*>(set.get());
    if (!plain)
        RTE_THROW_MSG(RTE::Exception, "'" << set->GetName() << "' is not a plain set");
    return *plain;
}

Storage::SettingsNode MakeAcquisitionSettings()
{
    Storage::SettingsNode settings(QStringLiteral("Acquisition"));
    settings.SetClass(QStringLiteral("SyntheticCamera"));
    settings.SetVersion(1);
    settings.SetValue(QStringLiteral("Operator"), QStringLiteral("setapi demo"));
    settings.SetDouble(QStringLiteral("FrameRate"), 5000.0);
    Storage::Settings& camera = settings.AddChild(QStringLiteral("Camera"));
    camera.SetClass(QStringLiteral("Camera"));
    camera.SetInt(QStringLiteral("Width"), 2560);
    camera.SetInt(QStringLiteral("Height"), 2160);
    camera.SetDouble(QStringLiteral("ExposureMicroseconds"), 12.5);
    return settings;
}

void PrintSettings(std::ostream& out, const Storage::Settings& settings, const std::string& indent)
{
    out << indent << settings.GetName().toStdString() << " (class " << settings.GetClass().toStdString()
        << ", version " << settings.GetVersion() << ")\n";
    for (const QString& name : settings.GetValueNames())
        out << indent << "  " << name.toStdString() << " = " << settings.GetValue(name).toStdString() << '\n';
    for (int i = 0; i < settings.GetChildCount(); ++i)
        PrintSettings(out, settings.GetChild(i), indent + "  ");
}

// Creates the project and drops every handle, so that what is printed afterwards comes from disk.
// The buffers stored into Run01 are returned for the check after reopening.
std::vector<std::unique_ptr<BufferApi::I_Buffer>> CreateProject(const std::string& root)
{
    C_SetFactory& factory = C_SetFactory::Instance();
    const std::string campaign = root + "/Campaign";
    const std::string run1 = campaign + "/Run01";
    const std::string vectors = run1 + "/Vectors";
    const std::string run2 = campaign + "/Run02";

    auto folder = Require(factory.Create(campaign, "Set", I_Set::SET_TYPE_FOLDER, true), "folder set");
    AsPlainSet(folder).SetComment("A measurement campaign made by 'setapi demo'");

    auto recording = Require(factory.Create(QString::fromStdString(run1), SetApi::TypeIdentifiers::Image),
                             "image set");
    SetApi::C_Set& plain = AsPlainSet(recording);
    plain.SetComment("Synthetic camera images");
    plain.SetGroups("demo;synthetic");
    plain.AddParameter("SetCamera", "Synthetic 2560x2160, 16 bit");
    recording->WriteSettings(I_Set::SETTINGS_ACQUISITION, MakeAcquisitionSettings(), QString());
    std::vector<std::unique_ptr<BufferApi::I_Buffer>> images;
    for (unsigned i = 0; i < ImageCount; ++i) {
        images.push_back(MakeDemoBuffer(i, ImageWidth, ImageHeight));
        recording->StoreBuffer(images.back().get(), i);
    }

    auto vectorSet = Require(factory.Create(QString::fromStdString(vectors), SetApi::TypeIdentifiers::Vector),
                             "vector set");
    vectorSet->SetSourceName(run1);
    vectorSet->SetSourceMapping(0, 2);

    auto second = Require(factory.Create(QString::fromStdString(run2), SetApi::TypeIdentifiers::Image), "image set");
    AsPlainSet(second).SetComment("A second run, still empty");
    return images;
}

// Loads every stored buffer through a set opened afresh by the factory and compares it bit for bit
// with what was stored. Any difference ends the demo with the first one found.
void VerifyImages(const std::string& setPath, const std::vector<std::unique_ptr<BufferApi::I_Buffer>>& images)
{
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(setPath);
    if (!set->IsOpen())
        RTE_THROW_MSG(RTE::Exception, "could not reopen '" << setPath << "' to check its images");
    if (set->GetSize() != images.size())
        RTE_THROW_MSG(RTE::Exception, "'" << setPath << "' holds " << set->GetSize() << " buffers after reopening, "
                                          << images.size() << " were stored");
    for (unsigned i = 0; i < images.size(); ++i) {
        const std::unique_ptr<BufferApi::I_Buffer> loaded = set->LoadBuffer(i);
        if (!loaded)
            RTE_THROW_MSG(RTE::Exception, "buffer " << i << " of '" << setPath << "' could not be read back");
        const std::string difference = FirstDifference(*images[i], *loaded);
        if (!difference.empty())
            RTE_THROW_MSG(RTE::Exception, "buffer " << i << " of '" << setPath
                                                    << "' reads back other than stored: " << difference);
    }
}

} // namespace

int RunDemo(const std::string& folder)
{
    RTE::FileSystem::CreateDirectory(folder);
    const std::vector<std::unique_ptr<BufferApi::I_Buffer>> images = CreateProject(folder);
    std::cout << "Created a project of sets in '" << folder << "'. Stored " << images.size()
              << " synthetic images of two frames each into Campaign/Run01:\n"
              << "  frame 0 \"Camera 1\":    " << ImageWidth << " x " << ImageHeight
              << " word, particle images, mask, typed scalar \"Correlation\" (float), scales, attributes\n"
              << "  frame 1 \"Temperature\": " << ImageWidth << " x " << ImageHeight
              << " float, NaN outside the mask, mask, typed scalar \"Correlation\" (float), scales, attributes\n";
    VerifyImages(folder + "/Campaign/Run01", images);
    std::cout << "Read back through the factory: verified " << images.size() << " buffers bit-exact.\n"
              << "\nReopened through the factory:\n";

    C_SetFactory& factory = C_SetFactory::Instance();
    const char* const names[] = {"Campaign", "Campaign/Run01", "Campaign/Run01/Vectors", "Campaign/Run02"};
    for (const char* name : names) {
        const std::shared_ptr<I_Set> set = factory.Open(folder + "/" + name + ".set");
        if (!set->IsOpen())
            RTE_THROW_MSG(RTE::Exception, "could not reopen '" << set->GetName() << "'");
        std::cout << '\n';
        PrintSet(std::cout, *set, "  ");
        if (set->HasSettings(I_Set::SETTINGS_ACQUISITION, QString())) {
            std::cout << "  acquisition settings:\n";
            PrintSettings(std::cout, *set->ReadSettings(I_Set::SETTINGS_ACQUISITION, QString()), "    ");
        }
    }
    std::cout << "\nType names: " << SetApi::GetTypeNameOfSet(QString::fromStdString(folder + "/Campaign")).toStdString()
              << ", " << SetApi::GetTypeNameOfSet(QString::fromStdString(folder + "/Campaign/Run01/Vectors")).toStdString()
              << '\n';
    return 0;
}

} // namespace SetApiTool
