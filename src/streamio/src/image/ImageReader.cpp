#include <StreamIO/ImageReader.h>

#include "image/ElementConversion.h"
#include "image/ImageStreamFile.h"
#include "image/ImageStreamNames.h"

#include <model/AlignedMemory.h>

#include <RTE/Exception.h>
#include <RTE/PluginRegistry.h>

namespace SetApi {

namespace Format = Private::ImageStream;
using BufferApi::Private::AlignedBlock;
using BufferApi::Private::AllocateAligned;
using Format::ElementType;
using Format::PlaneCodec;

const char* const C_ImageReader::PluginKey = Format::kReaderKey;
const char* const C_ImageReader::PluginName = Format::kReaderName;

struct C_ImageReader::State {
    bool direct = false;
    std::unique_ptr<Private::ImageStreamFile> file;

    // Scratch, set aside on first need and only in sizes the checked stream header gives: a
    // plane of the stream's type (loads that convert) and a packed plane (compressed streams).
    AlignedBlock plane;
    AlignedBlock packed;
    std::uint64_t packedCapacity = 0;

    Private::ImageStreamFile& File()
    {
        RTE_VERIFY(file != nullptr, "The image stream reader is not open");
        return *file;
    }

    std::uint8_t* PlaneScratch()
    {
        if (!plane)
            plane = AllocateAligned(std::size_t(file->GetLayout().planeBytes), false);
        return static_cast<std::uint8_t*>(plane.get());
    }

    // Room for `bytes` of packed plane; the record header that claims them was checked against
    // the file's size and the stream's largest packed plane.
    std::uint8_t* PackedScratch(std::uint64_t bytes)
    {
        if (packedCapacity < bytes) {
            packed.reset();
            packed = AllocateAligned(std::size_t(Format::RoundUpToBlock(bytes)), false);
            packedCapacity = Format::RoundUpToBlock(bytes);
        }
        return static_cast<std::uint8_t*>(packed.get());
    }

    template <class Target>
    void LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, Target* target);

    // Every plane of the frame, one behind the other.
    template <class Target>
    void LoadFrame(std::uint32_t image, std::uint32_t frame, Target* target)
    {
        const Format::StreamHeader& header = File().Header();
        RTE_VERIFY(target != nullptr, "No target to load an image frame into");
        const std::size_t planeElements = std::size_t(header.width) * header.height;
        for (std::uint32_t p = 0; p < header.depth; ++p)
            LoadPlane(image, p, frame, target + planeElements * p);
    }
};

template <class Target>
void C_ImageReader::State::LoadPlane(std::uint32_t image, std::uint32_t planeInFrame, std::uint32_t frame,
                                     Target* target)
{
    Private::ImageStreamFile& stream = File();
    const Format::StreamHeader& header = stream.Header();
    const Format::Layout& layout = stream.GetLayout();
    RTE_VERIFY(target != nullptr, "No target to load an image plane into");
    if (image >= stream.ImageCount())
        RTE_THROW_MSG(RTE::VerificationFailed, "Image index " << image << " out of range: the stream '"
                                                              << stream.DataPath() << "' holds "
                                                              << stream.ImageCount() << " images");
    if (planeInFrame >= header.depth || frame >= header.framesPerImage)
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane " << planeInFrame << " of frame " << frame
                                                        << " out of range: the stream has depth " << header.depth
                                                        << " and " << header.framesPerImage << " frames per image");

    stream.SelectRecord(image);
    const std::uint32_t plane = frame * header.depth + planeInFrame;
    const bool native = Format::IsNativeTarget<Target>(header.elementType);
    const std::size_t elements = std::size_t(header.width) * header.height;
    std::uint8_t* unpacked = native ? reinterpret_cast<std::uint8_t*>(target) : nullptr;

    if (header.codec == PlaneCodec::Raw) {
        // A plane of the stream's own type goes straight from the file into the target.
        if (!unpacked)
            unpacked = PlaneScratch();
        stream.ReadPlane(plane, unpacked);
    } else {
        const std::uint64_t stored = stream.StoredBytes(plane);
        std::uint8_t* packedPlane = PackedScratch(stored);
        stream.ReadPlane(plane, packedPlane);
        if (!unpacked)
            unpacked = PlaneScratch();
        try {
            BufferApi::Private::CheckPackedPlane(header.codec, packedPlane, std::size_t(stored),
                                                 std::size_t(layout.planeBytes), layout.elementSize);
            BufferApi::Private::UnpackPlane(header.codec, packedPlane, std::size_t(stored), unpacked,
                                            std::size_t(layout.planeBytes), layout.elementSize);
        } catch (const RTE::Exception& e) {
            stream.FailPlane(plane, e.message());
        }
    }
    if (!native)
        Format::ConvertElements(header.elementType, unpacked, target, elements);
}

