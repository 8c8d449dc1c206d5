#!/usr/bin/env bash
# Builds the program without Qt Widgets (QUORVEX_WIDGETS=OFF) in ./build-headless, as
# a server that never opens a window may want it, and checks that it links no
# widget library and still answers.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
[ -f build-headless/CMakeCache.txt ] ||
  cmake -S . -B build-headless -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORVEX_WIDGETS=OFF -DBUILD_TESTING=OFF \
    "${launcher[@]}" >/dev/null
cmake --build build-headless --target quorvex-followup
program=build-headless/src/app/quorvex-followup
if ldd "$program" | grep -q 'libQt6Widgets'; then
  echo "The headless program links Qt Widgets" >&2
  exit 1
fi
"$program" --version
