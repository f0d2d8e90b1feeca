#include <DataObjects/Image.h>
#include <DataObjects/ImageData.h>

#include <RTE/Exception.h>

// The instances for the six pixel types live in this library. Windows needs the export on the
// definition; elsewhere the declaration in the header carries the visibility.
#if defined(_WIN32)
#  define DATAOBJECTS_INSTANCE_API DATAOBJECTS_API
#else
#  define DATAOBJECTS_INSTANCE_API
#endif

namespace DataObjects {

ImageDataVariant::~ImageDataVariant() = default;

ImageVariant::~ImageVariant() = default;

void ImageVariant::SetMask(Mask mask)
{
    RTE_VERIFY(mask.GetWidth() == GetWidth() && mask.GetHeight() == GetHeight(),
               "Mask size does not match the image size");
    m_mask = std::move(mask);
}

template class DATAOBJECTS_INSTANCE_API ImageData<unsigned char>;
template class DATAOBJECTS_INSTANCE_API ImageData<unsigned short>;
template class DATAOBJECTS_INSTANCE_API ImageData<int>;
template class DATAOBJECTS_INSTANCE_API ImageData<unsigned int>;
template class DATAOBJECTS_INSTANCE_API ImageData<float>;
template class DATAOBJECTS_INSTANCE_API ImageData<double>;

template class DATAOBJECTS_INSTANCE_API Image<unsigned char>;
template class DATAOBJECTS_INSTANCE_API Image<unsigned short>;
template class DATAOBJECTS_INSTANCE_API Image<int>;
template class DATAOBJECTS_INSTANCE_API Image<unsigned int>;
template class DATAOBJECTS_INSTANCE_API Image<float>;
template class DATAOBJECTS_INSTANCE_API Image<double>;

} // namespace DataObjects
