#pragma once
// Copying single pieces of sets: one buffer between two sets, and a set file without its type.

#include <SetApi/Export.h>
#include <SetApi/set/CopyParameterValueSpec.h>

#include <QFileInfo>

namespace SetApi {

class I_Set;

// Copies the buffer `sourceIndex` of `source` to `targetIndex` of `target` by the fastest way the
// two allow: when both keep their buffers in files of their own (I_FileBasedSet), the file is
// copied as it lies on disk and named after `spec`; otherwise the buffer is loaded and stored, and
// `spec` has no effect. A set that is not open raises RTE::VerificationFailed ("Source set not
// valid", "Destination set not valid"); failures of the copy itself pass through.
SETAPI_API void CopyBuffer(I_Set& source, unsigned sourceIndex, I_Set& target, unsigned targetIndex,
                           CopyParameterValueSpec spec);

// Copies a set file line by line, byte for byte (as Latin-1), dropping every line that begins,
// after leading blanks, with "SetIdentifier": the copy opens as a plain set, whatever the type of
// its origin. Each line ends in "\n" in the copy. Raises RTE::VerificationFailed when source and
// target are one file, the source is missing or no file (the QFileInfo must name the ".set" file),
// or the target exists. False when one of the two files cannot be opened, or the copy could not
// be written completely (the incomplete copy is removed).
SETAPI_API bool CopySetFileWithoutSetIdentifier(const QFileInfo& source, const QFileInfo& target);

} // namespace SetApi
