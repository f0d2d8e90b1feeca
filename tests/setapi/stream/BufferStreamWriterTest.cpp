// The buffer stream writer: recordings stored image by image and read back through the factory as
// a stream set, the shape rules that the first image sets, the streams it makes and their order,
// and what a failing stream leaves behind.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/stream/BufferStreamWriter.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>
#include <DataObjects/ImageBufferVariant.h>
#include <DataObjects/ImageConversion.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using BufferApi::E_DataType;
using SetApi::BufferStreamWriter;
using SetApi::I_Set;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

const QString FrameReaderType = QStringLiteral("Core.Set.Recording.FrameReader");
const QString MaskReaderType = QStringLiteral("Core.Set.Recording.MaskFrameReader");
const QString ScalarReaderType = QStringLiteral("Core.Set.Recording.ScalarFieldFrameReader");
const QString ScaleReaderType = QStringLiteral("Core.Set.Recording.ScaleReader");
const QString AttributeReaderType = QStringLiteral("Core.Set.Recording.AttributeReader");

// ---- The images of a test recording: every value follows from frame, image, plane and pixel. ----

struct Field {
    std::string name;
    E_DataType type;
};

struct Shape {
    E_DataType type = BufferApi::DATATYPE_WORD;
    std::vector<std::pair<unsigned, unsigned>> sizes; // width and height of each frame
    unsigned depth = 1;
    bool masks = false;
    std::vector<Field> fields;
};

std::uint32_t Hash(unsigned frame, unsigned image, unsigned plane, unsigned x, unsigned y, unsigned salt)
{
    std::uint32_t h = 2166136261u;
    for (unsigned v : {frame, image, plane, x, y, salt})
        h = (h ^ v) * 16777619u;
    return h;
}

// Fills a plane with values of its element type that use every bit (fractions, signs, large and
// small magnitudes), so that any conversion on the way shows.
void FillPlane(BufferApi::I_PlaneBase& plane, unsigned frame, unsigned image, unsigned p, unsigned salt)
{
    for (unsigned y = 0; y < plane.GetHeight(); ++y)
        for (unsigned x = 0; x < plane.GetWidth(); ++x) {
            const std::uint32_t h = Hash(frame, image, p, x, y, salt);
            const std::size_t at = std::size_t(y) * plane.GetWidth() + x;
            switch (plane.GetDataType()) {
            case BufferApi::DATATYPE_WORD:
                static_cast<std::uint16_t*>(plane.GetData())[at] = std::uint16_t(h);
                break;
            case BufferApi::DATATYPE_FLOAT:
                static_cast<float*>(plane.GetData())[at] = float(std::int32_t(h)) / 4097.0f;
                break;
            case BufferApi::DATATYPE_DOUBLE:
                static_cast<double*>(plane.GetData())[at] = double(std::int32_t(h)) / 3.0e7;
                break;
            default:
                static_cast<std::uint8_t*>(plane.GetData())[at] = std::uint8_t(h);
            }
        }
}

void FillMask(BufferApi::I_PlaneBase& plane, unsigned frame, unsigned image, unsigned p)
{
    for (unsigned y = 0; y < plane.GetHeight(); ++y)
        for (unsigned x = 0; x < plane.GetWidth(); ++x)
            static_cast<std::uint8_t*>(plane.GetData())[std::size_t(y) * plane.GetWidth() + x] =
                Hash(frame, image, p, x, y, 99) % 3 == 0 ? 0 : 1;
}

std::unique_ptr<BufferApi::I_Scale> Scale(double factor, double offset, const std::string& unit,
                                          const std::string& description)
{
    return std::unique_ptr<BufferApi::I_Scale>(
        BufferApi::C_ScaleFactory::GetInstance().CreateLinearScale(factor, offset, unit, description));
}

std::unique_ptr<BufferApi::I_Buffer> MakeBuffer(const Shape& shape, unsigned image)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned f = 0; f < shape.sizes.size(); ++f) {
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrame(shape.type, shape.sizes[f].first, shape.sizes[f].second, shape.depth));
        for (unsigned p = 0; p < shape.depth; ++p)
            FillPlane(*frame->GetPixelPlane(p), f, image, p, 0);
        if (shape.masks) {
            BufferApi::I_Component* mask = frame->AddMask();
            for (unsigned p = 0; p < shape.depth; ++p)
                FillMask(*mask->GetPlane(p), f, image, p);
        }
        for (unsigned k = 0; k < shape.fields.size(); ++k) {
            BufferApi::CreateTypedScalarInFrame(frame.get(), shape.fields[k].name, shape.fields[k].type);
            BufferApi::C_TypedScalarFrame field(frame.get(), shape.fields[k].name);
            // One scale per field name: a set gives every frame the scale of the first stream of a name.
            field.SetLinearScale(1.5 + k, -0.25 * k, "K", "Temperature of " + shape.fields[k].name);
            for (unsigned p = 0; p < shape.depth; ++p)
                FillPlane(*field.GetComponent(p), f, image, p, 1 + k);
        }
        frame->SetScale(BufferApi::SCALE_X, Scale(0.125 * (f + 1), 3.0, "mm", "X of camera " + std::to_string(f)));
        frame->SetScale(BufferApi::SCALE_Y, Scale(-0.5, 100.0 + f, "mm", "Y"));
        frame->SetScale(BufferApi::SCALE_I, Scale(2.0, 0.0, "counts", "Intensity"));
        BufferApi::AttributeStore& attributes = frame->GetAttributeStore();
        attributes.SetString("CameraName", "Camera " + std::to_string(f) + " \xC3\xA9 image " + std::to_string(image));
        const int window[2] = {int(f), -int(image)};
        attributes.SetArray("Window", 2, BufferApi::DATATYPE_INT32, window);
        const float gain = 0.1f * float(image + 1);
        attributes.SetArray("Gain", 1, BufferApi::DATATYPE_FLOAT, &gain);
        buffer->AddFrame(std::move(frame));
    }
    BufferApi::AttributeStore& global = buffer->GetAttributeStore();
    global.SetString("Counter", "image " + std::to_string(image));
    const double times[3] = {image * 0.001, 1.0 / 3.0, -2.5e-300};
    global.SetArray("Times", 3, BufferApi::DATATYPE_DOUBLE, times);
    const std::uint16_t words[2] = {std::uint16_t(image), 65535};
    global.SetArray("Words", 2, BufferApi::DATATYPE_WORD, words);
    return buffer;
}

