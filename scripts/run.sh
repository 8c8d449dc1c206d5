#!/usr/bin/env bash
# Builds what is missing and starts the tool. Its settings go to a folder of its
# own below ./build, never to your real ~/.config.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
export XDG_CONFIG_HOME="$PWD/build/demo-config"
mkdir -p "$XDG_CONFIG_HOME"
echo "Settings folder: $XDG_CONFIG_HOME/Vellmor/vlmQuorvexITSM" >&2
exec build/src/app/quorvex-followup "$@"
