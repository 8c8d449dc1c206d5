#!/usr/bin/env bash
# Packaging checks, run by CI: builds the Debian package (scripts/package.sh),
# runs lintian (no error allowed), desktop-file-validate and appstreamcli on it,
# installs it with dpkg into a fresh root folder, runs the installed program's
# --version and reads its manual page, and verifies the systemd user units
# where systemd-analyze exists.
set -euo pipefail
cd "$(dirname "$0")/.."
package="$(bash scripts/package.sh | tail -n 1)"
echo "== $(basename "$package"): $(du -k "$package" | cut -f1) KiB" >&2
dpkg-deb --field "$package" Depends >&2

echo "== lintian" >&2
lintian --fail-on error "$package" >&2

root="$PWD/build-package/root"
rm -rf "$root"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status" "$root/var/lib/dpkg/available"
# The libraries come from this machine: the fresh root has no other package.
dpkg --root="$root" --force-depends --force-not-root -i "$package" >"$root.log" 2>&1 || { cat "$root.log" >&2; exit 1; }

echo "== desktop-file-validate, appstreamcli validate" >&2
desktop-file-validate "$root/usr/share/applications/quorvex-followup.desktop"
appstreamcli validate --no-net "$root"/usr/share/metainfo/*.metainfo.xml >&2

echo "== installed program and manual page" >&2
"$root/usr/bin/quorvex-followup" --version
# Any complaint of man or groff about the page counts as a failure.
complaints="$(MANWIDTH=80 man -l "$root/usr/share/man/man1/quorvex-followup.1.gz" 2>&1 >/dev/null)"
[ -z "$complaints" ] || { echo "$complaints" >&2; exit 1; }
MANWIDTH=80 man -l "$root/usr/share/man/man1/quorvex-followup.1.gz" | grep -q -- '--version'
test -f "$root/usr/share/bash-completion/completions/quorvex-followup"
test -f "$root/usr/share/zsh/vendor-completions/_quorvex-followup"

if command -v systemd-analyze >/dev/null; then
  echo "== systemd-analyze --user verify" >&2
  # The units as installed, naming the program and the manual page in the root
  # folder (a user manager's verify takes no --root).
  units="$root.units"
  rm -rf "$units" && mkdir -p "$units" "$root.runtime" && chmod 700 "$root.runtime"
  for unit in quorvex-followup.service quorvex-followup.timer; do
    sed "s|=/usr/bin/|=$root/usr/bin/|" "$root/usr/lib/systemd/user/$unit" >"$units/$unit"
  done
  # Any remark (a line it ignores, a missing program) counts as a failure.
  remarks="$(XDG_RUNTIME_DIR="$root.runtime" MANPATH="$root/usr/share/man:" \
    systemd-analyze --user verify "$units/quorvex-followup.service" "$units/quorvex-followup.timer" 2>&1)" ||
    { echo "$remarks" >&2; exit 1; }
  [ -z "$remarks" ] || { echo "$remarks" >&2; exit 1; }
else
  echo "== systemd-analyze is not installed here: the user units are not verified" >&2
fi
echo "Package checks passed: $package" >&2
