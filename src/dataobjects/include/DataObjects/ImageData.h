#pragma once
// Pixels alone: width * height elements, rows packed. ImageDataVariant is the pixel-type-neutral
// base; ImageData<T> holds the pixels for unsigned char, unsigned short, int, unsigned int, float
// and double.

#include <DataObjects/Export.h>
#include <DataObjects/PixelType.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API ImageDataVariant {
public:
    virtual ~ImageDataVariant();
    virtual BufferApi::E_DataType GetDataType() const = 0;
    virtual unsigned GetWidth() const = 0;
    virtual unsigned GetHeight() const = 0;
    virtual void* GetRawData() = 0;
    virtual const void* GetRawData() const = 0;
    virtual std::unique_ptr<ImageDataVariant> CloneData() const = 0;

    std::size_t GetPixelCount() const { return std::size_t(GetWidth()) * GetHeight(); }

protected:
    ImageDataVariant() = default;
    ImageDataVariant(const ImageDataVariant&) = default;
    ImageDataVariant& operator=(const ImageDataVariant&) = default;
};

template <typename T>
class ImageData : public ImageDataVariant {
public:
    using PixelType = T;

    ImageData() = default;
    ImageData(unsigned width, unsigned height, T value = T())
        : m_width(width), m_height(height), m_pixels(std::size_t(width) * height, value)
    {
    }

    BufferApi::E_DataType GetDataType() const override { return PixelTypeOf<T>::value; }
    unsigned GetWidth() const override { return m_width; }
    unsigned GetHeight() const override { return m_height; }
    void* GetRawData() override { return m_pixels.data(); }
    const void* GetRawData() const override { return m_pixels.data(); }
    std::unique_ptr<ImageDataVariant> CloneData() const override { return std::make_unique<ImageData>(*this); }

    T* GetData() { return m_pixels.data(); }
    const T* GetData() const { return m_pixels.data(); }
    // No range check.
    T& operator()(unsigned x, unsigned y) { return m_pixels[std::size_t(y) * m_width + x]; }
    const T& operator()(unsigned x, unsigned y) const { return m_pixels[std::size_t(y) * m_width + x]; }

    bool operator==(const ImageData& other) const
    {
        return m_width == other.m_width && m_height == other.m_height && m_pixels == other.m_pixels;
    }
    bool operator!=(const ImageData& other) const { return !(*this == other); }

private:
    unsigned m_width = 0;
    unsigned m_height = 0;
    std::vector<T> m_pixels;
};

extern template class DATAOBJECTS_API ImageData<unsigned char>;
extern template class DATAOBJECTS_API ImageData<unsigned short>;
extern template class DATAOBJECTS_API ImageData<int>;
extern template class DATAOBJECTS_API ImageData<unsigned int>;
extern template class DATAOBJECTS_API ImageData<float>;
extern template class DATAOBJECTS_API ImageData<double>;

} // namespace DataObjects