// ---- Comparing what the set gives back with what was stored. ----

// The set gives every frame the size of the largest one, the stored plane in its top left corner
// and zeros around it.
void ExpectPlane(const BufferApi::I_PlaneBase& stored, const BufferApi::I_PlaneBase& loaded, const std::string& what)
{
    SCOPED_TRACE(what);
    ASSERT_EQ(loaded.GetDataType(), stored.GetDataType());
    ASSERT_GE(loaded.GetWidth(), stored.GetWidth());
    ASSERT_GE(loaded.GetHeight(), stored.GetHeight());
    const std::size_t element = stored.GetElementSize();
    const auto* in = static_cast<const unsigned char*>(stored.GetData());
    const auto* out = static_cast<const unsigned char*>(loaded.GetData());
    const std::size_t storedRow = stored.GetWidth() * element;
    const std::size_t loadedRow = loaded.GetWidth() * element;
    for (unsigned y = 0; y < loaded.GetHeight(); ++y) {
        const unsigned char* row = out + y * loadedRow;
        std::size_t zeroFrom = 0;
        if (y < stored.GetHeight()) {
            ASSERT_EQ(std::memcmp(row, in + y * storedRow, storedRow), 0) << "row " << y;
            zeroFrom = storedRow;
        }
        for (std::size_t b = zeroFrom; b < loadedRow; ++b)
            ASSERT_EQ(row[b], 0) << "row " << y << " byte " << b;
    }
}

void ExpectScale(const BufferApi::I_Scale& stored, const BufferApi::I_Scale& loaded)
{
    EXPECT_EQ(TestSupport::BitsOf(loaded.GetFactor()), TestSupport::BitsOf(stored.GetFactor()));
    EXPECT_EQ(TestSupport::BitsOf(loaded.GetOffset()), TestSupport::BitsOf(stored.GetOffset()));
    EXPECT_EQ(loaded.GetUnit(), stored.GetUnit());
    EXPECT_EQ(loaded.GetDescription(), stored.GetDescription());
}

// Every stored attribute is there with its kind, element type and bytes (the set may add its own).
void ExpectAttributes(const BufferApi::AttributeStore& stored, const BufferApi::AttributeStore& loaded)
{
    for (std::size_t i = 0; i < stored.GetCount(); ++i) {
        const BufferApi::I_AttributeBase& attribute = stored.At(i);
        SCOPED_TRACE(attribute.GetName());
        const BufferApi::I_AttributeBase* found = loaded.Find(attribute.GetName());
        ASSERT_NE(found, nullptr);
        ASSERT_EQ(found->IsString(), attribute.IsString());
        if (attribute.IsString()) {
            EXPECT_EQ(dynamic_cast<const BufferApi::I_AttributeString&>(*found).GetValue(),
                      dynamic_cast<const BufferApi::I_AttributeString&>(attribute).GetValue());
            continue;
        }
        const auto& in = dynamic_cast<const BufferApi::I_AttributePlane&>(attribute);
        const auto& out = dynamic_cast<const BufferApi::I_AttributePlane&>(*found);
        ASSERT_EQ(out.GetDataType(), in.GetDataType());
        ASSERT_EQ(out.GetCount(), in.GetCount());
        EXPECT_EQ(std::memcmp(out.GetData(), in.GetData(), in.GetCount() * BufferApi::GetDataTypeSize(in.GetDataType())),
                  0);
    }
}

