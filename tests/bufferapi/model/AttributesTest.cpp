#include <BufferApi/Attributes.h>
#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace BufferApi;

namespace {
std::unique_ptr<I_Buffer> BufferWithFrames(unsigned frames)
{
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    for (unsigned f = 0; f < frames; ++f)
        buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_BYTE, 1, 1, 1)));
    return buffer;
}

std::string StringOf(const AttributeStore& store, const std::string& name)
{
    std::string value;
    if (!Attributes::GetString(store.Find(name), value))
        return "(none)";
    return value;
}
} // namespace

TEST(AttributesTest, ViewsReadWriteListRemove)
{
    auto buffer = BufferWithFrames(1);
    C_BufferAttributes global(buffer.get());
    C_FrameAttributes frame(buffer->GetFrame(0));
    EXPECT_TRUE(global.SetString("Camera", "A"));
    EXPECT_FALSE(global.SetString("", "A"));
    const float floats[] = {0.5f};
    EXPECT_TRUE(frame.SetArray("Gain", 1, DATATYPE_FLOAT, floats));
    EXPECT_FALSE(frame.SetArray("Gain", 1, DATATYPE_BYTE, floats));

    EXPECT_EQ(global.GetString("Camera"), "A");
    EXPECT_EQ(global.GetString("Missing"), "");
    EXPECT_EQ(frame.GetString("Gain"), "0.5");
    EXPECT_EQ(buffer->GetFrame(0)->GetAttributeStore().GetCount(), 1u);
    EXPECT_EQ(buffer->GetAttributeStore().GetCount(), 1u);
    ASSERT_NE(global.Get("Camera"), nullptr);
    EXPECT_TRUE(global.Get("Camera")->IsString());

    global.SetString("Lens", "x");
    std::vector<std::string> names = {"stale"};
    std::vector<const I_AttributeBase*> attributes = {nullptr, nullptr};
    global.GetList(names, attributes);
    EXPECT_EQ(names, (std::vector<std::string>{"Camera", "Lens"}));
    ASSERT_EQ(attributes.size(), 2u);
    EXPECT_EQ(attributes[1], global.Get("Lens"));

    EXPECT_TRUE(global.Remove("Camera"));
    EXPECT_FALSE(global.Remove("Camera"));
    EXPECT_THROW(C_BufferAttributes(nullptr), RTE::VerificationFailed);
    EXPECT_THROW(C_FrameAttributes(nullptr), RTE::VerificationFailed);
}

