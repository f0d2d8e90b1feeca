#pragma once
// A set seen as a sequence of typed images, whatever their pixel type: buffers are loaded and
// turned into image objects, and image objects are turned into buffers and appended.
//
// The object either owns its set (made from a path) or refers to one it was handed, which must then
// outlive it. All work goes through the set's I_Set interface.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>

#include <DataObjects/Image.h>
#include <DataObjects/ImageBufferVariant.h>
#include <DataObjects/ImageData.h>
#include <DataObjects/ImageVolumeVariant.h>
#include <Math/Size3T.h>

#include <QString>

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

namespace DataObjects {

class ImageSetVariant;

// Walks the buffers of an ImageSetVariant by index; dereferencing loads the buffer as an
// ImageBufferVariant. Iterators compare by index alone.
class SETAPI_API ImageSetVariantIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::unique_ptr<ImageBufferVariant>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = value_type;

    ImageSetVariantIterator(const ImageSetVariant* set, unsigned index) : m_set(set), m_index(index) {}

    std::unique_ptr<ImageBufferVariant> operator*() const;
    ImageSetVariantIterator& operator++()
    {
        ++m_index;
        return *this;
    }
    ImageSetVariantIterator operator++(int)
    {
        ImageSetVariantIterator before = *this;
        ++m_index;
        return before;
    }
    bool operator==(const ImageSetVariantIterator& other) const { return m_index == other.m_index; }
    bool operator!=(const ImageSetVariantIterator& other) const { return m_index != other.m_index; }
    unsigned GetIndex() const { return m_index; }

private:
    const ImageSetVariant* m_set;
    unsigned m_index;
};

class SETAPI_API ImageSetVariant {
public:
    // Refers to the set without owning it. With `checkType` the set type must have the image bit
    // (0x100) or the recording bit (0x1000), else RTE::VerificationFailed "No image type input set".
    ImageSetVariant(SetApi::I_Set& set, bool checkType);
    ImageSetVariant(const SetApi::I_Set& set, bool checkType);
    // Owns the set of that path: an existing one is opened unless `createNew`; otherwise (or when
    // there is none) an image set is created, overwriting an existing one. Failures raise
    // RTE::VerificationFailed "Could not open set <path>" / "Could not create set <path>"; the type
    // check always runs.
    ImageSetVariant(const QString& path, bool createNew);
    // Shares the set (and its ownership).
    ImageSetVariant(const ImageSetVariant& other);
    ImageSetVariant& operator=(const ImageSetVariant& other);

    // For a non-empty set the size and frame count of buffer 0's structure; for an empty one
    // width 0, height 0, depth 1 and one frame.
    virtual void GetImageVolumeSize(Math::Size3T<unsigned>& size, unsigned& frameCount) const;
    virtual ~ImageSetVariant();
    virtual unsigned GetSize() const;
    virtual void AppendBuffer(const BufferApi::I_Buffer& buffer);

    // Reading. Indices are those of GetSize(); the images carry their masks.
    std::unique_ptr<ImageBufferVariant> operator[](unsigned index) const { return GetImageBufferVariant(index); }
    std::unique_ptr<ImageBufferVariant> GetImageBufferVariant(unsigned index) const;
    // A frame that is no image frame raises RTE::VerificationFailed
    // "Frame of buffer is not from type image".
    std::unique_ptr<ImageVariant> GetImageVariant(unsigned index, unsigned frame, unsigned plane) const;
    std::unique_ptr<ImageDataVariant> GetImageDataVariant(unsigned index, unsigned frame, unsigned plane) const;
    std::unique_ptr<ImageVolumeVariant> GetImageVolumeVariant(unsigned index, unsigned frame) const;

    bool IsEmpty() const { return GetSize() == 0; }
    SetApi::I_Set& GetSet() { return *m_set; }
    const SetApi::I_Set& GetSet() const { return *m_set; }
    // The parameter's value when the set is a C_Set, else the empty string.
    std::string GetParameter(const std::string& name) const;

    ImageSetVariantIterator begin() const { return ImageSetVariantIterator(this, 0); }
    ImageSetVariantIterator end() const { return ImageSetVariantIterator(this, GetSize()); }

    // Writing: each builds a buffer and appends it. A mask is stored only when some mask byte is
    // zero (over every plane and volume); image data carries none.
    void Append(const ImageVariant& image);
    void Append(ImageVariant&& image);
    void Append(const ImageDataVariant& data);
    void Append(ImageDataVariant&& data);
    void Append(const ImageVolumeVariant& volume);
    void Append(ImageVolumeVariant&& volume);
    void Append(const ImageBufferVariant& buffer);
    void Append(ImageBufferVariant&& buffer);
    // Only for a C_Set (C_Set::AddParameter); other sets ignore it.
    void AddParameter(const std::string& name, const std::string& value);
    // Removes every buffer of the set, from the highest index down to 0.
    void Clear();
    // Deletes the set from disk through C_SetFactory::Remove (the error text is dropped). The object
    // stays and refers to a closed set.
    bool Delete();

protected:
    virtual std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const;

private:
    std::shared_ptr<SetApi::I_Set> m_owner; // empty when the set was handed in
    SetApi::I_Set* m_set;
};

} // namespace DataObjects
