#pragma once
// How a Storage::SettingsDocument keeps its file and its content in step.

namespace Storage {

enum class AutoSyncMode : int {
    // 0: the file is read and written only when Load and Save are called.
    Manual = 0,
    // 1: Load reads the file; the file is never written through the document and Save raises.
    ReadOnly = 1,
    // 2: like Manual, and in addition the destructor saves the content if it differs from what
    // was last loaded or saved (for a document never loaded: from an empty document). This is
    // best effort: a failure there is logged and never thrown from the destructor. Call Save
    // explicitly where a failure must be seen.
    WriteBackOnDestruction = 2,
};

} // namespace Storage
