#!/usr/bin/env bash
# Sets everything up (packages, configure, build) and runs the whole test suite.
# Usage: scripts/test.sh [preset]   (default; asan for ASan+UBSan; tsan for TSan)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
preset="${1:-default}"
"$root/scripts/setup.sh" "$preset"
cd "$root"
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export TSAN_OPTIONS="${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}"
exec ctest --preset "$preset"
