#!/usr/bin/env bash
# Starts the demo service and the follow-up tool pointed at it, with a fresh
# settings folder below ./build (never your real ~/.config). Run from anywhere
# after a build (scripts/build.sh). The service stops when the tool exits.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=build
config="$PWD/$build/demo-config"
folder="$config/Vellmor/vlmQuorvexITSM"
rm -rf "$config" && mkdir -p "$folder"

out="$(mktemp)"
"$build/src/demo/quorvex-demo-service" --ca-file "$config/demo-ca.pem" >"$out" &
service=$!
trap 'kill "$service" 2>/dev/null; rm -f "$out"' EXIT
for _ in $(seq 50); do grep -q '^Username: ' "$out" && break; sleep 0.1; done
instance="$(sed -n 's/^Instance: //p' "$out")"
[ -n "$instance" ] || { echo "The demo service did not start" >&2; exit 1; }

tool="$build/src/app/quorvex-followup"
export XDG_CONFIG_HOME="$config"
export QUORVEX_EXTRA_CA_CERTS="$config/demo-ca.pem"
cat >"$folder/quorvex-followup.ini" <<INI
[QuorvexITSM]
SaaS=0
Instance=$instance
ClientID=followup-demo
ClientSecret=$(printf '%s\n' 'demo secret&=1' | "$tool" --encrypt)
Username=lead@vellmor.example
Password=$(printf '%s\n' 'Pass word&=é' | "$tool" --encrypt)
TokenValidity=12
INI
echo "Demo service on https://$instance; settings folder: $folder" >&2
"$tool" "$@"
