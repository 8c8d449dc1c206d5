#!/usr/bin/env bash
# Configures (once) and builds the project in ./build.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
[ -f build/CMakeCache.txt ] || cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
cmake --build build
