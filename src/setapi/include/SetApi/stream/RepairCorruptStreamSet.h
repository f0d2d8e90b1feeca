#pragma once
// Turning a damaged recording into words for the user, asking, and repairing it in place; and the
// small tools on stream sets: whether a set is one, whether it has been repaired, and a new
// attribute stream for attributes computed after the recording.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>

#include <StreamIO/AttributeWriter.h>

#include <QString>
#include <QStringList>

#include <memory>
#include <string>

namespace SetApi {

enum class RepairCorruptStreamSetState : int {
    NotCorrupt = 0,     // not a stream set, or nothing wrong
    Repaired = 1,       // repair done
    RepairDeclined = 2, // the dialog said no
    RepairFailed = 3    // the configuration could not be written
};

// What the host shows the user. One short line per problem, then the long explanations at once,
// then the question; a failed repair is reported with the set's name and the reason.
class SETAPI_API RepairCorruptStreamSetDialog {
public:
    virtual ~RepairCorruptStreamSetDialog();
    virtual void AddCorruption(const QString& corruption) = 0;
    virtual void SetConsequences(const QStringList& consequences) = 0;
    virtual bool ConfirmRepair() = 0;
    virtual void ReportRepairFailure(const std::string& setName, const QString& message) = 0;
};

// Describes what is wrong through the dialog, asks, and repairs. A set that is no stream set or
// is intact gives NotCorrupt without a word to the dialog. Damaged masks and scalar fields get no
// line of their own but are repaired like the rest. A configuration that cannot be written is
// reported through the dialog and gives RepairFailed; any other failure passes to the caller.
// No other thread may load from the set meanwhile.
SETAPI_API RepairCorruptStreamSetState RepairCorruptStreamSet(std::shared_ptr<I_Set> set,
                                                              RepairCorruptStreamSetDialog& dialog);

SETAPI_API bool IsStreamSet(std::shared_ptr<I_Set> set);
// A stream set whose configuration carries the repaired mark.
SETAPI_API bool IsRepairedStreamSet(std::shared_ptr<I_Set> set);

// Adds an attribute stream to a finished recording, for frame `frame`, or for the whole image when
// `frame` is negative, registers it in the configuration and hands the open writer to the caller,
// who writes one record per image and closes it. Its prefix is
// "AppendedAttributes_<yyyyddmm_HHMMSS>_<frame or global>". The set object passed does not see the
// stream until the set is opened again. RTE::VerificationFailed "No stream set given." for any
// other set.
SETAPI_API std::unique_ptr<AttributeWriter> AppendAttributesToStreamSet(I_Set* set, int frame);

} // namespace SetApi