void ExpectImage(const BufferApi::I_Buffer& stored, const BufferApi::I_Buffer& loaded, const Shape& shape)
{
    ASSERT_EQ(loaded.GetNumberOfFrames(), stored.GetNumberOfFrames());
    ExpectAttributes(stored.GetAttributeStore(), loaded.GetAttributeStore());
    for (unsigned f = 0; f < stored.GetNumberOfFrames(); ++f) {
        SCOPED_TRACE("frame " + std::to_string(f));
        const auto& in = dynamic_cast<const BufferApi::I_FrameImage&>(*stored.GetFrame(f));
        const auto* out = dynamic_cast<const BufferApi::I_FrameImage*>(loaded.GetFrame(f));
        ASSERT_NE(out, nullptr);
        ASSERT_EQ(out->GetDepth(), in.GetDepth());
        for (unsigned p = 0; p < in.GetDepth(); ++p)
            ExpectPlane(*in.GetPixelPlane(p), *out->GetPixelPlane(p), "pixels of plane " + std::to_string(p));
        ASSERT_EQ(out->HasMask(), shape.masks);
        if (shape.masks)
            for (unsigned p = 0; p < in.GetDepth(); ++p)
                ExpectPlane(*in.GetMask()->GetPlane(p), *out->GetMask()->GetPlane(p), "mask of plane " + std::to_string(p));
        auto& inFrame = const_cast<BufferApi::I_FrameImage&>(in);
        auto& outFrame = const_cast<BufferApi::I_FrameImage&>(*out);
        std::vector<std::string> names;
        for (const Field& field : shape.fields)
            names.push_back(field.name);
        std::vector<std::string> loadedNames = BufferApi::GetNamesOfFrameBoundTypedScalars(out);
        std::sort(names.begin(), names.end());
        std::sort(loadedNames.begin(), loadedNames.end());
        ASSERT_EQ(loadedNames, names);
        for (const Field& field : shape.fields) {
            BufferApi::C_TypedScalarFrame inField(&inFrame, field.name), outField(&outFrame, field.name);
            for (unsigned p = 0; p < in.GetDepth(); ++p)
                ExpectPlane(*inField.GetComponent(p), *outField.GetComponent(p), field.name + " " + std::to_string(p));
            ExpectScale(inField.GetScale(), outField.GetScale());
        }
        for (BufferApi::E_ScaleType axis : {BufferApi::SCALE_X, BufferApi::SCALE_Y, BufferApi::SCALE_I})
            ExpectScale(in.GetScale(axis), out->GetScale(axis));
        ExpectAttributes(in.GetAttributeStore(), out->GetAttributeStore());
    }
}

std::shared_ptr<I_Set> OpenSet(const std::string& name)
{
    std::shared_ptr<I_Set> set = SetApi::C_SetFactory::Instance().Open(name);
    EXPECT_TRUE(set->IsOpen()) << name;
    return set;
}

SetApi::Private::C_ReaderConfiguration ConfigurationOf(const std::string& name)
{
    return SetApi::Private::LoadReaderConfiguration(SetApi::GetStreamSetConfigurationName(QString::fromStdString(name)));
}

// Stores `images` images of the shape and checks each one read back.
void RoundTrip(const std::string& name, const Shape& shape, unsigned images, BufferApi::BufferPackType_t compression)
{
    {
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, compression);
        if (shape.masks)
            writer.EnableMaskStorage();
        if (!shape.fields.empty())
            writer.EnableScalarFieldsStorage();
        for (unsigned i = 0; i < images; ++i) {
            // The shared form, as a queue in front of the writer hands buffers on.
            std::shared_ptr<const BufferApi::I_Buffer> buffer = MakeBuffer(shape, i);
            writer.Store(buffer);
        }
    }
    const std::shared_ptr<I_Set> set = OpenSet(name);
    ASSERT_TRUE(set->IsOpen());
    EXPECT_FALSE(SetApi::Private::CastToStreamSet(set)->IsCorrupt());
    ASSERT_EQ(set->GetSize(), images);
    // Backwards, so that no image depends on its predecessor having been read.
    for (unsigned i = images; i-- > 0;) {
        SCOPED_TRACE("image " + std::to_string(i));
        ExpectImage(*MakeBuffer(shape, i), *set->LoadBuffer(i), shape);
    }
}

// ---- A file system that watches and breaks the streams. ----

class WatchingBackend;

class WatchedFile : public RTE::I_WritableFile {
public:
    WatchedFile(std::unique_ptr<RTE::I_WritableFile> file, std::string path, const WatchingBackend& backend)
        : m_file(std::move(file)), m_path(std::move(path)), m_backend(backend)
    {
    }
    void Append(const void* data, std::size_t size) override;
    void Close() override { m_file->Close(); }
    bool IsDirect() const override { return m_file->IsDirect(); }
    void Reserve(std::uint64_t bytes) override { m_file->Reserve(bytes); }

private:
    std::unique_ptr<RTE::I_WritableFile> m_file;
    std::string m_path;
    const WatchingBackend& m_backend;
};

// Forwards to the default backend. Tells of every file opened for writing, and makes every write
// to files whose path holds `failingPart` fail while `failing` is set.
class WatchingBackend : public RTE::I_FileSystemBackend {
public:
    std::function<void(const std::string& path)> onOpenForWriting;
    std::string failingPart;
    std::atomic<bool> failing{false};

