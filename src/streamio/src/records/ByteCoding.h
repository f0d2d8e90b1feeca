#pragma once
// Little-endian fields of the side-stream layouts: a writer that appends fields to a byte vector
// and a reader that takes them from a byte range and refuses to go past its end. Doubles travel as
// their 64 bits, so every value (NaN payloads, -0.0) comes back as it went in. Texts are a u32 byte
// count followed by that many bytes of UTF-8.

#include "records/StreamFailure.h"

#include <common/ByteOrder.h>

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace SetApi {
namespace Private {
namespace Records {

class ByteWriter {
public:
    explicit ByteWriter(std::vector<std::uint8_t>& bytes) : m_bytes(bytes) {}

    std::size_t Position() const { return m_bytes.size(); }
    void U8(std::uint8_t value) { m_bytes.push_back(value); }
    void U16(std::uint16_t value) { Le(value, 2); }
    void U32(std::uint32_t value) { Le(value, 4); }
    void U64(std::uint64_t value) { Le(value, 8); }
    void F64(double value)
    {
        std::uint64_t bits;
        std::memcpy(&bits, &value, 8);
        Le(bits, 8);
    }
    void F32(float value)
    {
        std::uint32_t bits;
        std::memcpy(&bits, &value, 4);
        Le(bits, 4);
    }
    // A u32 byte count and the UTF-8 bytes; the caller makes sure the text fits a u32.
    void Str(const QByteArray& utf8)
    {
        U32(static_cast<std::uint32_t>(utf8.size()));
        Bytes(utf8.constData(), static_cast<std::size_t>(utf8.size()));
    }
    void Bytes(const void* data, std::size_t size)
    {
        if (size == 0)
            return;
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + size);
        std::memcpy(m_bytes.data() + at, data, size);
    }
    // Overwrites a u32 written earlier at `position`.
    void PatchU32(std::size_t position, std::uint32_t value)
    {
        BufferApi::Private::StoreLE(value, m_bytes.data() + position, 4);
    }

private:
    void Le(std::uint64_t value, unsigned count)
    {
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + count);
        BufferApi::Private::StoreLE(value, m_bytes.data() + at, count);
    }
    std::vector<std::uint8_t>& m_bytes;
};

// Reads fields from [data, data + size). A field that would run past the end raises
// "<kind> '<path>' is corrupt (<context>: ... runs past its end)".
class ByteReader {
public:
    ByteReader(const std::uint8_t* data, std::size_t size, const StreamLabel& label, const QString& context)
        : m_data(data), m_size(size), m_label(label), m_context(context)
    {
    }

    std::size_t Remaining() const { return m_size - m_position; }
    std::size_t Position() const { return m_position; }

    std::uint8_t U8() { return static_cast<std::uint8_t>(Le(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Le(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Le(4)); }
    std::uint64_t U64() { return Le(8); }
    double F64()
    {
        const std::uint64_t bits = Le(8);
        double value;
        std::memcpy(&value, &bits, 8);
        return value;
    }
    // A text of at most the remaining bytes; invalid UTF-8 becomes replacement characters.
    QString Str()
    {
        const std::uint32_t bytes = U32();
        const std::uint8_t* p = Take(bytes, "text");
        return QString::fromUtf8(reinterpret_cast<const char*>(p), static_cast<qsizetype>(bytes));
    }
    // `count` bytes from here on, checked to lie inside the range.
    const std::uint8_t* Take(std::uint64_t count, const char* what)
    {
        if (count > Remaining())
            Overrun(what, count);
        const std::uint8_t* p = m_data + m_position;
        m_position += static_cast<std::size_t>(count);
        return p;
    }
    // `count` elements of `elementBytes` each, checked without overflow.
    const std::uint8_t* TakeElements(std::uint64_t count, unsigned elementBytes, const char* what)
    {
        if (count > Remaining() / elementBytes)
            Overrun(what, count * elementBytes);
        return Take(count * elementBytes, what);
    }
    [[noreturn]] void Corrupt(const QString& what) const
    {
        FailCorrupt(m_label, m_context + QStringLiteral(": ") + what);
    }

private:
    std::uint64_t Le(unsigned count)
    {
        return BufferApi::Private::LoadLE(Take(count, "field"), count);
    }
    [[noreturn]] void Overrun(const char* what, std::uint64_t count) const
    {
        Corrupt(QStringLiteral("%1 of %2 bytes at byte %3 runs past its end (%4 bytes left)")
                    .arg(QLatin1String(what))
                    .arg(count)
                    .arg(m_position)
                    .arg(Remaining()));
    }

    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_position = 0;
    const StreamLabel& m_label;
    QString m_context;
};

} // namespace Records
} // namespace Private
} // namespace SetApi
