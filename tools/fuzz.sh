#!/usr/bin/env bash
# fuzz.sh [seconds] [target...]: builds the libFuzzer targets with clang,
# AddressSanitizer and UndefinedBehaviorSanitizer (build-fuzz), and runs each
# for that long (60 by default), two at once, from its seeds in
# tests/fuzz/corpus/<target> and what earlier runs found (build-fuzz/corpus).
#
# A crash, a leak, a sanitizer report, an input that takes 10 s or one that
# needs more than 1 GB fails the run. The input is saved twice: in
# build-fuzz/failures/<target>/ for the report, and in the target's seeds in
# the repository, so that every later run replays it; a test of its reader
# keeps it fixed. Inputs run per target are written to build-fuzz/figures.txt.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift || true
build=$here/build-fuzz

bash "$here/tools/install-deps.sh"
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
# -O1 with line tables: what libFuzzer's authors advise, and a quick build.
flags="-O1 -gline-tables-only"
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE= \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
  -DQUILLOTONE_FUZZ=ON -DQUILLOTONE_TESTS=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" --target fuzzers -j "$(nproc)"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for f in "$build"/fuzz/fuzz_*; do targets+=("$(basename "$f")"); done
fi

# Sound files and requests need room; replies and records are short.
max_len() {
  case $1 in
    fuzz_audio_*) echo 65536 ;;
    fuzz_service_request|fuzz_upload_body|fuzz_cue_sheet) echo 16384 ;;
    *) echo 4096 ;;
  esac
}

run() {
  local target=$1 seeds=$here/tests/fuzz/corpus/$1 found=$build/corpus/$1 failures=$build/failures/$1
  mkdir -p "$seeds" "$found" "$failures"
  local log=$build/logs/$target.log status=0
  mkdir -p "$build/logs"
  (cd "$build/fuzz" && \
    ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1 \
    LSAN_OPTIONS=suppressions=$here/tests/support/lsan.supp:print_suppressions=0 \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    "./$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -malloc_limit_mb=1024 \
      -max_len="$(max_len "$target")" -print_final_stats=1 -artifact_prefix="$failures/" \
      "$found" "$seeds") >"$log" 2>&1 || status=$?
  local runs
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo 0)
  echo "$target $runs" >>"$build/figures.txt"
  if [ "$status" -ne 0 ]; then
    for input in "$failures"/*; do
      [ -f "$input" ] && cp "$input" "$seeds/"
    done
    echo "FAILED $target after $runs inputs; the input is in $failures and $seeds:" >&2
    grep -E 'ERROR|SUMMARY|Test unit written' "$log" >&2 || tail -20 "$log" >&2
    return 1
  fi
  echo "ok $target: $runs inputs in $seconds s"
}
export -f run max_len
export here build seconds

: >"$build/figures.txt"
rm -rf "$build/failures"
printf '%s\n' "${targets[@]}" | xargs -P 2 -I{} bash -c 'run {}'
