#!/usr/bin/env bash
# Builds the Debian package ./build-package/quorvex-followup_<version>_<arch>.deb:
# the program alone (no tests), with Debian's hardening flags, installed under
# /usr. Prints the package's path.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
if [ ! -f build-package/CMakeCache.txt ]; then
  export DEB_BUILD_MAINT_OPTIONS=hardening=+all
  cmake -S . -B build-package -G Ninja -DCMAKE_BUILD_TYPE=None -DBUILD_TESTING=OFF \
    -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON \
    -DCMAKE_CXX_FLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)" \
    -DCMAKE_EXE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" "${launcher[@]}" >/dev/null
fi
cmake --build build-package --target quorvex-followup quorvex-followup-man
rm -f build-package/quorvex-followup_*.deb
(cd build-package && cpack -G DEB >/dev/null)
ls "$PWD"/build-package/quorvex-followup_*.deb
