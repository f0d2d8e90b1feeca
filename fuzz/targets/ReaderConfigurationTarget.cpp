// The table of contents of a stream set, "ReaderConfiguration.xml": ReadReaderConfiguration on any
// document. What reads must write and read back to equal entries.

#include "FuzzTargets.h"

#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>

#include <QBuffer>
#include <QByteArray>

namespace SetApiFuzz {

using SetApi::C_ContentPurpose;
using SetApi::Private::C_ReaderConfiguration;
using SetApi::Private::C_ReaderInfo;

namespace {

// Equal up to what the format leaves out on purpose: the frame range of an entry that is not
// associated to frames is not written (and reads as 0).
bool SameEntry(const C_ReaderInfo& a, const C_ReaderInfo& b)
{
    const C_ContentPurpose& p = a.ContentPurpose;
    const C_ContentPurpose& q = b.ContentPurpose;
    const bool framesAgree =
        p.IsAssociatedToFrames() ? (p.StartFrame() == q.StartFrame() && p.EndFrame() == q.EndFrame()) : true;
    return a.Name == b.Name && a.Type == b.Type && a.FilePrefix == b.FilePrefix &&
           a.FormatDescription == b.FormatDescription && p.IsAssociatedToFrames() == q.IsAssociatedToFrames() &&
           p.IsAssociatedToEntireImage() == q.IsAssociatedToEntireImage() &&
           p.IsAssociatedToAllImages() == q.IsAssociatedToAllImages() && framesAgree;
}

bool SameEntries(const C_ReaderConfiguration& a, const C_ReaderConfiguration& b)
{
    if (a.GetReaderCount() != b.GetReaderCount() || a.HasBeenRepaired() != b.HasBeenRepaired() ||
        a.GetDetailsOfRepair() != b.GetDetailsOfRepair())
        return false;
    for (unsigned i = 0; i < a.GetReaderCount(); ++i)
        if (!SameEntry(a.GetReader(i), b.GetReader(i)))
            return false;
    return true;
}

} // namespace

void RunReaderConfiguration(const std::uint8_t* data, std::size_t size)
{
    QuietLogging();
    QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    C_ReaderConfiguration configuration;
    bool read = false;
    Guarded([&] {
        configuration = SetApi::Private::ReadReaderConfiguration(device);
        read = true;
    });
    if (!read)
        return;
    QByteArray written;
    QBuffer out(&written);
    out.open(QIODevice::WriteOnly);
    C_ReaderConfiguration again;
    try {
        SetApi::Private::WriteReaderConfiguration(configuration, out);
        out.close();
        QBuffer in(&written);
        in.open(QIODevice::ReadOnly);
        again = SetApi::Private::ReadReaderConfiguration(in);
    } catch (const RTE::Exception& failure) {
        Fail("a reader configuration that was read does not write and read back", failure);
    }
    if (!SameEntries(configuration, again))
        Fail("a reader configuration changed on its way through write and read");
}

std::vector<Bytes> SeedsReaderConfiguration()
{
    C_ReaderConfiguration configuration;
    configuration.AddReader(C_ReaderInfo(QStringLiteral("ImageReader"), QStringLiteral("Core.Set.Recording.FrameReader"),
                                         QStringLiteral("Camera1_"), QStringLiteral("image stream \"1.1\""),
                                         C_ContentPurpose::CreateFrameLink(0)));
    configuration.AddReader(C_ReaderInfo(QStringLiteral("AttributeReaderV1"),
                                         QStringLiteral("Core.Set.Recording.AttributeReader"),
                                         QStringLiteral("Attributes2_"), QString(),
                                         C_ContentPurpose::CreateGlobalAttributesLink()));
    configuration.AddReader(C_ReaderInfo(QStringLiteral("TraceReaderV1"), QStringLiteral("Core.Set.Recording.TraceReader"),
                                         QStringLiteral("Traces3_"), QStringLiteral("<&>"), C_ContentPurpose(false, true, true)));
    std::vector<Bytes> seeds;
    for (bool repaired : {false, true}) {
        if (repaired)
            configuration.MarkAsRepaired(QStringLiteral("Image 3 of Camera1_ was cut."));
        QByteArray written;
        QBuffer out(&written);
        out.open(QIODevice::WriteOnly);
        SetApi::Private::WriteReaderConfiguration(configuration, out);
        seeds.push_back(Bytes(written.begin(), written.end()));
    }
    return seeds;
}

} // namespace SetApiFuzz
