#!/usr/bin/env bash
# Hardening checks, run by CI after the normal tests:
#  1. every test built with AddressSanitizer and UndefinedBehaviorSanitizer (gcc,
#     in ./build-asan);
#  2. the fuzz targets built with clang and libFuzzer (in ./build-fuzz), each run
#     for QUORVEX_FUZZ_SECONDS (default 30) from its seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

fuzz_seconds="${QUORVEX_FUZZ_SECONDS:-30}"
jobs="${QUORVEX_JOBS:-2}"
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan-suppressions.txt:print_suppressions=0"

sanitize="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
if [ ! -f build-asan/CMakeCache.txt ]; then
  cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS="-O1 $sanitize" -DCMAKE_EXE_LINKER_FLAGS="$sanitize" >/dev/null
fi
cmake --build build-asan -j "$jobs"
ctest --test-dir build-asan --output-on-failure -j "$jobs"

if [ ! -f build-fuzz/CMakeCache.txt ]; then
  cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DBUILD_TESTING=OFF -DQUORVEX_FUZZ=ON >/dev/null
fi
cmake --build build-fuzz -j "$jobs" --target quorvex_fuzz
fuzz=build-fuzz/fuzz
"$fuzz/quorvex-fuzz-seeds" "$fuzz/seeds"
for name in fuzz_ticket_page fuzz_reference_queries fuzz_decrypt fuzz_settings_reader fuzz_rest_timestamp; do
  target="$fuzz/$name"
  mkdir -p "$fuzz/corpus/$name"
  echo "== $name: ${fuzz_seconds} s" >&2
  if ! "$target" -max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 -artifact_prefix="$fuzz/$name-" \
    "$fuzz/corpus/$name" "$fuzz/seeds/${name#fuzz_}" >"$fuzz/$name.log" 2>&1; then
    tail -n 60 "$fuzz/$name.log" >&2
    echo "$name found a failure; the input is beside $fuzz/$name.log" >&2
    exit 1
  fi
  grep -E '^#[0-9]+.*DONE' "$fuzz/$name.log" >&2
done
