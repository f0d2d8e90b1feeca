#pragma once
// Replaces a recording (a stream set) by a plain file-based set of the same name, in place, with
// its child sets and the files of its folder that are not recording material.
//
// The buffers are copied one at a time into a work set "<name>_temp_Conversion" beside the source;
// the source is then parked as "old_StreamSet", the work set takes the source's name, the foreign
// files of the parked folder follow it, and the parked set is removed. Each step that can be taken
// back is taken back on failure, and the recording's images are always on disk in one of the
// source, the parked set or the converted set. The folder holds, in turn: the source; source and
// work set; parked source and work set; parked source and the new set; the new set. A run that was
// killed between steps leaves these names, and the next run fails on the work set's set file
// ("Target set file already exists") until they are tidied up by hand.

#include <SetApi/Export.h>

#include <RTE/ActivityControl.h>
#include <RTE/ActivityFeedback.h>

#include <string>

namespace SetApi {

// `setPath` with or without ".set". Progress goes to `feedback` in percent after every buffer,
// with the text "Converting '<title>': <percent>% finished"; `control` is asked before every
// buffer, and a cancel removes the work set and leaves the source untouched ("Conversion
// canceled"). Failures raise RTE::Exception with "Can not rename source set", "Can not rename
// converted set." or the reason the parked set could not be removed; a failure while copying
// buffers removes the work set and passes on as std::exception with the same text. A set that
// is no stream set raises RTE::VerificationFailed before anything is touched.
SETAPI_API void ConvertStreamSetToNativeSet(const std::string& setPath, RTE::I_ActivityControl& control,
                                            RTE::I_ActivityFeedback& feedback);

} // namespace SetApi
