#pragma once
// Replaces the scales of a finished recording without touching its images: every scale stream
// leaves the configuration with its file, and one new scale file per record given is added. For
// a calibration made after the recording. Works on the folder; no open set is needed.

#include <SetApi/Export.h>

#include <RTE/Scale.h>

#include <QString>

#include <cstdint>
#include <vector>

namespace SetApi {

class SETAPI_API StreamSetRescaler {
public:
    explicit StreamSetRescaler(const QString& name);

    // Adds a record for the frame. The same frame may be given twice; each record gets its own
    // stream.
    void SetFrameScales(unsigned frame, const RTE::S_Scale& x, const RTE::S_Scale& y, const RTE::S_Scale& intensity);

    // Removes every scale stream of the recording (a file that cannot be deleted is passed over),
    // writes one stream "FrameScales<frame>" per record, in record order, behind the other entries,
    // and saves the configuration. A frame without a record is left without scales (factor 1,
    // offset 0). RTE::VerificationFailed for an empty name (the stream set reader's message for an
    // empty destination) and "Reader count is zero." for a configuration without entries; the
    // failures of loading and saving the configuration and of writing a scale file pass through.
    // The records are kept.
    void Write();

private:
    struct FrameScales {
        std::uint32_t frame;
        RTE::S_Scale x;
        RTE::S_Scale y;
        RTE::S_Scale intensity;
    };

    QString m_name;
    std::vector<FrameScales> m_records;
};

} // namespace SetApi
