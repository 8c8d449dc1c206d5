#!/usr/bin/env bash
# Configures (once) and builds the project in ./build.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
[ -f build/CMakeCache.txt ] || cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build
