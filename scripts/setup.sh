#!/usr/bin/env bash
# Installs the Debian 12 packages the project needs (only those missing), then configures and
# builds it. Usage: scripts/setup.sh [preset]   (preset: default, debug, asan, tsan; default: default)
# Safe to run again: installs nothing that is there and rebuilds only what changed.
set -euo pipefail

preset="${1:-default}"
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev
  libboost1.74-dev libboost-filesystem1.74-dev libboost-regex1.74-dev
  libboost-thread1.74-dev libboost-serialization1.74-dev
  libcli11-dev libgtest-dev libgmock-dev libbenchmark-dev
  libpng-dev libtiff-dev liblz4-dev libzstd-dev zlib1g-dev libxxhash-dev
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=()
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "setup: run as root or install sudo" >&2; exit 1; }
    sudo_cmd=(sudo)
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cd "$root"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
