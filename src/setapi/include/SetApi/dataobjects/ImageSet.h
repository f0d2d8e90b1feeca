#pragma once
// The typed forms of ImageSetVariant: ImageSet<T> hands out Image<T>, RangedImageSet<T> restricts
// the set to the indices first, first + increment, ... up to last, and CreateImageSet picks the
// pixel type from the set's buffer 0. T is one of unsigned char, unsigned short, int,
// unsigned int, float and double.

#include <SetApi/dataobjects/ImageSetVariant.h>

#include <Algorithms/IndexRange.h>

namespace DataObjects {

template <typename T>
class ImageSet : public ImageSetVariant {
public:
    ImageSet(SetApi::I_Set& set, bool checkType);
    ImageSet(const SetApi::I_Set& set, bool checkType);
    ImageSet(const QString& path, bool createNew);

    // The image as Image<T>; an image of another pixel type raises RTE::VerificationFailed.
    std::unique_ptr<Image<T>> GetImage(unsigned index, unsigned frame = 0, unsigned plane = 0) const;
};

template <typename T>
class RangedImageSet : public ImageSet<T> {
public:
    // Checks the set type, then the range: RTE::VerificationFailed "increment is zero",
    // "end range is above set length" (last not below the set's size), "invalid data range"
    // (first above last), in this order.
    RangedImageSet(const SetApi::I_Set& set, const Algorithms::IndexRange& range);
    // Opens or creates as ImageSetVariant(path, createNew) does and keeps the range unchecked: a
    // range beyond the set's end fails only when such a buffer is loaded.
    RangedImageSet(const QString& path, const Algorithms::IndexRange& range, bool createNew);

    const Algorithms::IndexRange& GetRange() const { return m_range; }
    // (last - first) / increment + 1.
    unsigned GetSize() const override;

protected:
    // Buffer first + increment * index of the set.
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override;

private:
    Algorithms::IndexRange m_range;
};

// Both refuse an empty set (RTE::VerificationFailed "Empty set") and pick the pixel type from the
// element type of buffer 0: RTE::Exception "RGB image set is not supported" for code 2 and
// "Unknown set type" for a code outside 1 to 7. The set form checks the range (see
// RangedImageSet); the path form first opens the set (RTE::VerificationFailed
// "Could not open set <path>") and keeps the range unchecked.
SETAPI_API std::unique_ptr<ImageSetVariant> CreateImageSet(const SetApi::I_Set& set, const Algorithms::IndexRange& range);
SETAPI_API std::unique_ptr<ImageSetVariant> CreateImageSet(const QString& path, const Algorithms::IndexRange& range,
                                                           bool createNew);

extern template class SETAPI_API ImageSet<unsigned char>;
extern template class SETAPI_API ImageSet<unsigned short>;
extern template class SETAPI_API ImageSet<int>;
extern template class SETAPI_API ImageSet<unsigned int>;
extern template class SETAPI_API ImageSet<float>;
extern template class SETAPI_API ImageSet<double>;
extern template class SETAPI_API RangedImageSet<unsigned char>;
extern template class SETAPI_API RangedImageSet<unsigned short>;
extern template class SETAPI_API RangedImageSet<int>;
extern template class SETAPI_API RangedImageSet<unsigned int>;
extern template class SETAPI_API RangedImageSet<float>;
extern template class SETAPI_API RangedImageSet<double>;

} // namespace DataObjects
