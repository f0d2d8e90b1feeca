#pragma once
// Reads an image stream written by C_ImageWriter (or MaskWriter, ScalarFieldWriter): the plug-in
// "Core.Set.Recording.FrameReader". Opening reads the stream's header and checks its last records;
// it does not scan the stream, so a stream of 100 000 images opens as fast as one of 100. Every
// length and offset read from a file is checked against the file before it is used, and nothing
// is allocated because a file claims a size. A record that fails its checksum raises
// RTE::Exception when it is loaded; the images before it stay readable. Streams written without
// pixel checksums load their raw planes unchecked and count every record that lies wholly in the
// file with a sound record header.

#include <StreamIO/I_ImageFrameReader.h>

#include <memory>

namespace RTE {
class I_CreationContext;
}

namespace SetApi {

class STREAMIO_API C_ImageReader : public I_ImageFrameReader {
public:
    // The plug-in key and this reader's name within it.
    static const char* const PluginKey;  // "Core.Set.Recording.FrameReader"
    static const char* const PluginName; // the name C_ImageWriter puts in the configuration

    C_ImageReader();
    ~C_ImageReader() override;

    static RTE::I_Plugin* CreateObject(RTE::I_CreationContext* context);
    // Registers the plug-in with RTE::C_PluginRegistry under key and name.
    static void pluginRegister();

    std::string GetPluginName() const override;
    std::string GetPluginType() const override;
    std::string GetPluginDescription() const override;

    void Open(const QString& destination) override;
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

    // Whether reads go around the page cache (direct I/O) where the file system allows, straight
    // into the caller's memory when it is 4 KiB aligned (as the buffer library's planes are); other
    // reads stay buffered. Off by default; takes effect at once, also on an open stream.
    void SetDirectIo(bool direct);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
