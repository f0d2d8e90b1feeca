#include "attributes/AttributeRecord.h"

#include "records/ByteCoding.h"

#include <common/ByteOrder.h>

#include <cstring>
#include <vector>

namespace SetApi {
namespace Private {
namespace Attributes {

using Records::ByteReader;

const char* const FormatDescription =
    "Attribute stream 1.0: per image one checksummed record of named texts and number arrays, "
    "found through an index";

const Records::StreamFormat& StreamFormat()
{
    static const Records::StreamFormat format{Records::MakeMagic('A', 'T'), Records::MakeMagic('A', 'X'),
                                              QStringLiteral("attr"), QStringLiteral("Attribute stream"),
                                              QStringLiteral("attribute stream")};
    return format;
}

namespace {

struct Item {
    Kind kind;
    QString name;
    QString text;
    const std::uint8_t* elements = nullptr;
    std::uint32_t count = 0;
};

static_assert(sizeof(int) == 4 && sizeof(unsigned short) == 2 && sizeof(float) == 4 && sizeof(double) == 8,
              "attribute arrays are stored as int32, uint16, float and double");

template <std::size_t N> struct Bits;
template <> struct Bits<2> { using type = std::uint16_t; };
template <> struct Bits<4> { using type = std::uint32_t; };
template <> struct Bits<8> { using type = std::uint64_t; };

// The elements of an array, converted from little-endian into memory suitably aligned for T.
template <class T>
std::vector<T> Elements(const Item& item)
{
    using B = typename Bits<sizeof(T)>::type;
    std::vector<T> values(item.count);
    for (std::uint32_t i = 0; i < item.count; ++i) {
        const auto bits =
            static_cast<B>(BufferApi::Private::LoadLE(item.elements + std::size_t(i) * sizeof(T), sizeof(T)));
        std::memcpy(&values[i], &bits, sizeof(T));
    }
    return values;
}

unsigned ElementBytes(std::uint8_t kind)
{
    switch (kind) {
    case Double:
        return 8;
    case Float:
    case Int32:
        return 4;
    case Word:
        return 2;
    default:
        return 0;
    }
}

} // namespace

void DecodeAttributes(const std::uint8_t* payload, std::size_t bytes, const Records::StreamLabel& label,
                      std::uint32_t image, RTE::I_AttributesSink& sink)
{
    ByteReader in(payload, bytes, label, QStringLiteral("record of image %1").arg(image));
    const std::uint32_t count = in.U32();
    // Each attribute takes at least a kind, a name length and a value length: no list longer than
    // the record can hold is reserved.
    if (count > in.Remaining() / 9)
        in.Corrupt(QStringLiteral("%1 attributes cannot fit in %2 bytes").arg(count).arg(in.Remaining()));
    std::vector<Item> items;
    items.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        Item item;
        const std::uint8_t kind = in.U8();
        item.name = in.Str();
        if (kind == Text) {
            item.text = in.Str();
        } else if (const unsigned size = ElementBytes(kind)) {
            item.count = in.U32();
            item.elements = in.TakeElements(item.count, size, "array");
        } else {
            in.Corrupt(QStringLiteral("attribute %1 has the unknown kind %2").arg(i).arg(kind));
        }
        item.kind = static_cast<Kind>(kind);
        items.push_back(std::move(item));
    }
    // Bytes behind the list are room for a newer minor version and are not read.

    for (const Item& item : items) {
        switch (item.kind) {
        case Text:
            sink.Add(item.name, item.text);
            break;
        case Double: {
            const auto values = Elements<double>(item);
            sink.AddArray(item.name, values.size(), values.data());
            break;
        }
        case Float: {
            const auto values = Elements<float>(item);
            sink.AddArray(item.name, values.size(), values.data());
            break;
        }
        case Int32: {
            const auto values = Elements<int>(item);
            sink.AddArray(item.name, values.size(), values.data());
            break;
        }
        case Word: {
            const auto values = Elements<unsigned short>(item);
            sink.AddArray(item.name, values.size(), values.data());
            break;
        }
        }
    }
}

} // namespace Attributes
} // namespace Private
} // namespace SetApi
