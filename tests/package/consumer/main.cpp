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

    // A typed image goes in as a buffer file and comes back through the typed view.
    DataObjects::ImageSetVariant images(*opened, true);
    images.Append(DataObjects::Image<unsigned short>(8, 4, 1234));
    const auto back = DataObjects::CreateImageSet(*opened, Algorithms::IndexRange{0, 0, 1});
    const auto info = opened->GetBufferStructureInformation(0);
    if (back->GetSize() != 1 || info.width != 8 || info.dataType != BufferApi::DATATYPE_WORD)
        return 1;
    std::printf("opened %s (%s), %u buffer\n", opened->GetName().c_str(),
                opened->GetTypeIdentifier().toStdString().c_str(), opened->GetSize());
    return 0;
}
