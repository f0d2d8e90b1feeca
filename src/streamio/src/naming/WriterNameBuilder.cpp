#include <StreamIO/WriterNameBuilder.h>

#include <RTE/Exception.h>

namespace SetApi {
namespace Private {

namespace {

const QString kFrameType = QStringLiteral("Core.Set.Recording.FrameReader");

QString WordOf(const QString& type)
{
    static const std::map<QString, QString> words{
        {QStringLiteral("Core.Set.Recording.MaskFrameReader"), QStringLiteral("Mask")},
        {QStringLiteral("Core.Set.Recording.ScalarFieldFrameReader"), QStringLiteral("ScalarField")},
        {QStringLiteral("Core.Set.Recording.ScaleReader"), QStringLiteral("Scales")},
        {QStringLiteral("Core.Set.Recording.AttributeReader"), QStringLiteral("Attributes")},
        {QStringLiteral("Core.Set.Recording.TraceReader"), QStringLiteral("Traces")},
    };
    const auto found = words.find(type);
    return found != words.end() ? found->second : QStringLiteral("Stream");
}

} // namespace

WriterNameBuilder::WriterNameBuilder() : m_framePrefix(QStringLiteral("Frame")) {}

void WriterNameBuilder::SetFrameFilePrefix(const QString& prefix)
{
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    for (const QChar c : prefix) {
        if (forbidden.contains(c) || c.unicode() < 0x20)
            RTE_THROW_MSG(RTE::VerificationFailed, "Frame file prefix '" << prefix
                                                                         << "' holds a character that file names "
                                                                            "cannot hold");
    }
    m_framePrefix = prefix;
    m_counters.erase(kFrameType);
}

void WriterNameBuilder::SetIndexBase(unsigned base)
{
    m_indexBase = base;
    m_counters.erase(kFrameType);
}

WriterNameBuilder::Counter& WriterNameBuilder::CounterOf(const QString& type)
{
    auto found = m_counters.find(type);
    if (found == m_counters.end()) {
        Counter counter;
        if (type == kFrameType) {
            counter.word = m_framePrefix;
            counter.next = m_indexBase;
        } else {
            counter.word = WordOf(type);
        }
        found = m_counters.emplace(type, counter).first;
    }
    return found->second;
}

bool WriterNameBuilder::Collides(const QString& candidate) const
{
    for (const QString& given : m_given) {
        if (candidate.startsWith(given, Qt::CaseInsensitive) || given.startsWith(candidate, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QString WriterNameBuilder::NextName(QString type)
{
    Counter& counter = CounterOf(type);
    // A name given before that begins the word blocks every index; any other blocks at most one.
    for (const QString& given : m_given) {
        if (counter.word.startsWith(given, Qt::CaseInsensitive))
            RTE_THROW_MSG(RTE::VerificationFailed, "No stream prefix can be made from '"
                                                       << counter.word << "': the earlier prefix '" << given
                                                       << "' begins it");
    }
    QString candidate;
    do {
        candidate = counter.word + QString::number(counter.next++) + QLatin1Char('_');
    } while (Collides(candidate));
    m_given.push_back(candidate);
    return candidate;
}

} // namespace Private
} // namespace SetApi
