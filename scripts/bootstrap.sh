#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need, when any is
# missing. Safe to run again: it does nothing once everything is there.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev qt6-httpserver-dev qt6-websockets-dev
  libsimpleini-dev libssl-dev libcurl4-openssl-dev libxlsxwriter-dev
  libgtest-dev libbenchmark-dev libsimdjson-dev libgumbo-dev
  libgmime-3.0-dev libqt6sql6-sqlite
  clang libclang-rt-14-dev time
  python3-aiosmtpd python3-openpyxl python3-html5lib ccache
  qtkeychain-qt6-dev help2man dpkg-dev lintian desktop-file-utils appstream man-db systemd
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Run as root or install sudo to install: ${missing[*]}" >&2; exit 1; }
  sudo="sudo"
fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