C_ImageReader::C_ImageReader() : m_state(std::make_unique<State>()) {}

C_ImageReader::~C_ImageReader() = default;

RTE::I_Plugin* C_ImageReader::CreateObject(RTE::I_CreationContext*) { return new C_ImageReader(); }

void C_ImageReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey, PluginName, Format::kFormatDescription,
                                                        &C_ImageReader::CreateObject);
}

// Deliberately crosswise, as every reader plug-in of the family: the name answers with the key
// and the type with the name.
std::string C_ImageReader::GetPluginName() const { return PluginKey; }
std::string C_ImageReader::GetPluginType() const { return PluginName; }
std::string C_ImageReader::GetPluginDescription() const { return Format::kFormatDescription; }

void C_ImageReader::Open(const QString& destination)
{
    m_state->file.reset();
    m_state->plane.reset();
    m_state->packed.reset();
    m_state->packedCapacity = 0;
    RTE_VERIFY(!destination.isEmpty(), "Empty destination of an image stream");
    m_state->file = std::make_unique<Private::ImageStreamFile>(Format::DataPath(destination),
                                                               Format::IndexPath(destination), m_state->direct);
}

void C_ImageReader::SetDirectIo(bool direct)
{
    m_state->direct = direct;
    if (m_state->file)
        m_state->file->SetDirect(direct);
}

std::uint32_t C_ImageReader::GetFrameWidth() const { return m_state->file ? m_state->file->Header().width : 0; }
std::uint32_t C_ImageReader::GetFrameHeight() const { return m_state->file ? m_state->file->Header().height : 0; }
std::uint32_t C_ImageReader::GetFrameDepth() const { return m_state->file ? m_state->file->Header().depth : 0; }

std::uint32_t C_ImageReader::GetFramesPerImageCount() const
{
    return m_state->file ? m_state->file->Header().framesPerImage : 0;
}

std::uint32_t C_ImageReader::GetImageCount() const { return m_state->file ? m_state->file->ImageCount() : 0; }

bool C_ImageReader::IsDataConsistent() const { return m_state->file && m_state->file->IsConsistent(); }

namespace {
bool HasType(const std::unique_ptr<Private::ImageStreamFile>& file, ElementType type)
{
    return file && file->Header().elementType == type;
}
} // namespace

bool C_ImageReader::IsWordData() const { return HasType(m_state->file, ElementType::Word); }
bool C_ImageReader::IsFloatData() const { return HasType(m_state->file, ElementType::Float); }
bool C_ImageReader::IsDoubleData() const { return HasType(m_state->file, ElementType::Double); }

bool C_ImageReader::IsBoolData() const
{
    return HasType(m_state->file, ElementType::Byte) || HasType(m_state->file, ElementType::Mask);
}

void C_ImageReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, bool* target)
{
    m_state->LoadPlane(image, plane, frame, target);
}

void C_ImageReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, double* target)
{
    m_state->LoadPlane(image, plane, frame, target);
}

void C_ImageReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, float* target)
{
    m_state->LoadPlane(image, plane, frame, target);
}

void C_ImageReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, std::uint16_t* target)
{
    m_state->LoadPlane(image, plane, frame, target);
}

void C_ImageReader::LoadFrame(std::uint32_t image, std::uint32_t frame, std::uint16_t* target)
{
    m_state->LoadFrame(image, frame, target);
}

void C_ImageReader::LoadFrame(std::uint32_t image, std::uint32_t frame, bool* target)
{
    m_state->LoadFrame(image, frame, target);
}

void C_ImageReader::LoadFrame(std::uint32_t image, std::uint32_t frame, double* target)
{
    m_state->LoadFrame(image, frame, target);
}

void C_ImageReader::LoadFrame(std::uint32_t image, std::uint32_t frame, float* target)
{
    m_state->LoadFrame(image, frame, target);
}

} // namespace SetApi
