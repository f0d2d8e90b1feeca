#pragma once
// Who may change a parameter node.

namespace RTE {
namespace Parameter {

// 0 read-only: shown to users, never changed through an editor.
// 1 read-write: shown to users and editable.
// 2 read-write but internal: book-keeping of the program. The node is kept, copied, written and
//   read like any other and can be changed through the API, but editors for users do not offer it.
enum E_AccessMode { AccessReadOnly = 0, AccessReadWrite = 1, AccessInternal = 2 };

// Whether the number is one of the three modes above.
inline bool IsValidAccessMode(int mode) { return mode >= AccessReadOnly && mode <= AccessInternal; }

} // namespace Parameter
} // namespace RTE
