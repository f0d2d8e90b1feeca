// setapi rescale: new scales for the frames of a finished recording.

#include "Commands.h"
#include "SetArguments.h"

#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSet.h>
#include <SetApi/stream/StreamSetRescaler.h>

#include <RTE/Exception.h>

#include <QStringList>

#include <cmath>

namespace SetApiTool {

namespace {

double ParseNumber(const QString& text, const std::string& whole)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        RTE_THROW_MSG(RTE::Exception, "bad scale '" << whole << "': expected FACTOR,OFFSET[,UNIT] with numbers, e.g. 0.05,-12.5,mm");
    return value;
}

std::string Describe(const RTE::S_Scale& scale)
{
    return QStringLiteral("%1 * value + %2%3")
        .arg(scale.factor, 0, 'g', 17)
        .arg(scale.offset, 0, 'g', 17)
        .arg(scale.unit.isEmpty() ? QString() : QStringLiteral(" ") + scale.unit)
        .toStdString();
}

} // namespace

RTE::S_Scale ParseScale(const std::string& text)
{
    const QStringList parts = QString::fromStdString(text).split(QLatin1Char(','));
    if (parts.size() < 2 || parts.size() > 3)
        RTE_THROW_MSG(RTE::Exception, "bad scale '" << text << "': expected FACTOR,OFFSET[,UNIT], e.g. 0.05,-12.5,mm");
    RTE::S_Scale scale(ParseNumber(parts[0], text), ParseNumber(parts[1], text));
    if (parts.size() == 3)
        scale.unit = parts[2].trimmed();
    return scale;
}

std::vector<S_FrameScales> CollectFrameScales(const std::vector<unsigned>& frames, const std::vector<std::string>& x,
                                              const std::vector<std::string>& y, const std::vector<std::string>& i)
{
    if (frames.empty())
        RTE_THROW(RTE::Exception, QStringLiteral("give at least one --frame with its scales"));
    const auto check = [&](const std::vector<std::string>& values, const char* option) {
        if (!values.empty() && values.size() != frames.size())
            RTE_THROW_MSG(RTE::Exception, "give " << option << " once for every --frame (" << frames.size()
                                                  << " frames, " << values.size() << " times " << option << ")");
    };
    check(x, "--x");
    check(y, "--y");
    check(i, "--i");
    // Every value is parsed before anything is touched.
    std::vector<S_FrameScales> records;
    for (std::size_t n = 0; n < frames.size(); ++n)
        records.push_back(S_FrameScales{frames[n], x.empty() ? RTE::S_Scale() : ParseScale(x[n]),
                                        y.empty() ? RTE::S_Scale() : ParseScale(y[n]),
                                        i.empty() ? RTE::S_Scale() : ParseScale(i[n])});
    return records;
}

int RunRescale(const std::string& path, const std::vector<S_FrameScales>& records, std::ostream& out)
{
    unsigned frames = 0;
    {
        const std::shared_ptr<SetApi::I_Set> set = OpenExistingSet(path);
        const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set);
        if (!streamSet)
            RTE_THROW_MSG(RTE::Exception, "'" << path << "' is no recording (stream set): its scales are in its buffers");
        if (set->GetSize() > 0)
            frames = set->GetBufferStructureInformation(0).frameCount;
    }
    for (const S_FrameScales& record : records)
        if (frames > 0 && record.frame >= frames)
            RTE_THROW_MSG(RTE::Exception, "the recording has frames 0.." << frames - 1 << ", not frame " << record.frame);

    const std::string name = SetNameOf(path);
    SetApi::StreamSetRescaler rescaler(QString::fromStdString(name));
    for (const S_FrameScales& record : records)
        rescaler.SetFrameScales(record.frame, record.x, record.y, record.intensity);
    rescaler.Write();
    out << "rescaled '" << name << "'";
    if (frames > records.size())
        out << " (frames without new scales read factor 1, offset 0)";
    out << '\n';
    for (const S_FrameScales& record : records)
        out << "  frame " << record.frame << ": x = " << Describe(record.x) << ", y = " << Describe(record.y)
            << ", i = " << Describe(record.intensity) << '\n';
    return 0;
}

} // namespace SetApiTool
