#pragma once
// Test helpers for attribute streams: an attribute as a value, a sink that records what it is
// given, and a replay of recorded attributes into any sink (a writer).

#include <RTE/AttributesSink.h>

#include <QString>

#include <cstring>
#include <ostream>
#include <vector>

namespace StreamTest {

struct Attribute {
    enum Kind { Text, Double, Float, Int, Word };
    Kind kind = Text;
    QString name;
    QString text;
    std::vector<double> doubles;
    std::vector<float> floats;
    std::vector<int> ints;
    std::vector<unsigned short> words;

    static Attribute MakeText(const QString& name, const QString& text)
    {
        Attribute a;
        a.name = name;
        a.text = text;
        return a;
    }
    static Attribute MakeDoubles(const QString& name, std::vector<double> v)
    {
        return Make(Double, name, v, &Attribute::doubles);
    }
    static Attribute MakeFloats(const QString& name, std::vector<float> v)
    {
        return Make(Float, name, v, &Attribute::floats);
    }
    static Attribute MakeInts(const QString& name, std::vector<int> v) { return Make(Int, name, v, &Attribute::ints); }
    static Attribute MakeWords(const QString& name, std::vector<unsigned short> v)
    {
        return Make(Word, name, v, &Attribute::words);
    }

    // Numbers compare by their bits, so NaN payloads and -0.0 count.
    bool operator==(const Attribute& other) const
    {
        return kind == other.kind && name == other.name && text == other.text && SameBits(doubles, other.doubles) &&
               SameBits(floats, other.floats) && ints == other.ints && words == other.words;
    }

private:
    template <class T>
    static Attribute Make(Kind kind, const QString& name, std::vector<T>& values, std::vector<T> Attribute::*member)
    {
        Attribute a;
        a.kind = kind;
        a.name = name;
        a.*member = std::move(values);
        return a;
    }
    template <class T>
    static bool SameBits(const std::vector<T>& a, const std::vector<T>& b)
    {
        return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
    }
};

inline std::ostream& operator<<(std::ostream& out, const Attribute& a)
{
    out << "{" << a.kind << " '" << a.name.toStdString() << "' ";
    if (a.kind == Attribute::Text)
        out << "'" << a.text.toStdString() << "'";
    else
        out << (a.doubles.size() + a.floats.size() + a.ints.size() + a.words.size()) << " elements";
    return out << "}";
}

using Record = std::vector<Attribute>;

class RecordingSink : public RTE::I_AttributesSink {
public:
    Record attributes;

    void Add(const QString& name, const QString& value) override
    {
        attributes.push_back(Attribute::MakeText(name, value));
    }
    void AddArray(const QString& name, std::size_t count, const double* values) override
    {
        attributes.push_back(Attribute::MakeDoubles(name, std::vector<double>(values, values + count)));
    }
    void AddArray(const QString& name, std::size_t count, const float* values) override
    {
        attributes.push_back(Attribute::MakeFloats(name, std::vector<float>(values, values + count)));
    }
    void AddArray(const QString& name, std::size_t count, const int* values) override
    {
        attributes.push_back(Attribute::MakeInts(name, std::vector<int>(values, values + count)));
    }
    void AddArray(const QString& name, std::size_t count, const unsigned short* values) override
    {
        attributes.push_back(Attribute::MakeWords(name, std::vector<unsigned short>(values, values + count)));
    }
};

inline void Replay(const Record& record, RTE::I_AttributesSink& sink)
{
    for (const Attribute& a : record) {
        switch (a.kind) {
        case Attribute::Text:
            sink.Add(a.name, a.text);
            break;
        case Attribute::Double:
            sink.AddArray(a.name, a.doubles.size(), a.doubles.data());
            break;
        case Attribute::Float:
            sink.AddArray(a.name, a.floats.size(), a.floats.data());
            break;
        case Attribute::Int:
            sink.AddArray(a.name, a.ints.size(), a.ints.data());
            break;
        case Attribute::Word:
            sink.AddArray(a.name, a.words.size(), a.words.data());
            break;
        }
    }
}

} // namespace StreamTest
