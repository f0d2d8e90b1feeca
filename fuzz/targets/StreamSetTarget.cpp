// A whole stream set: a recording folder of fixed layout whose files come from the input, opened
// through the set factory, every image loaded. The parts of the input are, in order:
// "ReaderConfiguration.xml", the camera's "Camera1_.ims" and "Camera1_.index.ims", the attribute
// stream "Attributes2_.attr" and "Attributes2_.index.attr", and the scales "Scales3_.scales". The
// set file is fixed: it names the folder a stream set.

#include "FrameStreams.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <BufferApi/I_Buffer.h>
#include <StreamIO/AttributeWriter.h>
#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>
#include <StreamIO/ScaleWriter.h>

#include <RTE/Scale.h>

#include <algorithm>

namespace SetApiFuzz {

namespace {

const char* const kFiles[] = {"ReaderConfiguration.xml", "Camera1_.ims", "Camera1_.index.ims",
                              "Attributes2_.attr", "Attributes2_.index.attr", "Scales3_.scales"};
constexpr std::size_t kFileCount = sizeof(kFiles) / sizeof(kFiles[0]);
constexpr unsigned kMaxImages = 8;

void WriteSetFile(const std::string& name)
{
    SetApi::C_DataSetParameter parameters;
    parameters.SetValue("SetType", 0x1000);
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    if (!SetApi::C_SetUtilities::WriteSettings(name + ".set", parameters, std::string()))
        Fail("the set file cannot be written");
}

} // namespace

void RunStreamSet(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const std::string folder = scratch.Folder("Recording");
    const auto parts = Split(data, size, kFileCount);
    for (std::size_t i = 0; i < kFileCount; ++i)
        if (parts[i].size != 0)
            scratch.Write(std::string("Recording/") + kFiles[i], parts[i].data, parts[i].size);
    WriteSetFile(folder);

    // The factory answers every failure to open with a null set; LoadBuffer raises as documented.
    std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(folder);
    if (!set || !set->IsOpen())
        return;
    const unsigned images = std::min(set->GetSize(), kMaxImages);
    for (unsigned image = 0; image <= images; ++image)
        Guarded([&] { std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(image); });
}

std::vector<Bytes> SeedsStreamSet()
{
    using SetApi::C_ContentPurpose;
    using SetApi::C_ImageWriter;
    using SetApi::Private::C_ReaderInfo;
    std::vector<Bytes> seeds;
    for (const char* compression : {"", "IMX"}) {
        Scratch scratch;
        const std::string folder = scratch.Folder("Recording");
        const QString base = QString::fromStdString(folder) + QLatin1Char('/');
        SetApi::Private::C_ReaderConfiguration configuration;

        C_ImageWriter camera(6, 4, 1, 1, C_ImageWriter::Word, QString::fromLatin1(compression));
        configuration.AddReader(C_ReaderInfo(camera.GetCorrespondingReaderName(), camera.GetCorrespondingReaderType(),
                                             QStringLiteral("Camera1_"), camera.GetFormatDescription(),
                                             C_ContentPurpose::CreateFrameLink(0)));
        camera.Open(base + QStringLiteral("Camera1_"));
        AppendRampImages(camera, 6, 4, 1, 1, C_ImageWriter::Word, 2);
        camera.Close();

        SetApi::AttributeWriter attributes;
        configuration.AddReader(C_ReaderInfo(attributes.GetCorrespondingReaderName(),
                                             attributes.GetCorrespondingReaderType(), QStringLiteral("Attributes2_"),
                                             attributes.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(0)));
        attributes.Open(base + QStringLiteral("Attributes2_"));
        for (unsigned image = 0; image < 2; ++image) {
            attributes.Add(QStringLiteral("Exposure"), QStringLiteral("image %1").arg(image));
            attributes.NextImage();
        }
        attributes.Close();

        SetApi::C_ScaleWriter scales(base + QStringLiteral("Scales3_"));
        configuration.AddReader(C_ReaderInfo(scales.GetCorrespondingReaderName(), scales.GetCorrespondingReaderType(),
                                             QStringLiteral("Scales3_"), scales.GetFormatDescription(),
                                             C_ContentPurpose::CreateFrameLink(0)));
        scales.WriteScalesForAllImages(RTE::S_Scale(0.1, 0.0, QStringLiteral("mm"), QStringLiteral("X")),
                                       RTE::S_Scale(0.1, 0.0, QStringLiteral("mm"), QStringLiteral("Y")),
                                       RTE::S_Scale(2.0, 1.0, QStringLiteral("counts"), QStringLiteral("I")));
        scales.Close();
        SetApi::Private::SaveReaderConfiguration(configuration, SetApi::GetStreamSetConfigurationName(
                                                                    QString::fromStdString(folder)));
        std::vector<Bytes> files;
        for (const char* file : kFiles)
            files.push_back(ReadFile(folder + "/" + file));
        seeds.push_back(Join(files));
    }
    return seeds;
}

} // namespace SetApiFuzz
