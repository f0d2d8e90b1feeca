// The reader plug-ins that the set library registers when it loads; linking this program to the
// library is all it takes.
#include <SetApi/stream/MaskReader.h>
#include <SetApi/stream/ScalarFieldReader.h>

#include <RTE/PluginFactory.h>
#include <RTE/PluginRegistry.h>
#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::unique_ptr<RTE::I_Plugin> Create(const std::string& key, const std::string& name)
{
    return RTE::C_PluginFactory::GetInstance().CreateUnique(key, name);
}

std::string DescriptionOf(const std::string& key, const std::string& name)
{
    for (const auto& entry : RTE::C_PluginRegistry::GetInstance().GetPlugins(key))
        if (entry.name == name)
            return entry.description;
    return "(not registered)";
}

} // namespace

TEST(ReaderPluginRegistrationTest, MaskAndScalarFieldReadersAreCreatedByKeyAndName)
{
    const auto mask = Create("Core.Set.Recording.MaskFrameReader", "Masks");
    ASSERT_NE(nullptr, mask);
    EXPECT_NE(nullptr, dynamic_cast<SetApi::MaskReader*>(mask.get()));
    EXPECT_NE(nullptr, dynamic_cast<SetApi::I_ImageFrameReader*>(mask.get()));
    EXPECT_EQ("Core.Set.Recording.MaskFrameReader", mask->GetPluginName());
    EXPECT_EQ("Masks", mask->GetPluginType());
    EXPECT_EQ("Reader for 8-bit (bool) mask data.", DescriptionOf("Core.Set.Recording.MaskFrameReader", "Masks"));

    const auto field = Create("Core.Set.Recording.ScalarFieldFrameReader", "ScalarField");
    ASSERT_NE(nullptr, field);
    EXPECT_NE(nullptr, dynamic_cast<SetApi::I_ScalarFieldReader*>(field.get()));
    EXPECT_EQ("Core.Set.Recording.ScalarFieldFrameReader", field->GetPluginName());
    EXPECT_EQ("ScalarField", field->GetPluginType());
    EXPECT_EQ("Reader for scalar field data of type word, float or double.",
              DescriptionOf("Core.Set.Recording.ScalarFieldFrameReader", "ScalarField"));

    // Names belong to their key.
    EXPECT_EQ(nullptr, Create("Core.Set.Recording.MaskFrameReader", "ScalarField"));
    EXPECT_EQ(nullptr, Create("Core.Set.Recording.FrameReader", "Masks"));
}

TEST(ReaderPluginRegistrationTest, OtherStreamReadersAreRegisteredToo)
{
    const auto image = Create(SetApi::C_ImageReader::PluginKey, SetApi::C_ImageReader::PluginName);
    ASSERT_NE(nullptr, image);
    EXPECT_NE(nullptr, dynamic_cast<SetApi::I_ImageFrameReader*>(image.get()));
    EXPECT_EQ(std::string("Core.Set.Recording.FrameReader"), image->GetPluginName());

    EXPECT_NE(nullptr, dynamic_cast<SetApi::I_AttributeReader*>(
                           Create("Core.Set.Recording.AttributeReader", "AttributeReaderV1").get()));
    EXPECT_NE(nullptr,
              dynamic_cast<SetApi::I_ScaleReader*>(Create("Core.Set.Recording.ScaleReader", "ScaleReaderV1").get()));
    EXPECT_NE(nullptr,
              dynamic_cast<SetApi::I_TraceReader*>(Create("Core.Set.Recording.TraceReader", "TraceReaderV1").get()));
}

TEST(ReaderPluginRegistrationTest, RegisteringAgainChangesNothing)
{
    SetApi::MaskReader::pluginAutoRegister();
    SetApi::MaskReader::pluginRegister();
    SetApi::C_ScalarFieldReader::pluginAutoRegister();
    EXPECT_EQ(1u, RTE::C_PluginRegistry::GetInstance().GetPlugins("Core.Set.Recording.MaskFrameReader").size());
    EXPECT_EQ(1u, RTE::C_PluginRegistry::GetInstance().GetPlugins("Core.Set.Recording.ScalarFieldFrameReader").size());
    EXPECT_NE(nullptr, Create("Core.Set.Recording.MaskFrameReader", "Masks"));
}
