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
    auto created = factory.Create(folder + "/Consumer", "Set", SetApi::I_Set::SET_TYPE_IMAGE, true);
    if (!created->IsOpen())
        return 1;
    created->SetParameter("SetComments", std::string("from another project"));
    created.reset();
    auto opened = factory.Open(folder + "/Consumer.set");
    std::string comment;
    if (!opened->IsOpen() || !opened->GetParameter("SetComments", comment) || comment != "from another project")
        return 1;
    std::printf("opened %s\n", opened->GetName().c_str());
    return 0;
}
