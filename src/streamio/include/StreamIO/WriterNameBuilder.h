#pragma once
// Hands out the file prefixes of the streams of one stream set folder, numbered per reader type.
//
// A prefix is a word, a decimal index and "_": "Frame0_", "Frame1_", ..., "Camera1_", "Mask0_",
// "ScalarField0_", "Scales0_", "Attributes0_", "Traces0_", and "Stream0_" for a type it does not
// know. The "_" behind the index is what keeps the streams apart: every file of a stream begins
// with its prefix, and a repair deletes "<prefix>*.*", so no prefix may begin another one's file
// names. Without it "Frame1" would begin "Frame10.ims"; with it "Frame1_" never begins
// "Frame10_.ims", whatever the number of streams. On top of that every name is checked against
// those given before (ignoring case, as Windows does): a candidate that would begin, or be begun
// by, an earlier name is skipped for the next index, so that also a frame file prefix equal to
// another word ("Mask") or ending in digits cannot produce a clash.
//
// Frame readers ("Core.Set.Recording.FrameReader") use the frame file prefix ("Frame" unless set)
// with indices from the index base (0 unless set); every other type counts from 0.

#include <StreamIO/Export.h>

#include <QString>

#include <map>
#include <vector>

namespace SetApi {
namespace Private {

class STREAMIO_API WriterNameBuilder {
public:
    WriterNameBuilder();

    // The word of frame streams; the frame numbering restarts at the index base. RTE::VerificationFailed
    // for a text with a path separator or a character that file names cannot hold.
    void SetFrameFilePrefix(const QString& prefix);
    // The first index of frame streams; the frame numbering restarts there.
    void SetIndexBase(unsigned base);

    // The next prefix for a stream whose reader has the plug-in key `type`. RTE::VerificationFailed
    // when no free prefix can be made for it (a frame file prefix that begins with a name given
    // before).
    QString NextName(QString type);

private:
    struct Counter {
        QString word;
        unsigned long long next = 0;
    };
    Counter& CounterOf(const QString& type);
    bool Collides(const QString& candidate) const;

    QString m_framePrefix;
    unsigned m_indexBase = 0;
    std::map<QString, Counter> m_counters;
    std::vector<QString> m_given;
};

} // namespace Private
} // namespace SetApi
