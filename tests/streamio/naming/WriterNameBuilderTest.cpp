// Stream prefixes: the forms of each reader type, and above all that no prefix begins the file
// names of another stream, since a repair deletes "<prefix>*.*".

#include <StreamIO/WriterNameBuilder.h>

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <QRegularExpression>

using SetApi::Private::WriterNameBuilder;

namespace {

const QString kFrame = "Core.Set.Recording.FrameReader";
const QString kMask = "Core.Set.Recording.MaskFrameReader";
const QString kScalar = "Core.Set.Recording.ScalarFieldFrameReader";
const QString kScale = "Core.Set.Recording.ScaleReader";
const QString kAttribute = "Core.Set.Recording.AttributeReader";
const QString kTrace = "Core.Set.Recording.TraceReader";

// What a recording of `frames` cameras with masks, one scalar field, scales and attributes per
// frame, global attributes, traces and a stream of a foreign kind asks for.
std::vector<QString> NamesOfRecording(WriterNameBuilder& builder, int frames)
{
    std::vector<QString> names;
    for (int f = 0; f < frames; ++f) {
        names.push_back(builder.NextName(kFrame));
        names.push_back(builder.NextName(kMask));
        names.push_back(builder.NextName(kScalar));
    }
    for (const QString& type : {kScale, kAttribute})
        for (int f = 0; f < frames; ++f)
            names.push_back(builder.NextName(type));
    names.push_back(builder.NextName(kAttribute));
    names.push_back(builder.NextName(kTrace));
    names.push_back(builder.NextName("Someone.Else.Reader"));
    return names;
}

// The files a repair would delete for a prefix, as its glob "<prefix>*.*" (ignoring case, as on
// Windows), must not include any file of another stream.
void ExpectApart(const std::vector<QString>& names)
{
    const QStringList suffixes{".ims", ".index.ims", ".attr", ".index.attr", ".scales", ".trc", ".index.trc",
                               "-0.sfn"};
    for (const QString& doomed : names) {
        const QRegularExpression glob("^" + QRegularExpression::escape(doomed) + ".*\\..*$",
                                      QRegularExpression::CaseInsensitiveOption);
        for (const QString& other : names) {
            if (other == doomed)
                continue;
            for (const QString& suffix : suffixes)
                EXPECT_FALSE(glob.match(other + suffix).hasMatch())
                    << "deleting " << doomed.toStdString() << "*.* removes " << (other + suffix).toStdString();
        }
    }
}

} // namespace

TEST(WriterNameBuilderTest, EachTypeHasItsWordAndRunningIndex)
{
    WriterNameBuilder builder;
    EXPECT_EQ(builder.NextName(kFrame), "Frame0_");
    EXPECT_EQ(builder.NextName(kFrame), "Frame1_");
    EXPECT_EQ(builder.NextName(kMask), "Mask0_");
    EXPECT_EQ(builder.NextName(kScalar), "ScalarField0_");
    EXPECT_EQ(builder.NextName(kScale), "Scales0_");
    EXPECT_EQ(builder.NextName(kAttribute), "Attributes0_");
    EXPECT_EQ(builder.NextName(kAttribute), "Attributes1_");
    EXPECT_EQ(builder.NextName(kTrace), "Traces0_");
    EXPECT_EQ(builder.NextName("Unknown"), "Stream0_");

    WriterNameBuilder cameras;
    cameras.SetFrameFilePrefix("Camera");
    cameras.SetIndexBase(1);
    EXPECT_EQ(cameras.NextName(kFrame), "Camera1_");
    EXPECT_EQ(cameras.NextName(kFrame), "Camera2_");
    EXPECT_EQ(cameras.NextName(kMask), "Mask0_");
}

TEST(WriterNameBuilderTest, PrefixesStayApartBeyondTenStreamsOfAType)
{
    WriterNameBuilder frames;
    const std::vector<QString> names = NamesOfRecording(frames, 12);
    EXPECT_EQ(names[3], "Frame1_");
    EXPECT_EQ(names[30], "Frame10_");
    ExpectApart(names);

    WriterNameBuilder cameras;
    cameras.SetFrameFilePrefix("Camera");
    cameras.SetIndexBase(1);
    ExpectApart(NamesOfRecording(cameras, 13));
}

TEST(WriterNameBuilderTest, AFramePrefixLikeAnotherWordSkipsWhatIsTaken)
{
    // Frame prefixes of the mask and scalar field writer contexts, one ending in digits, one in
    // another case: each name is given once and none begins another.
    for (const QString& prefix : {QString("Mask"), QString("ScalarField"), QString("Frame1"), QString("mask"),
                                  QString("Attributes"), QString("")}) {
        WriterNameBuilder builder;
        builder.SetFrameFilePrefix(prefix);
        std::vector<QString> names = NamesOfRecording(builder, 12);
        for (int i = 0; i < 12; ++i)
            names.push_back(builder.NextName(kFrame));
        ExpectApart(names);
    }
    // Restarting the frame numbering never repeats a name.
    WriterNameBuilder builder;
    EXPECT_EQ(builder.NextName(kFrame), "Frame0_");
    builder.SetIndexBase(0);
    EXPECT_EQ(builder.NextName(kFrame), "Frame1_");
}

TEST(WriterNameBuilderTest, UnusableFramePrefixesAreRefused)
{
    TestSupport::LogCapture log;
    WriterNameBuilder builder;
    for (const QString& bad : {QString("a/b"), QString("a\\b"), QString("C:"), QString("x*"), QString("tab\t")})
        EXPECT_THROW(builder.SetFrameFilePrefix(bad), RTE::VerificationFailed) << bad.toStdString();

    // A word that an earlier name begins can give no free name.
    EXPECT_EQ(builder.NextName(kMask), "Mask0_");
    builder.SetFrameFilePrefix("Mask0_Camera");
    EXPECT_THROW(builder.NextName(kFrame), RTE::VerificationFailed);
}