TEST(AttributesTest, ViewsAsSinksStoreUtf8AndArrays)
{
    auto buffer = BufferWithFrames(1);
    C_FrameAttributes view(buffer->GetFrame(0));
    RTE::I_AttributesSink& sink = view;
    sink.Add(QStringLiteral("Ort"), QStringLiteral("München °C"));
    EXPECT_EQ(view.GetString("Ort"), "M\xC3\xBCnchen \xC2\xB0" "C");
    sink.Add(QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e"), QStringLiteral("1"));
    EXPECT_NE(view.Get("Gr\xC3\xB6\xC3\x9F" "e"), nullptr);

    const double d[] = {1.0, -2.5};
    const float f[] = {3.25f};
    const int i[] = {-7, 8};
    const unsigned short w[] = {65535};
    sink.AddArray(QStringLiteral("d"), 2, d);
    sink.AddArray(QStringLiteral("f"), 1, f);
    sink.AddArray(QStringLiteral("i"), 2, i);
    sink.AddArray(QStringLiteral("w"), 1, w);
    sink.AddArray(QStringLiteral("none"), 0, static_cast<const double*>(nullptr));
    const auto type = [&](const char* name) {
        return dynamic_cast<const I_AttributePlane&>(*view.Get(name)).GetDataType();
    };
    EXPECT_EQ(type("d"), DATATYPE_DOUBLE);
    EXPECT_EQ(type("f"), DATATYPE_FLOAT);
    EXPECT_EQ(type("i"), DATATYPE_INT32);
    EXPECT_EQ(type("w"), DATATYPE_WORD);
    EXPECT_EQ(view.GetString("i"), "-7;8");
    EXPECT_EQ(view.GetString("none"), "");

    EXPECT_THROW(sink.Add(QString(), QStringLiteral("v")), RTE::VerificationFailed);
    EXPECT_THROW(sink.AddArray(QString(), 1, d), RTE::VerificationFailed);
    EXPECT_THROW(sink.AddArray(QStringLiteral("x"), 3, static_cast<const int*>(nullptr)), RTE::VerificationFailed);
    if (sizeof(std::size_t) > sizeof(unsigned)) {
        EXPECT_THROW(sink.AddArray(QStringLiteral("x"), std::size_t(std::numeric_limits<unsigned>::max()) + 1, d),
                     RTE::VerificationFailed);
    }
    EXPECT_EQ(view.Get("x"), nullptr);
}

TEST(AttributesTest, GetStringFormatsArrays)
{
    AttributeStore store;
    store.SetString("text", "a;b = c");
    const double doubles[] = {0.1, 1.0 / 3.0, -0.0, 1e300, 5e-324, 100.0, 2.5};
    store.SetArray("d", 7, DATATYPE_DOUBLE, doubles);
    const float floats[] = {0.1f, 1.0f / 3.0f, 16777216.0f};
    store.SetArray("f", 3, DATATYPE_FLOAT, floats);
    const int ints[] = {-2147483647 - 1, 0, 2147483647};
    store.SetArray("i", 3, DATATYPE_INT32, ints);
    const unsigned short words[] = {0, 65535};
    store.SetArray("w", 2, DATATYPE_WORD, words);

    EXPECT_EQ(StringOf(store, "text"), "a;b = c");
    EXPECT_EQ(StringOf(store, "d"), "0.1;0.3333333333333333;-0;1e+300;5e-324;100;2.5");
    EXPECT_EQ(StringOf(store, "f"), "0.1;0.33333334;16777216");
    EXPECT_EQ(StringOf(store, "i"), "-2147483648;0;2147483647");
    EXPECT_EQ(StringOf(store, "w"), "0;65535");
    std::string value = "old";
    EXPECT_FALSE(Attributes::GetString(nullptr, value));
    EXPECT_EQ(value, "");
}

TEST(AttributesTest, GetStringRoundTripsEveryDouble)
{
    std::vector<double> values;
    unsigned long long state = 88172645463325252ull;
    for (int n = 0; n < 2000; ++n) {
        state ^= state << 13, state ^= state >> 7, state ^= state << 17;
        double v;
        std::memcpy(&v, &state, sizeof v);
        if (std::isfinite(v))
            values.push_back(v);
    }
    values.push_back(std::numeric_limits<double>::max());
    values.push_back(std::numeric_limits<double>::denorm_min());
    AttributeStore store;
    store.SetArray("d", unsigned(values.size()), DATATYPE_DOUBLE, values.data());
    const std::string text = StringOf(store, "d");
    std::size_t start = 0;
    for (double expected : values) {
        const std::size_t end = text.find(';', start);
        const std::string element = text.substr(start, end - start);
        EXPECT_EQ(std::strtod(element.c_str(), nullptr), expected) << element;
        start = end + 1;
    }
}

TEST(AttributesTest, CopyFlags)
{
    const auto make = [] {
        auto source = BufferWithFrames(2);
        source->GetAttributeStore().SetString("g", "source");
        source->GetAttributeStore().SetString("gNew", "source");
        source->GetFrame(0)->GetAttributeStore().SetString("f", "source0");
        source->GetFrame(1)->GetAttributeStore().SetString("f", "source1");
        return source;
    };
    const auto target = [] {
        auto buffer = BufferWithFrames(1); // fewer frames than the source
        buffer->GetAttributeStore().SetString("g", "target");
        buffer->GetFrame(0)->GetAttributeStore().SetString("f", "target0");
        return buffer;
    };
    auto source = make();

    auto t = target();
    Attributes::Copy(t.get(), source.get(), true, false, false);
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "g"), "target");
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "gNew"), "source");
    EXPECT_EQ(StringOf(t->GetFrame(0)->GetAttributeStore(), "f"), "target0");

    t = target();
    Attributes::Copy(t.get(), source.get(), true, false, true);
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "g"), "source");

    t = target();
    Attributes::Copy(t.get(), source.get(), false, true, true);
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "g"), "target");
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "gNew"), "(none)");
    EXPECT_EQ(StringOf(t->GetFrame(0)->GetAttributeStore(), "f"), "source0");

    t = target();
    Attributes::Copy(t.get(), source.get(), false, true, false);
    EXPECT_EQ(StringOf(t->GetFrame(0)->GetAttributeStore(), "f"), "target0");

    t = target();
    Attributes::Copy(t.get(), source.get(), false, false, true);
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "g"), "target");
    EXPECT_EQ(StringOf(t->GetFrame(0)->GetAttributeStore(), "f"), "target0");

    // Copies are independent of the source.
    t = target();
    Attributes::Copy(t.get(), source.get(), true, true, true);
    source->GetAttributeStore().SetString("gNew", "changed");
    EXPECT_EQ(StringOf(t->GetAttributeStore(), "gNew"), "source");

    Attributes::Copy(source.get(), source.get(), true, true, true);
    EXPECT_EQ(source->GetAttributeStore().GetCount(), 2u);
    EXPECT_THROW(Attributes::Copy(nullptr, source.get(), true, true, true), RTE::VerificationFailed);
    EXPECT_THROW(Attributes::Copy(source.get(), nullptr, true, true, true), RTE::VerificationFailed);
}

TEST(AttributesTest, PathValues)
{
    struct Case {
        std::string path;
        std::vector<std::pair<std::string, std::string>> expected;
    };
    const std::vector<Case> cases = {
        {"Run_Pressure=3.5/B00001_T=20.im7", {{"Pressure", "3.5"}, {"T", "20"}}},
        {"C:\\data\\Flow=2.25", {{"Flow", "2.25"}}},                 // a decimal value at the end keeps its digits
        {"/data/Speed=10_Speed=12/set", {{"Speed", "12"}}},          // a later part wins
        {"/data/Mode=a=b/x.set", {{"Mode", "a=b"}}},                 // the first '=' splits
        {"/data/=5_Empty=/Name=v1.vc7", {{"Empty", ""}, {"Name", "v1"}}},
        {"/data/Temp=20.5.im7", {{"Temp", "20.5"}}},
        {"", {}},
        {"plain/path/without/values", {}},
        {"///___\\\\", {}},
    };
    for (const Case& c : cases) {
        auto buffer = BufferWithFrames(0);
        buffer->GetAttributeStore().SetString("Existing", "kept");
        CreateAttributesFromPathValues(buffer.get(), c.path);
        const AttributeStore& store = buffer->GetAttributeStore();
        ASSERT_EQ(store.GetCount(), c.expected.size() + 1) << c.path;
        for (std::size_t i = 0; i < c.expected.size(); ++i) {
            EXPECT_EQ(store.At(i + 1).GetName(), c.expected[i].first) << c.path;
            EXPECT_EQ(StringOf(store, c.expected[i].first), c.expected[i].second) << c.path;
        }
    }
    EXPECT_THROW(CreateAttributesFromPathValues(nullptr, "A=1"), RTE::VerificationFailed);
}
