#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz": clang-14, ASan + UBSan), writes the seed corpora
# with the library's own writers, and fuzzes one target or all of them in turn.
# Usage: scripts/fuzz.sh [target|all] [seconds]   (default: all, 60 seconds per target)
# Prints per target the executions, the coverage (libFuzzer's "cov:" edges) and the findings;
# a finding lands in fuzz/findings/<target>/ and makes the script exit with status 1.
# Extra libFuzzer flags may be given in FUZZ_FLAGS, e.g. FUZZ_FLAGS="-jobs=2".
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
which="${1:-all}"
seconds="${2:-60}"

compiler_packages=(clang-14 libclang-rt-14-dev libomp-14-dev)
missing=()
for package in "${compiler_packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if ((${#missing[@]})); then
  echo "fuzz: installing ${missing[*]}"
  sudo_cmd=()
  [[ $(id -u) -ne 0 ]] && sudo_cmd=(sudo)
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Base packages, configure and build of the preset.
"$root/scripts/setup.sh" fuzz
cd "$root"
build="$root/build/fuzz"
"$build/fuzz/setapi_fuzz_seeds" "$root/fuzz/seeds" >/dev/null

targets=()
if [[ "$which" == all ]]; then
  for program in "$build"/fuzz/fuzz_*; do targets+=("${program##*/fuzz_}"); done
else
  [[ -x "$build/fuzz/fuzz_$which" ]] || { echo "fuzz: no target named $which" >&2; exit 2; }
  targets=("$which")
fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:allocator_may_return_null=0}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export OMP_NUM_THREADS="${OMP_NUM_THREADS:-1}"
status=0
printf '%-22s %12s %8s  %s\n' target executions cov findings
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  findings="$root/fuzz/findings/$target"
  log="$build/logs/$target.log"
  mkdir -p "$corpus" "$findings" "$(dirname "$log")"
  before=$(find "$findings" -type f | wc -l)
  # The kept findings run first: a fixed one must not come back.
  extra=("$root/fuzz/seeds/$target")
  [[ -d "$root/tests/corpus/$target" ]] && extra+=("$root/tests/corpus/$target")
  # shellcheck disable=SC2086
  "$build/fuzz/fuzz_$target" "$corpus" "${extra[@]}" -max_total_time="$seconds" -timeout=10 \
    -rss_limit_mb=2048 -malloc_limit_mb=1024 -max_len=131072 -print_final_stats=1 \
    -artifact_prefix="$findings/" ${FUZZ_FLAGS:-} >"$log" 2>&1 || true
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1 || true)
  [[ -n "$runs" ]] || runs=$(grep -o '^#[0-9]*' "$log" | tail -1 | tr -d '#' || true)
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*' || true)
  after=$(find "$findings" -type f | wc -l)
  new=$((after - before))
  if ((new > 0)); then
    status=1
    printf '%-22s %12s %8s  %s new in %s (log %s)\n' "$target" "${runs:-?}" "${cov:-?}" "$new" "fuzz/findings/$target" "$log"
  else
    printf '%-22s %12s %8s  none\n' "$target" "${runs:-?}" "${cov:-?}"
  fi
done
exit $status
