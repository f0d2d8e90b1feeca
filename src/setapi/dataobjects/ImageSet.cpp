#include <SetApi/dataobjects/ImageSet.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>

#include <DataObjects/BufferStructureInformation.h>
#include <DataObjects/ImageConversion.h>
#include <RTE/Exception.h>

namespace DataObjects {

namespace {

void CheckImageSetType(const SetApi::I_Set& set)
{
    const unsigned type = set.GetSetType();
    if ((type & (SetApi::I_Set::SET_TYPE_IMAGE | SetApi::I_Set::SET_TYPE_RECORDING)) == 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("No image type input set"));
}

std::shared_ptr<SetApi::I_Set> OpenOrCreate(const QString& path, bool createNew)
{
    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string name = path.toStdString();
    std::shared_ptr<SetApi::I_Set> set;
    if (!createNew && factory.Exists(name)) {
        set = factory.Open(name);
        if (!set || !set->IsOpen())
            RTE_THROW_MSG(RTE::VerificationFailed, "Could not open set " << path);
    } else {
        set = factory.Create(name, std::string(), SetApi::I_Set::SET_TYPE_IMAGE, true);
        if (!set || !set->IsOpen())
            RTE_THROW_MSG(RTE::VerificationFailed, "Could not create set " << path);
    }
    CheckImageSetType(*set);
    return set;
}

template <typename Function>
void WithBufferOf(const SetApi::I_Set& set, unsigned index, std::unique_ptr<BufferApi::I_Buffer> buffer,
                  Function&& function)
{
    if (!buffer)
        RTE_THROW_MSG(RTE::Exception, "No buffer " << index << " in set " << set.GetName());
    function(*buffer);
}

// The pixel type of the code, as the tag given to `make`; RGB and unknown codes are refused.
template <typename Make>
std::unique_ptr<ImageSetVariant> ByDataType(BufferApi::E_DataType type, Make&& make)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE: return make(static_cast<unsigned char*>(nullptr));
    case BufferApi::DATATYPE_RGB: RTE_THROW(RTE::Exception, QStringLiteral("RGB image set is not supported"));
    case BufferApi::DATATYPE_DOUBLE: return make(static_cast<double*>(nullptr));
    case BufferApi::DATATYPE_FLOAT: return make(static_cast<float*>(nullptr));
    case BufferApi::DATATYPE_INT32: return make(static_cast<int*>(nullptr));
    case BufferApi::DATATYPE_UINT32: return make(static_cast<unsigned int*>(nullptr));
    case BufferApi::DATATYPE_WORD: return make(static_cast<unsigned short*>(nullptr));
    default: RTE_THROW(RTE::Exception, QStringLiteral("Unknown set type"));
    }
}

BufferApi::E_DataType DataTypeOfFirstBuffer(const SetApi::I_Set& set)
{
    if (set.GetSize() == 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Empty set"));
    return set.GetBufferStructureInformation(0).dataType;
}

} // namespace

// ---- ImageSetVariantIterator

std::unique_ptr<ImageBufferVariant> ImageSetVariantIterator::operator*() const
{
    return m_set->GetImageBufferVariant(m_index);
}

// ---- ImageSetVariant

ImageSetVariant::ImageSetVariant(SetApi::I_Set& set, bool checkType) : m_set(&set)
{
    if (checkType)
        CheckImageSetType(set);
}

// The set is used through the same interface as a non-const one; writing through a set that was
// handed in as const is the caller's decision.
ImageSetVariant::ImageSetVariant(const SetApi::I_Set& set, bool checkType)
    : ImageSetVariant(const_cast<SetApi::I_Set&>(set), checkType)
{
}

ImageSetVariant::ImageSetVariant(const QString& path, bool createNew)
    : m_owner(OpenOrCreate(path, createNew)), m_set(m_owner.get())
{
}

ImageSetVariant::ImageSetVariant(const ImageSetVariant& other) = default;
ImageSetVariant& ImageSetVariant::operator=(const ImageSetVariant& other) = default;
ImageSetVariant::~ImageSetVariant() = default;

void ImageSetVariant::GetImageVolumeSize(Math::Size3T<unsigned>& size, unsigned& frameCount) const
{
    if (m_set->GetSize() == 0) {
        size = Math::Size3T<unsigned>(0, 0, 1);
        frameCount = 1;
        return;
    }
    const BufferStructureInformation info = m_set->GetBufferStructureInformation(0);
    size = Math::Size3T<unsigned>(info.width, info.height, info.depth);
    frameCount = info.frameCount;
}

