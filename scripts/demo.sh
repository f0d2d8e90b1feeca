#!/usr/bin/env bash
# Sets everything up (packages, configure, build) and runs the main job: `setapi demo`.
# Usage: scripts/demo.sh [folder]   (default folder: build/demo)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/setup.sh" default
exec "$root/build/default/tools/setapi/setapi" demo "${1:-$root/build/demo}"