    bool Exists(const std::string& path) override { return m_target->Exists(path); }
    bool IsDirectory(const std::string& path) override { return m_target->IsDirectory(path); }
    bool WriteAccess(const std::string& path) override { return m_target->WriteAccess(path); }
    void CreateDirectory(const std::string& path) override { m_target->CreateDirectory(path); }
    void RemoveDirectory(const std::string& path) override { m_target->RemoveDirectory(path); }
    void RemoveFile(const std::string& path) override { m_target->RemoveFile(path); }
    void Rename(const std::string& from, const std::string& to) override { m_target->Rename(from, to); }
    void ReplaceFile(const std::string& from, const std::string& to) override { m_target->ReplaceFile(from, to); }
    void CopyFile(const std::string& from, const std::string& to, bool overwrite) override
    {
        m_target->CopyFile(from, to, overwrite);
    }
    std::vector<std::string> ListFiles(const std::string& folder, bool recursive) override
    {
        return m_target->ListFiles(folder, recursive);
    }
    std::unique_ptr<RTE::I_ReadableFile> OpenForReading(const std::string& path) override
    {
        return m_target->OpenForReading(path);
    }
    std::unique_ptr<RTE::I_ReadableFile> OpenForDirectReading(const std::string& path) override
    {
        return m_target->OpenForDirectReading(path);
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForWriting(const std::string& path) override
    {
        Opening(path);
        return std::make_unique<WatchedFile>(m_target->OpenForWriting(path), path, *this);
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForDirectWriting(const std::string& path) override
    {
        Opening(path);
        return std::make_unique<WatchedFile>(m_target->OpenForDirectWriting(path), path, *this);
    }
    void SyncFolder(const std::string& path) override { m_target->SyncFolder(path); }

    RTE::I_FileSystemBackend& Target() { return *m_target; }

private:
    void Opening(const std::string& path)
    {
        if (onOpenForWriting)
            onOpenForWriting(path);
    }
    std::shared_ptr<RTE::I_FileSystemBackend> m_target = RTE::FileSystem::GetDefaultBackend();
};

void WatchedFile::Append(const void* data, std::size_t size)
{
    if (m_backend.failing && m_path.find(m_backend.failingPart) != std::string::npos)
        RTE_THROW(RTE::FileWriteError, QString::fromStdString("Injected fault: Write " + m_path));
    m_file->Append(data, size);
}

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Byte 38 of an image stream's header: its codec, 0 raw, 1 "Zlib", 2 "IMX".
int CodecOf(const std::string& name, const QString& prefix)
{
    const std::string header = TestSupport::ReadFile(name + "/" + prefix.toStdString() + ".ims");
    return header.size() > 38 ? static_cast<unsigned char>(header[38]) : -1;
}

Shape SmallShape()
{
    Shape shape;
    shape.sizes = {{16, 8}, {12, 6}};
    shape.masks = true;
    shape.fields = {{"Temperature", BufferApi::DATATYPE_FLOAT}};
    return shape;
}

} // namespace

TEST(BufferStreamWriter, RecordingsReadBackBitExactThroughTheFactory)
{
    TempDir dir;
    {
        SCOPED_TRACE("word, depth 1, frames of different sizes, masks, two scalar fields");
        Shape shape;
        shape.type = BufferApi::DATATYPE_WORD;
        shape.sizes = {{40, 30}, {24, 18}, {40, 12}};
        shape.masks = true;
        shape.fields = {{"Temperature", BufferApi::DATATYPE_FLOAT}, {"Count", BufferApi::DATATYPE_WORD}};
        RoundTrip(dir / "Word", shape, 5, BufferApi::BUFFER_PACK_NONE);
    }
    {
        SCOPED_TRACE("float, depth 3, masks, a double scalar field, IMX");
        Shape shape;
        shape.type = BufferApi::DATATYPE_FLOAT;
        shape.sizes = {{32, 20}, {16, 8}};
        shape.depth = 3;
        shape.masks = true;
        shape.fields = {{"Speed", BufferApi::DATATYPE_DOUBLE}};
        RoundTrip(dir / "Float", shape, 3, BufferApi::BUFFER_PACK_FAST);
    }
    {
        SCOPED_TRACE("double, depth 2, nothing else, Zlib");
        Shape shape;
        shape.type = BufferApi::DATATYPE_DOUBLE;
        shape.sizes = {{20, 10}};
        shape.depth = 2;
        RoundTrip(dir / "Double", shape, 2, BufferApi::BUFFER_PACK_ZLIB);
    }
    {
        SCOPED_TRACE("word, many images: attribute records of several batches");
        Shape shape;
        shape.sizes = {{8, 4}, {8, 4}};
        RoundTrip(dir / "Long", shape, 70, BufferApi::BUFFER_PACK_NONE);
    }
}

TEST(BufferStreamWriter, ImageBufferVariantsReadBackBitExact)
{
    TempDir dir;
    const std::string name = dir / "Variant";
    const std::vector<std::pair<unsigned, unsigned>> sizes = {{24, 10}, {12, 14}};
    const unsigned depth = 2, images = 3;

    const auto makeVariant = [&](unsigned image) {
        DataObjects::ImageBufferVariant buffer;
        for (unsigned f = 0; f < sizes.size(); ++f) {
            const auto [width, height] = sizes[f];
            DataObjects::ImageVolumeVariant volume;
            for (unsigned p = 0; p < depth; ++p) {
                auto plane = std::make_unique<DataObjects::Image<float>>(width, height);
                for (unsigned y = 0; y < height; ++y)
                    for (unsigned x = 0; x < width; ++x) {
                        (*plane)(x, y) = float(std::int32_t(Hash(f, image, p, x, y, 0))) / 8191.0f;
                        plane->GetMask()(x, y) = Hash(f, image, p, x, y, 5) % 4 == 0 ? 0 : 1;
                    }
                DataObjects::ScalarField field("Speed", BufferApi::DATATYPE_DOUBLE, width, height,
                                               DataObjects::LinearScale(0.5, 1.0, "m/s", "Speed"));
                for (unsigned k = 0; k < width * height; ++k)
                    field.GetDataAs<double>()[k] = double(Hash(f, image, p, k, 0, 7)) * 1e-5;
                plane->GetScalarFields().Set(field);
                plane->SetScaleX(DataObjects::LinearScale(0.25, -1.0, "mm", "X"));
                plane->SetScaleY(DataObjects::LinearScale(0.5, 2.0 + f, "mm", "Y"));
                plane->SetScaleI(DataObjects::LinearScale(3.0, 0.0, "counts", "I"));
                if (p == 0) {
                    plane->GetAttributes().Set("CameraName", DataObjects::C_AttributeValue("Camera " + std::to_string(f)));
                    plane->GetAttributes().Set("Window", DataObjects::C_AttributeValue(std::vector<int>{int(f), int(image), 7}));
                }
                volume.AddXYPlane(std::move(plane));
            }
            buffer.AddImageVolume(std::move(volume));
        }
        buffer.GetGlobalAttributes().Set("Counter", DataObjects::C_AttributeValue("image " + std::to_string(image)));
        buffer.GetGlobalAttributes().Set("Times", DataObjects::C_AttributeValue(std::vector<double>{image * 0.5, -1.0}));
        return buffer;
    };

    {
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
        writer.EnableMaskStorage();
        writer.EnableScalarFieldsStorage();
        for (unsigned i = 0; i < images; ++i)
            writer.Store(makeVariant(i));
    }

    const std::shared_ptr<I_Set> set = OpenSet(name);
    ASSERT_TRUE(set->IsOpen());
    ASSERT_EQ(set->GetSize(), images);
    for (unsigned i = 0; i < images; ++i) {
        SCOPED_TRACE("image " + std::to_string(i));
        const DataObjects::ImageBufferVariant stored = makeVariant(i);
        std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(i);
        // Frames come back widened to the largest size; take the stored size out of each.
        for (unsigned f = 0; f < sizes.size(); ++f) {
            const auto& storedVolume = stored.GetImageVolume(f);
            auto& frame = dynamic_cast<BufferApi::I_FrameImage&>(*buffer->GetFrame(f));
            BufferApi::C_TypedScalarFrame speed(&frame, "Speed");
            for (unsigned p = 0; p < depth; ++p) {
                const auto& plane = dynamic_cast<const DataObjects::Image<float>&>(storedVolume.GetXYPlane(p));
                const unsigned loadedWidth = frame.GetWidth();
                for (unsigned y = 0; y < plane.GetHeight(); ++y)
                    for (unsigned x = 0; x < plane.GetWidth(); ++x) {
                        const std::size_t at = std::size_t(y) * loadedWidth + x;
                        ASSERT_EQ(std::memcmp(&static_cast<const float*>(frame.GetPixelPlane(p)->GetData())[at],
                                              &plane(x, y), sizeof(float)),
                                  0);
                        ASSERT_EQ(static_cast<const std::uint8_t*>(frame.GetMask()->GetPlane(p)->GetData())[at],
                                  plane.GetMask()(x, y));
                        const double expected = plane.GetScalarFields().Get("Speed").GetValue(x, y);
                        ASSERT_EQ(TestSupport::BitsOf(static_cast<const double*>(speed.GetComponent(p)->GetData())[at]),
                                  TestSupport::BitsOf(expected));
                    }
            }
            EXPECT_EQ(DataObjects::LinearScale(speed.GetScale()), DataObjects::LinearScale(0.5, 1.0, "m/s", "Speed"));
            EXPECT_EQ(DataObjects::GetScaleFromFrame(frame, BufferApi::SCALE_Y), storedVolume.GetXYPlane(0).GetScaleY());
            EXPECT_EQ(DataObjects::GetScaleFromFrame(frame, BufferApi::SCALE_I), storedVolume.GetXYPlane(0).GetScaleI());
        }
        const std::unique_ptr<DataObjects::ImageBufferVariant> loaded = DataObjects::GetImageBuffer(std::move(*buffer), true);
        for (const std::string attribute : {"Counter", "Times"})
            EXPECT_EQ(loaded->GetGlobalAttributes().GetAttributeValue(attribute),
                      stored.GetGlobalAttributes().GetAttributeValue(attribute))
                << attribute;
        for (unsigned f = 0; f < sizes.size(); ++f)
            for (const std::string attribute : {"CameraName", "Window"})
                EXPECT_EQ(loaded->GetImageVolume(f).GetXYPlane(0).GetAttributes().GetAttributeValue(attribute),
                          stored.GetImageVolume(f).GetXYPlane(0).GetAttributes().GetAttributeValue(attribute))
                    << attribute;
    }
}

TEST(BufferStreamWriter, StreamsAreRegisteredFrameByFrameThenScalesThenAttributes)
{
    TempDir dir;
    const std::string name = dir / "Order";
    Shape shape;
    shape.sizes = {{8, 4}, {8, 4}};
    shape.masks = true;
    shape.fields = {{"A", BufferApi::DATATYPE_WORD}, {"B", BufferApi::DATATYPE_DOUBLE}};
    BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
    writer.EnableMaskStorage();
    writer.EnableScalarFieldsStorage();
    writer.Store(MakeBuffer(shape, 0).get());

    using SetApi::C_ContentPurpose;
    const std::vector<std::pair<QString, C_ContentPurpose>> expected = {
        {FrameReaderType, C_ContentPurpose::CreateFrameLink(0)},    {MaskReaderType, C_ContentPurpose::CreateFrameLink(0)},
        {ScalarReaderType, C_ContentPurpose::CreateFrameLink(0)},   {ScalarReaderType, C_ContentPurpose::CreateFrameLink(0)},
        {FrameReaderType, C_ContentPurpose::CreateFrameLink(1)},    {MaskReaderType, C_ContentPurpose::CreateFrameLink(1)},
        {ScalarReaderType, C_ContentPurpose::CreateFrameLink(1)},   {ScalarReaderType, C_ContentPurpose::CreateFrameLink(1)},
        {ScaleReaderType, C_ContentPurpose::CreateFrameLink(0)},    {ScaleReaderType, C_ContentPurpose::CreateFrameLink(1)},
        {AttributeReaderType, C_ContentPurpose::CreateFrameLink(0)}, {AttributeReaderType, C_ContentPurpose::CreateFrameLink(1)},
        {AttributeReaderType, C_ContentPurpose::CreateGlobalAttributesLink()}};
    const auto configuration = ConfigurationOf(name);
    ASSERT_EQ(configuration.GetReaderCount(), expected.size());
    for (unsigned i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(configuration.GetReader(i).Type, expected[i].first);
        EXPECT_EQ(configuration.GetReader(i).ContentPurpose, expected[i].second);
    }
    // Image streams bear the word "Frame", counted from 0.
    EXPECT_TRUE(configuration.GetReader(0).FilePrefix.startsWith(QLatin1String("Frame0")));
    EXPECT_TRUE(configuration.GetReader(4).FilePrefix.startsWith(QLatin1String("Frame1")));
}

TEST(BufferStreamWriter, CompressionAppliesToImageStreamsOnly)
{
    TempDir dir;
    // Codec in the stream header: 0 none, 1 "Zlib", 2 "IMX"; any value but 0 and 2 means "IMX".
    const std::vector<std::pair<int, int>> cases = {{0, 0}, {1, 2}, {2, 1}, {7, 2}};
    for (const auto& [compression, codec] : cases) {
        SCOPED_TRACE("compression " + std::to_string(compression));
        const std::string name = dir / ("Packed" + std::to_string(compression));
        {
            BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING,
                                      static_cast<BufferApi::BufferPackType_t>(compression));
            writer.EnableMaskStorage();
            writer.EnableScalarFieldsStorage();
            writer.Store(MakeBuffer(SmallShape(), 0).get());
        }
        const auto configuration = ConfigurationOf(name);
        for (unsigned i = 0; i < configuration.GetReaderCount(); ++i) {
            const auto& entry = configuration.GetReader(i);
            if (entry.Type == FrameReaderType) {
                EXPECT_EQ(CodecOf(name, entry.FilePrefix), codec);
            } else if (entry.Type == MaskReaderType || entry.Type == ScalarReaderType) {
                EXPECT_EQ(CodecOf(name, entry.FilePrefix), 0) << entry.Type.toStdString();
            }
        }
    }
    // What was compressed reads back.
    RoundTrip(dir / "PackedRoundTrip", SmallShape(), 2, BufferApi::BUFFER_PACK_FAST);
}

