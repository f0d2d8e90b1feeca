#pragma once
// An image plane: pixels with a mask, x, y and intensity scales, attributes and scalar fields.
// ImageVariant is the pixel-type-neutral base; code that needs the pixel type finds it by
// dynamic_cast to Image<T> (unsigned char, unsigned short, int, unsigned int, float, double).

#include <DataObjects/C_Attributes.h>
#include <DataObjects/ImageData.h>
#include <DataObjects/LinearScale.h>
#include <DataObjects/Mask.h>
#include <DataObjects/ScalarFields.h>

#include <memory>
#include <utility>

namespace DataObjects {

class DATAOBJECTS_API ImageVariant {
public:
    virtual ~ImageVariant();
    virtual BufferApi::E_DataType GetDataType() const = 0;
    virtual ImageDataVariant& GetImageData() = 0;
    virtual const ImageDataVariant& GetImageData() const = 0;
    virtual std::unique_ptr<ImageVariant> Clone() const = 0;

    unsigned GetWidth() const { return GetImageData().GetWidth(); }
    unsigned GetHeight() const { return GetImageData().GetHeight(); }

    // Of the image's size; all valid unless set otherwise.
    Mask& GetMask() { return m_mask; }
    const Mask& GetMask() const { return m_mask; }
    // A mask of another size than the image raises RTE::VerificationFailed.
    void SetMask(Mask mask);

    const LinearScale& GetScaleX() const { return m_scaleX; }
    const LinearScale& GetScaleY() const { return m_scaleY; }
    const LinearScale& GetScaleI() const { return m_scaleI; }
    void SetScaleX(const LinearScale& scale) { m_scaleX = scale; }
    void SetScaleY(const LinearScale& scale) { m_scaleY = scale; }
    void SetScaleI(const LinearScale& scale) { m_scaleI = scale; }

    C_Attributes& GetAttributes() { return m_attributes; }
    const C_Attributes& GetAttributes() const { return m_attributes; }
    ScalarFields& GetScalarFields() { return m_scalarFields; }
    const ScalarFields& GetScalarFields() const { return m_scalarFields; }

protected:
    ImageVariant(unsigned width, unsigned height) : m_mask(width, height) {}
    ImageVariant(const ImageVariant&) = default;
    ImageVariant& operator=(const ImageVariant&) = default;
    ImageVariant(ImageVariant&&) noexcept = default;
    ImageVariant& operator=(ImageVariant&&) noexcept = default;

private:
    Mask m_mask;
    LinearScale m_scaleX;
    LinearScale m_scaleY;
    LinearScale m_scaleI;
    C_Attributes m_attributes;
    ScalarFields m_scalarFields;
};

template <typename T>
class Image : public ImageVariant {
public:
    using PixelType = T;

    Image() : ImageVariant(0, 0) {}
    Image(unsigned width, unsigned height, T value = T()) : ImageVariant(width, height), m_data(width, height, value) {}
    explicit Image(ImageData<T> data) : ImageVariant(data.GetWidth(), data.GetHeight()), m_data(std::move(data)) {}
    Image(const Image&) = default;
    Image& operator=(const Image&) = default;
    Image(Image&&) noexcept = default;
    Image& operator=(Image&&) noexcept = default;

    BufferApi::E_DataType GetDataType() const override { return PixelTypeOf<T>::value; }
    ImageDataVariant& GetImageData() override { return m_data; }
    const ImageDataVariant& GetImageData() const override { return m_data; }
    std::unique_ptr<ImageVariant> Clone() const override { return std::make_unique<Image>(*this); }

    ImageData<T>& GetData() { return m_data; }
    const ImageData<T>& GetData() const { return m_data; }
    T* GetPixels() { return m_data.GetData(); }
    const T* GetPixels() const { return m_data.GetData(); }
    // No range check.
    T& operator()(unsigned x, unsigned y) { return m_data(x, y); }
    const T& operator()(unsigned x, unsigned y) const { return m_data(x, y); }

private:
    ImageData<T> m_data;
};

extern template class DATAOBJECTS_API Image<unsigned char>;
extern template class DATAOBJECTS_API Image<unsigned short>;
extern template class DATAOBJECTS_API Image<int>;
extern template class DATAOBJECTS_API Image<unsigned int>;
extern template class DATAOBJECTS_API Image<float>;
extern template class DATAOBJECTS_API Image<double>;

} // namespace DataObjects
