// A program of another project: everything it needs comes from the installed package.
#include <SetApi/SetApi.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const std::string folder = argv[1];
    RTE::FileSystem::CreateDirectory(folder);
    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    // The plain set registered itself when the library loaded.
    auto created = factory.Create(folder + "/Consumer", "Set", SetApi::I_Set::SET_TYPE_IMAGE, true);
    auto* base = dynamic_cast<SetApi::C_SetBase*>(created.get());
    if (!created->IsOpen() || !base)
        return 1;
    base->SetParameter("SetComments", std::string("from another project"));
    created.reset();

    auto opened = factory.Open(folder + "/Consumer.set");
    auto* reopened = dynamic_cast<SetApi::C_SetBase*>(opened.get());
    std::string comment;
    if (!opened->IsOpen() || !reopened || !reopened->GetParameter("SetComments", comment) ||
        comment != "from another project")
        return 1;
    std::printf("opened %s (%s)\n", opened->GetName().c_str(), opened->GetTypeIdentifier().toStdString().c_str());
    return 0;
}