TEST(BufferStreamWriter, LaterImagesMustHaveTheShapeOfTheFirst)
{
    TempDir dir;
    const std::string name = dir / "Shape";
    const Shape shape = SmallShape();
    LogCapture log;
    {
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
        writer.EnableMaskStorage();
        writer.EnableScalarFieldsStorage();
        writer.Store(MakeBuffer(shape, 0).get());

        struct Deviation {
            const char* words;
            std::function<std::unique_ptr<BufferApi::I_Buffer>()> make;
        };
        const auto changed = [&](const std::function<void(Shape&)>& change) {
            return [&shape, change] {
                Shape other = shape;
                change(other);
                return MakeBuffer(other, 1);
            };
        };
        const std::vector<Deviation> deviations = {
            {"Number of frames must not change", changed([](Shape& s) { s.sizes.push_back({16, 8}); })},
            {"Number of frames must not change", changed([](Shape& s) { s.sizes.pop_back(); })},
            {"Image width must not change", changed([](Shape& s) { s.sizes[1].first = 13; })},
            {"Image height must not change", changed([](Shape& s) { s.sizes[1].second = 7; })},
            {"Image depth must not change", changed([](Shape& s) { s.depth = 2; })},
            {"Data type must not change", changed([](Shape& s) { s.type = BufferApi::DATATYPE_FLOAT; })},
            {"Data type must not change", changed([](Shape& s) { s.type = BufferApi::DATATYPE_BYTE; })},
            {"Mask may not change between existing and not existing", changed([](Shape& s) { s.masks = false; })},
            {"List of scalar fields must not change", changed([](Shape& s) { s.fields[0].name = "Pressure"; })},
            {"List of scalar fields must not change", changed([](Shape& s) { s.fields.clear(); })},
            {"Data type of typed scalar must not change",
             changed([](Shape& s) { s.fields[0].type = BufferApi::DATATYPE_DOUBLE; })},
            {"Buffer must not be empty", [] { return std::unique_ptr<BufferApi::I_Buffer>(BufferApi::CreateBuffer()); }},
            {"Buffer must contain image frames",
             [] {
                 std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
                 buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
                     BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 16, 8, 1, 8)));
                 buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(
                     BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 12, 6, 1, 8)));
                 return buffer;
             }},
        };
        for (const Deviation& deviation : deviations) {
            SCOPED_TRACE(deviation.words);
            const std::unique_ptr<BufferApi::I_Buffer> buffer = deviation.make();
            EXPECT_THROW(writer.Store(buffer.get()), RTE::VerificationFailed);
            EXPECT_EQ(MessageOf([&] { writer.Store(buffer.get()); }), deviation.words);
            EXPECT_TRUE(log.contains("Exception", deviation.words));
        }
        EXPECT_EQ(MessageOf([&] { writer.Store(static_cast<const BufferApi::I_Buffer*>(nullptr)); }),
                  "Buffer must not be empty");
        // The writer goes on with images of the right shape.
        writer.Store(MakeBuffer(shape, 1).get());
    }
    const std::shared_ptr<I_Set> set = OpenSet(name);
    ASSERT_EQ(set->GetSize(), 2u);
    EXPECT_FALSE(SetApi::Private::CastToStreamSet(set)->IsCorrupt());
    ExpectImage(*MakeBuffer(shape, 1), *set->LoadBuffer(1), shape);
}