unsigned ImageSetVariant::GetSize() const { return m_set->GetSize(); }

void ImageSetVariant::AppendBuffer(const BufferApi::I_Buffer& buffer) { m_set->AppendBuffer(&buffer); }

std::unique_ptr<BufferApi::I_Buffer> ImageSetVariant::LoadBuffer(unsigned index) const
{
    return m_set->LoadBuffer(index);
}

std::unique_ptr<ImageBufferVariant> ImageSetVariant::GetImageBufferVariant(unsigned index) const
{
    std::unique_ptr<ImageBufferVariant> result;
    WithBufferOf(*m_set, index, LoadBuffer(index),
                 [&](BufferApi::I_Buffer& buffer) { result = GetImageBuffer(std::move(buffer), true); });
    return result;
}

std::unique_ptr<ImageVariant> ImageSetVariant::GetImageVariant(unsigned index, unsigned frame, unsigned plane) const
{
    std::unique_ptr<ImageVariant> result;
    WithBufferOf(*m_set, index, LoadBuffer(index), [&](BufferApi::I_Buffer& buffer) {
        auto* image = dynamic_cast<BufferApi::I_FrameImage*>(buffer.GetFrame(frame));
        if (image == nullptr)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Frame of buffer is not from type image"));
        result = GetImage(std::move(*image), plane, true);
    });
    return result;
}

std::unique_ptr<ImageDataVariant> ImageSetVariant::GetImageDataVariant(unsigned index, unsigned frame,
                                                                       unsigned plane) const
{
    std::unique_ptr<ImageDataVariant> result;
    WithBufferOf(*m_set, index, LoadBuffer(index), [&](BufferApi::I_Buffer& buffer) {
        auto* image = dynamic_cast<BufferApi::I_FrameImage*>(buffer.GetFrame(frame));
        if (image == nullptr)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Frame of buffer is not from type image"));
        result = GetImageData(std::move(*image), plane);
    });
    return result;
}

std::unique_ptr<ImageVolumeVariant> ImageSetVariant::GetImageVolumeVariant(unsigned index, unsigned frame) const
{
    std::unique_ptr<ImageVolumeVariant> result;
    WithBufferOf(*m_set, index, LoadBuffer(index),
                 [&](BufferApi::I_Buffer& buffer) { result = GetImageVolume(std::move(buffer), frame, true); });
    return result;
}

std::string ImageSetVariant::GetParameter(const std::string& name) const
{
    std::string value;
    if (const auto* set = dynamic_cast<const SetApi::C_Set*>(m_set))
        set->GetParameter(name, value);
    return value;
}

void ImageSetVariant::Append(const ImageVariant& image)
{
    AppendBuffer(*CreateBufferFromImage(image, !image.GetMask().IsAllValid()));
}

void ImageSetVariant::Append(ImageVariant&& image)
{
    const bool withMask = !image.GetMask().IsAllValid();
    AppendBuffer(*CreateBufferFromImage(std::move(image), withMask));
}

void ImageSetVariant::Append(const ImageDataVariant& data) { AppendBuffer(*CreateBufferFromImageData(data)); }

void ImageSetVariant::Append(ImageDataVariant&& data) { AppendBuffer(*CreateBufferFromImageData(std::move(data))); }

void ImageSetVariant::Append(const ImageVolumeVariant& volume)
{
    AppendBuffer(*CreateBufferFromImageVolume(volume, !volume.IsMaskAllValid()));
}

void ImageSetVariant::Append(ImageVolumeVariant&& volume)
{
    const bool withMask = !volume.IsMaskAllValid();
    AppendBuffer(*CreateBufferFromImageVolume(std::move(volume), withMask));
}

void ImageSetVariant::Append(const ImageBufferVariant& buffer)
{
    AppendBuffer(*CreateBufferFromImageBuffer(buffer, !buffer.IsMaskAllValid()));
}

void ImageSetVariant::Append(ImageBufferVariant&& buffer)
{
    const bool withMask = !buffer.IsMaskAllValid();
    AppendBuffer(*CreateBufferFromImageBuffer(std::move(buffer), withMask));
}

void ImageSetVariant::AddParameter(const std::string& name, const std::string& value)
{
    if (auto* set = dynamic_cast<SetApi::C_Set*>(m_set))
        set->AddParameter(name, value);
}

void ImageSetVariant::Clear()
{
    for (unsigned index = m_set->GetSize(); index > 0; --index)
        m_set->RemoveBuffer(index - 1);
}

bool ImageSetVariant::Delete()
{
    return SetApi::C_SetFactory::Instance().Remove(QString::fromStdString(m_set->GetName()));
}

