#pragma once
// Whether standard error is shown on a terminal: only there does a progress line that rewrites
// itself make sense; in a file or a pipe it would be noise.

namespace SetApiTool {

bool StandardErrorIsTerminal();

} // namespace SetApiTool