TEST(BufferStreamWriter, AFirstImageThatCannotBeStoredLeavesNoStreams)
{
    TempDir dir;
    const std::string name = dir / "First";
    const std::string configurationPath = name + "/ReaderConfiguration.xml";
    BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
    writer.EnableMaskStorage();
    writer.EnableScalarFieldsStorage();

    // Frames of one image must agree among themselves: frame 1 is compared with frame 0.
    const auto mixed = [](const std::function<void(BufferApi::I_Buffer&)>& spoil) {
        Shape shape = SmallShape();
        std::unique_ptr<BufferApi::I_Buffer> buffer = MakeBuffer(shape, 0);
        spoil(*buffer);
        return buffer;
    };
    const auto replaceFrame1 = [](BufferApi::I_Buffer& buffer, Shape shape) {
        buffer.RemoveFrame(1);
        shape.sizes = {{12, 6}};
        buffer.AddFrame(MakeBuffer(shape, 0)->RemoveFrame(0));
    };
    Shape floats = SmallShape();
    floats.type = BufferApi::DATATYPE_FLOAT;
    Shape noMasks = SmallShape();
    noMasks.masks = false;
    Shape otherField = SmallShape();
    otherField.fields[0].type = BufferApi::DATATYPE_WORD;
    EXPECT_EQ(MessageOf([&] { writer.Store(mixed([&](auto& b) { replaceFrame1(b, floats); }).get()); }),
              "Data type must not change");
    EXPECT_EQ(MessageOf([&] { writer.Store(mixed([&](auto& b) { replaceFrame1(b, noMasks); }).get()); }),
              "Mask may not change between existing and not existing");
    EXPECT_EQ(MessageOf([&] { writer.Store(mixed([&](auto& b) { replaceFrame1(b, otherField); }).get()); }),
              "Data type of typed scalar must not change");

    // Element types a stream cannot hold are a failure of the data, not of an argument.
    Shape integers = SmallShape();
    integers.type = BufferApi::DATATYPE_INT32;
    try {
        writer.Store(MakeBuffer(integers, 0).get());
        ADD_FAILURE() << "no exception";
    } catch (const RTE::VerificationFailed& e) {
        ADD_FAILURE() << e.what();
    } catch (const RTE::Exception& e) {
        EXPECT_EQ(e.message(), QStringLiteral("Invalid datatype of image for storage in stream set."));
    }
    Shape byteField = SmallShape();
    byteField.fields.push_back({"Flags", BufferApi::DATATYPE_BYTE});
    EXPECT_EQ(MessageOf([&] { writer.Store(MakeBuffer(byteField, 0).get()); }),
              "Invalid datatype of scalar field Flags for storage in stream set.");
    EXPECT_FALSE(RTE::FileSystem::Exists(configurationPath));
    EXPECT_EQ(RTE::FileSystem::GetFiles(name, ".*", false, false).size(), 0u);

    // Storage parameters may still change; the next good image is the first one.
    writer.SetCompressionType(BufferApi::BUFFER_PACK_ZLIB);
    const Shape good = SmallShape();
    writer.Store(MakeBuffer(good, 0).get());
    const auto configuration = ConfigurationOf(name);
    EXPECT_EQ(configuration.GetReaderCount(), 2u * 3 + 2 + 3);
    EXPECT_EQ(CodecOf(name, configuration.GetReader(0).FilePrefix), 1);

    for (const auto& change : std::vector<std::function<void()>>{[&] { writer.SetCompressionType(BufferApi::BUFFER_PACK_NONE); },
                                                                 [&] { writer.EnableMaskStorage(); },
                                                                 [&] { writer.EnableScalarFieldsStorage(); }}) {
        EXPECT_THROW(change(), RTE::VerificationFailed);
        EXPECT_EQ(MessageOf(change), "Can't change storage parameters after storage of first image.");
    }
}

