#include "file/AttributeSection.h"

#include "file/ByteCoding.h"
#include "common/Crc32.h"
#include "file/FileError.h"
#include "file/FileFormat.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <cstring>
#include <limits>

namespace BufferApi {
namespace Private {
namespace BufferFile {
namespace {

// Size, kind and an empty name.
constexpr std::size_t kMinAttributeRecordBytes = 4 + 1 + 4;

bool IsArrayKind(unsigned kind)
{
    return kind == DATATYPE_DOUBLE || kind == DATATYPE_FLOAT || kind == DATATYPE_INT32 || kind == DATATYPE_WORD;
}

void EncodeList(ByteWriter& w, const AttributeStore& store)
{
    RTE_VERIFY(store.GetCount() <= std::numeric_limits<std::uint32_t>::max(), "Too many attributes for a buffer file");
    w.U32(std::uint32_t(store.GetCount()));
    for (std::size_t i = 0; i < store.GetCount(); ++i) {
        const I_AttributeBase& attribute = store.At(i);
        const std::size_t at = w.BeginRecord();
        if (attribute.IsString()) {
            w.U8(kAttributeText);
            w.Str(attribute.GetName());
            w.Str(static_cast<const I_AttributeString&>(attribute).GetValue());
        } else {
            const auto& array = static_cast<const I_AttributePlane&>(attribute);
            w.U8(std::uint8_t(array.GetDataType()));
            w.Str(attribute.GetName());
            w.U32(array.GetCount());
            if (array.GetCount() > 0)
                w.Elements(array.GetData(), array.GetCount(), GetDataTypeSize(array.GetDataType()));
        }
        w.EndRecord(at);
    }
}

template <typename T>
void SetArray(AttributeStore& store, const std::string& name, E_DataType type, const std::uint8_t* bytes,
              std::uint32_t count)
{
    std::vector<T> values(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t raw = LoadLE(bytes + std::size_t(i) * sizeof(T), sizeof(T));
        if constexpr (sizeof(T) == 8) {
            std::memcpy(&values[i], &raw, 8);
        } else if constexpr (sizeof(T) == 4) {
            const std::uint32_t narrow = std::uint32_t(raw);
            std::memcpy(&values[i], &narrow, 4);
        } else {
            const std::uint16_t narrow = std::uint16_t(raw);
            std::memcpy(&values[i], &narrow, 2);
        }
    }
    store.SetArray(name, count, type, values.empty() ? nullptr : values.data());
}

void DecodeList(ByteReader& section, const QString& owner, std::uint16_t minor, AttributeStore& store)
{
    const std::uint32_t count = section.Count(kMinAttributeRecordBytes, std::numeric_limits<std::uint32_t>::max(),
                                              QStringLiteral("attributes of ") + owner);
    for (std::uint32_t i = 0; i < count; ++i) {
        ByteReader r = section.Record(QStringLiteral("attribute ") + QString::number(i) + QStringLiteral(" of ") + owner);
        const unsigned kind = r.U8();
        const std::string name = r.Str();
        const auto fail = [&](const QString& what) {
            FailCorrupt(r.Path(), r.What() + QStringLiteral(": ") + what);
        };
        if (name.empty())
            fail(QStringLiteral("no name"));
        if (kind == kAttributeText) {
            store.SetString(name, r.Str());
            continue;
        }
        if (!IsArrayKind(kind)) {
            if (minor > kMinorVersion)
                continue; // a kind of a newer minor version: its record is skipped
            fail(QStringLiteral("unknown kind ") + QString::number(kind));
        }
        const E_DataType type = E_DataType(kind);
        const std::size_t elementSize = GetDataTypeSize(type);
        const std::uint32_t elements = r.U32();
        if (std::uint64_t(elements) * elementSize > r.Remaining())
            fail(QString::number(elements) + QStringLiteral(" elements cannot fit in ") + QString::number(r.Remaining()) +
                 QStringLiteral(" bytes"));
        const std::uint8_t* data = r.Take(elements * elementSize);
        switch (type) {
        case DATATYPE_DOUBLE: SetArray<double>(store, name, type, data, elements); break;
        case DATATYPE_FLOAT: SetArray<float>(store, name, type, data, elements); break;
        case DATATYPE_INT32: SetArray<std::int32_t>(store, name, type, data, elements); break;
        default: SetArray<std::uint16_t>(store, name, type, data, elements); break;
        }
    }
}

} // namespace

std::vector<std::uint8_t> EncodeAttributes(const I_Buffer& buffer)
{
    ByteWriter w;
    EncodeList(w, buffer.GetAttributeStore());
    for (unsigned i = 0; i < buffer.GetNumberOfFrames(); ++i)
        EncodeList(w, buffer.GetFrame(i)->GetAttributeStore());
    w.U32(Crc32(w.Bytes().data(), w.Size()));
    return std::move(w.Bytes());
}

void DecodeAttributes(const std::uint8_t* bytes, std::size_t size, std::uint16_t minor, I_Buffer& buffer,
                      const std::string& path)
{
    if (size < kChecksumBytes)
        FailCorrupt(path, QStringLiteral("attribute section of ") + QString::number(size) + QStringLiteral(" bytes"));
    const std::size_t checkedBytes = size - kChecksumBytes;
    if (Crc32(bytes, checkedBytes) != std::uint32_t(LoadLE(bytes + checkedBytes, 4)))
        FailCorrupt(path, QStringLiteral("attribute checksum mismatch"));
    ByteReader r(bytes, checkedBytes, path, QStringLiteral("the attribute section"));
    DecodeList(r, QStringLiteral("the buffer"), minor, buffer.GetAttributeStore());
    for (unsigned i = 0; i < buffer.GetNumberOfFrames(); ++i)
        DecodeList(r, QStringLiteral("frame ") + QString::number(i), minor, buffer.GetFrame(i)->GetAttributeStore());
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
