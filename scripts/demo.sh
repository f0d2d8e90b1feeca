#!/usr/bin/env bash
# Sets everything up (packages, configure, build) and runs the main job: a recording of synthetic
# camera images at full speed through the queued stream set writer, read back and verified bit for
# bit, then `setapi info` on it.
# Usage: scripts/demo.sh [folder]   (default folder: build/demo; an earlier recording there is replaced)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/setup.sh" default
setapi="$root/build/default/tools/setapi/setapi"
folder="${1:-$root/build/demo}"
mkdir -p "$folder"
rm -rf "$folder/Recording" "$folder/Recording.set" "$folder/Recording-camera1.png"
"$setapi" record --cameras 2 --size 1024x1024 --images 200 "$folder/Recording"
echo
exec "$setapi" info "$folder/Recording"