TEST(BufferStreamWriter, MaskStorageNeedsMasksInTheFirstImage)
{
    TempDir dir;
    const std::string name = dir / "NoMasks";
    Shape withoutMasks = SmallShape();
    withoutMasks.masks = false;
    withoutMasks.fields.clear();
    Shape withMasks = withoutMasks;
    withMasks.masks = true;
    {
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
        writer.EnableMaskStorage();
        writer.Store(MakeBuffer(withoutMasks, 0).get());
        EXPECT_EQ(MessageOf([&] { writer.Store(MakeBuffer(withMasks, 1).get()); }),
                  "Mask may not change between existing and not existing");
        writer.Store(MakeBuffer(withoutMasks, 1).get());
    }
    const auto configuration = ConfigurationOf(name);
    for (unsigned i = 0; i < configuration.GetReaderCount(); ++i)
        EXPECT_NE(configuration.GetReader(i).Type, MaskReaderType);
    const std::shared_ptr<I_Set> set = OpenSet(name);
    ASSERT_EQ(set->GetSize(), 2u);
    ExpectImage(*MakeBuffer(withoutMasks, 1), *set->LoadBuffer(1), withoutMasks);
}

TEST(BufferStreamWriter, AnExtraFrameStopsThatImageOnly)
{
    TempDir dir;
    const std::string name = dir / "Frames";
    Shape shape;
    shape.sizes = {{16, 8}};
    Shape twoFrames = shape;
    twoFrames.sizes.push_back({16, 8});
    {
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
        writer.Store(MakeBuffer(shape, 0).get());
        EXPECT_EQ(MessageOf([&] { writer.Store(MakeBuffer(twoFrames, 1).get()); }), "Number of frames must not change");
    }
    const std::shared_ptr<I_Set> set = OpenSet(name);
    EXPECT_EQ(set->GetSize(), 1u);
    EXPECT_FALSE(SetApi::Private::CastToStreamSet(set)->IsCorrupt());
}