// ---- ImageSet<T>

template <typename T>
ImageSet<T>::ImageSet(SetApi::I_Set& set, bool checkType) : ImageSetVariant(set, checkType)
{
}

template <typename T>
ImageSet<T>::ImageSet(const SetApi::I_Set& set, bool checkType) : ImageSetVariant(set, checkType)
{
}

template <typename T>
ImageSet<T>::ImageSet(const QString& path, bool createNew) : ImageSetVariant(path, createNew)
{
}

template <typename T>
std::unique_ptr<Image<T>> ImageSet<T>::GetImage(unsigned index, unsigned frame, unsigned plane) const
{
    std::unique_ptr<ImageVariant> image = GetImageVariant(index, frame, plane);
    auto* typed = dynamic_cast<Image<T>*>(image.get());
    if (typed == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "Image " << index << " has element type "
                                                        << static_cast<int>(image->GetDataType())
                                                        << ", not the pixel type of the set");
    image.release();
    return std::unique_ptr<Image<T>>(typed);
}

// ---- RangedImageSet<T>

template <typename T>
RangedImageSet<T>::RangedImageSet(const SetApi::I_Set& set, const Algorithms::IndexRange& range)
    : ImageSet<T>(set, true), m_range(range)
{
    if (range.increment == 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("increment is zero"));
    if (range.last >= set.GetSize())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("end range is above set length"));
    if (range.first > range.last)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("invalid data range"));
}

template <typename T>
RangedImageSet<T>::RangedImageSet(const QString& path, const Algorithms::IndexRange& range, bool createNew)
    : ImageSet<T>(path, createNew), m_range(range)
{
}

template <typename T>
unsigned RangedImageSet<T>::GetSize() const
{
    // An unchecked range (path form) may be empty or have no step; it then holds nothing.
    if (m_range.increment == 0 || m_range.last < m_range.first)
        return 0;
    return (m_range.last - m_range.first) / m_range.increment + 1;
}

template <typename T>
std::unique_ptr<BufferApi::I_Buffer> RangedImageSet<T>::LoadBuffer(unsigned index) const
{
    return ImageSet<T>::LoadBuffer(m_range.first + m_range.increment * index);
}

// ---- CreateImageSet

std::unique_ptr<ImageSetVariant> CreateImageSet(const SetApi::I_Set& set, const Algorithms::IndexRange& range)
{
    return ByDataType(DataTypeOfFirstBuffer(set), [&](auto* tag) -> std::unique_ptr<ImageSetVariant> {
        using T = std::remove_pointer_t<decltype(tag)>;
        return std::make_unique<RangedImageSet<T>>(set, range);
    });
}

std::unique_ptr<ImageSetVariant> CreateImageSet(const QString& path, const Algorithms::IndexRange& range,
                                                bool createNew)
{
    std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(path.toStdString());
    if (!set || !set->IsOpen())
        RTE_THROW_MSG(RTE::VerificationFailed, "Could not open set " << path);
    const BufferApi::E_DataType type = DataTypeOfFirstBuffer(*set);
    set.reset();
    return ByDataType(type, [&](auto* tag) -> std::unique_ptr<ImageSetVariant> {
        using T = std::remove_pointer_t<decltype(tag)>;
        return std::make_unique<RangedImageSet<T>>(path, range, createNew);
    });
}

// The instances for the six pixel types live in this library. Windows needs the export on the
// definition; elsewhere the declaration in the header carries the visibility.
#if defined(_WIN32)
#  define SETAPI_INSTANCE_API SETAPI_API
#else
#  define SETAPI_INSTANCE_API
#endif

template class SETAPI_INSTANCE_API ImageSet<unsigned char>;
template class SETAPI_INSTANCE_API ImageSet<unsigned short>;
template class SETAPI_INSTANCE_API ImageSet<int>;
template class SETAPI_INSTANCE_API ImageSet<unsigned int>;
template class SETAPI_INSTANCE_API ImageSet<float>;
template class SETAPI_INSTANCE_API ImageSet<double>;
template class SETAPI_INSTANCE_API RangedImageSet<unsigned char>;
template class SETAPI_INSTANCE_API RangedImageSet<unsigned short>;
template class SETAPI_INSTANCE_API RangedImageSet<int>;
template class SETAPI_INSTANCE_API RangedImageSet<unsigned int>;
template class SETAPI_INSTANCE_API RangedImageSet<float>;
template class SETAPI_INSTANCE_API RangedImageSet<double>;

} // namespace DataObjects
