#pragma once
// Little-endian encoding of the buffer file's fields, byte by byte whatever the host's order, and
// a reader that checks every field against the bytes left before it takes it.

#include "common/ByteOrder.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {
namespace BufferFile {

class ByteWriter {
public:
    std::vector<std::uint8_t>& Bytes() { return m_bytes; }
    std::size_t Size() const { return m_bytes.size(); }

    void U8(std::uint8_t value) { m_bytes.push_back(value); }
    void U16(std::uint16_t value) { Put(value, 2); }
    void U32(std::uint32_t value) { Put(value, 4); }
    void U64(std::uint64_t value) { Put(value, 8); }
    void F64(double value)
    {
        std::uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        U64(bits);
    }
    // A u32 byte count and the bytes. Raises RTE::VerificationFailed above 4 GiB - 1.
    void Str(const std::string& text);
    void Raw(const void* data, std::size_t size)
    {
        if (size == 0)
            return;
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + size);
        std::memcpy(m_bytes.data() + at, data, size);
    }
    // Elements of `elementSize` bytes in host order, written little-endian.
    void Elements(const void* data, std::size_t count, std::size_t elementSize);

    // A record: BeginRecord reserves its u32 size, EndRecord fills in the bytes written since.
    std::size_t BeginRecord()
    {
        const std::size_t at = m_bytes.size();
        U32(0);
        return at;
    }
    void EndRecord(std::size_t at);
    void PatchU32(std::size_t at, std::uint32_t value) { Set(at, value, 4); }
    void PatchU64(std::size_t at, std::uint64_t value) { Set(at, value, 8); }

private:
    void Put(std::uint64_t value, unsigned bytes)
    {
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + bytes);
        Set(at, value, bytes);
    }
    void Set(std::size_t at, std::uint64_t value, unsigned bytes) { StoreLE(value, m_bytes.data() + at, bytes); }

    std::vector<std::uint8_t> m_bytes;
};

using Private::LoadLE;

// Reads fields from a range of bytes of the file at `path`. Running out of bytes raises
// RTE::Exception "Buffer file '<path>' is corrupt (<what> ends early)", where `what` names the
// record being read.
class ByteReader {
public:
    ByteReader(const std::uint8_t* data, std::size_t size, const std::string& path, QString what)
        : m_data(data), m_size(size), m_path(path), m_what(std::move(what))
    {
    }

    std::size_t Remaining() const { return m_size - m_position; }
    const QString& What() const { return m_what; }
    const std::string& Path() const { return m_path; }

    std::uint8_t U8() { return std::uint8_t(LoadLE(Take(1), 1)); }
    std::uint16_t U16() { return std::uint16_t(LoadLE(Take(2), 2)); }
    std::uint32_t U32() { return std::uint32_t(LoadLE(Take(4), 4)); }
    std::uint64_t U64() { return LoadLE(Take(8), 8); }
    double F64()
    {
        const std::uint64_t bits = U64();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::string Str()
    {
        const std::uint32_t length = U32();
        const std::uint8_t* bytes = Take(length);
        return std::string(reinterpret_cast<const char*>(bytes), length);
    }
    // `size` bytes, checked against the bytes left.
    const std::uint8_t* Take(std::size_t size);
    // The next record: reads its u32 size, checks it against the bytes left and returns a reader
    // of exactly that record; this reader moves behind it.
    ByteReader Record(const QString& what);
    // A count of items of at least `minItemBytes` each that must fit in the bytes left.
    std::uint32_t Count(std::size_t minItemBytes, std::uint64_t limit, const QString& items);

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_position = 0;
    const std::string& m_path;
    QString m_what;
};

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