TEST(BufferStreamWriter, ConfigurationAndScalesAreOnDiskBeforeAnyImageStream)
{
    TempDir dir;
    const std::string name = dir / "Early";
    auto backend = std::make_shared<WatchingBackend>();
    unsigned streamsOpened = 0;
    backend->onOpenForWriting = [&](const std::string& path) {
        if (!EndsWith(path, ".ims"))
            return;
        ++streamsOpened;
        EXPECT_TRUE(backend->Target().Exists(name + "/ReaderConfiguration.xml")) << path;
        unsigned scales = 0;
        for (const std::string& file : backend->Target().ListFiles(name, false))
            scales += EndsWith(file, ".scales") ? 1 : 0;
        EXPECT_EQ(scales, 2u) << path;
    };
    RTE::ScopedFileSystemBackend installed(backend);
    BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
    writer.EnableMaskStorage();
    writer.EnableScalarFieldsStorage();
    writer.Store(MakeBuffer(SmallShape(), 0).get());
    EXPECT_EQ(streamsOpened, 2u * 3); // image, mask and scalar field stream of each frame
}

TEST(BufferStreamWriter, AFailingFrameRaisesAfterTheOtherFramesAreWritten)
{
    TempDir dir;
    const std::string name = dir / "Broken";
    Shape shape;
    shape.sizes = {{64, 32}, {64, 32}, {48, 16}};
    auto backend = std::make_shared<WatchingBackend>();
    {
        RTE::ScopedFileSystemBackend installed(backend);
        BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING, BufferApi::BUFFER_PACK_NONE);
        writer.Store(MakeBuffer(shape, 0).get());
        writer.Store(MakeBuffer(shape, 1).get());

        // The image stream of frame 1 breaks (the disk of that camera, say).
        const auto configuration = ConfigurationOf(name);
        ASSERT_EQ(configuration.GetReader(1).Type, FrameReaderType);
        ASSERT_EQ(configuration.GetReader(1).ContentPurpose.StartFrame(), 1u);
        backend->failingPart = "/" + configuration.GetReader(1).FilePrefix.toStdString() + ".ims";
        backend->failing = true;
        EXPECT_THROW(writer.Store(MakeBuffer(shape, 2).get()), RTE::FileError);
        backend->failing = false;
    }
    const std::shared_ptr<I_Set> set = OpenSet(name);
    ASSERT_TRUE(set->IsOpen());
    const auto stream = SetApi::Private::CastToStreamSet(set);
    const auto& states = stream->GetCorruptionStates();
    // Frames 0 and 2 hold image 2, frame 1 does not; the attribute streams are complete.
    EXPECT_EQ(states.imageCounts, (std::vector<std::uint32_t>{3, 2, 3}));
    EXPECT_EQ(states.maxImageCount, 3u);
    EXPECT_FALSE(states.globalAttributesCorrupt);
    EXPECT_TRUE(states.corruptAttributeFrames.empty());
    EXPECT_FALSE(states.scalesCorrupt);
    ASSERT_EQ(set->GetSize(), 2u);
    for (unsigned i = 0; i < 2; ++i)
        ExpectImage(*MakeBuffer(shape, i), *set->LoadBuffer(i), shape);
}

TEST(BufferStreamWriter, TheSetMustNotExistYet)
{
    TempDir dir;
    const std::string name = dir / "Existing";
    RTE::FileSystem::CreateDirectory(name);
    EXPECT_EQ(MessageOf([&] {
                  BufferStreamWriter writer(QString::fromStdString(name), I_Set::SET_TYPE_RECORDING,
                                            BufferApi::BUFFER_PACK_NONE);
              }),
              "Could not create folder: " + name);
    EXPECT_FALSE(RTE::FileSystem::Exists(name + ".set"));
}
