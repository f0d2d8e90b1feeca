#pragma once
// A mask of an image plane: one byte per pixel, non-zero meaning the pixel is valid. Rows are
// packed, width * height bytes.

#include <DataObjects/Export.h>

#include <cstddef>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API Mask {
public:
    Mask() = default;
    // Every byte set to `value` (1: all valid).
    Mask(unsigned width, unsigned height, unsigned char value = 1);

    unsigned GetWidth() const { return m_width; }
    unsigned GetHeight() const { return m_height; }
    std::size_t GetByteSize() const { return m_bytes.size(); }
    unsigned char* GetData() { return m_bytes.data(); }
    const unsigned char* GetData() const { return m_bytes.data(); }
    // No range check.
    unsigned char& operator()(unsigned x, unsigned y) { return m_bytes[std::size_t(y) * m_width + x]; }
    unsigned char operator()(unsigned x, unsigned y) const { return m_bytes[std::size_t(y) * m_width + x]; }
    bool IsValid(unsigned x, unsigned y) const { return (*this)(x, y) != 0; }
    void Fill(unsigned char value);
    // True when no byte is zero: such a mask masks nothing.
    bool IsAllValid() const;

    bool operator==(const Mask& other) const
    {
        return m_width == other.m_width && m_height == other.m_height && m_bytes == other.m_bytes;
    }
    bool operator!=(const Mask& other) const { return !(*this == other); }

private:
    unsigned m_width = 0;
    unsigned m_height = 0;
    std::vector<unsigned char> m_bytes;
};

} // namespace DataObjects
