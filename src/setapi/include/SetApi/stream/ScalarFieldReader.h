#pragma once
// Reads a scalar field stream written by ScalarFieldWriter: the plug-in "ScalarField" of the key
// "Core.Set.Recording.ScalarFieldFrameReader". The field's name and intensity scale come from the
// head file "<destination>-0.sfn"; every frame operation is that of the image stream reader it
// holds.

#include <SetApi/Export.h>

#include <RTE/Scale.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/ImageReader.h>

#include <QString>

#include <string>

namespace SetApi {

class SETAPI_API C_ScalarFieldReader : public I_ScalarFieldReader {
public:
    C_ScalarFieldReader();
    ~C_ScalarFieldReader() override;

    // "ScalarField", the name within the key.
    static std::string PluginName();
    // "Core.Set.Recording.ScalarFieldFrameReader".
    static std::string PluginKey();
    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers key, name, description and CreateObject with RTE::C_PluginRegistry; registering
    // again replaces the entry in place.
    static void pluginRegister();
    // The same as pluginRegister; harmless when the library has registered the plug-in already.
    static void pluginAutoRegister();

    // GetPluginName gives the key and GetPluginType the name, as every reader plug-in does.
    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;

    // Reads the head file, then opens the image stream. Raises RTE::VerificationFailed when the
    // head file cannot be opened ("Open file error for read-only mode for <path>"), has a Name
    // element without its attribute ("Attribute 'Name' is missing.") or yields no name ("Wrong
    // type of XML file"), and RTE::Exception when the image stream cannot be read. XML errors
    // after the name has been read are not failures. On failure the reader keeps its former name
    // and scale.
    void Open(const QString& destination) override;

    // Empty, and the identity scale with empty texts, until opened.
    QString GetNameOfScalarField() const override;
    RTE::S_Scale GetIntensityScale() const override;

    std::uint32_t GetFrameWidth() const override;
    std::uint32_t GetFrameHeight() const override;
    std::uint32_t GetFramesPerImageCount() const override;
    std::uint32_t GetImageCount() const override;
    void LoadFrame(std::uint32_t image, std::uint32_t frame, std::uint16_t* target) override;
    bool IsDataConsistent() const override;
    std::uint32_t GetFrameDepth() const override;
    void LoadFrame(std::uint32_t image, std::uint32_t frame, bool* target) override;
    void LoadFrame(std::uint32_t image, std::uint32_t frame, double* target) override;
    void LoadFrame(std::uint32_t image, std::uint32_t frame, float* target) override;
    void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, bool* target) override;
    void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, double* target) override;
    void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, float* target) override;
    void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, std::uint16_t* target) override;
    bool IsWordData() const override;
    bool IsFloatData() const override;
    bool IsDoubleData() const override;
    bool IsBoolData() const override;

private:
    C_ImageReader m_reader;
    QString m_name;
    RTE::S_Scale m_intensityScale{1.0, 0.0, QString(), QString()};
};

} // namespace SetApi
