#!/usr/bin/env bash
# Makes the Debian and the RPM packages of every component in build/packages/, with a list of what
# they contain and depend on (SPDX), and holds the former to lintian, whose warnings are shown and
# whose errors fail. Installs what is missing.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
if [ "$#" -ne 0 ]; then
  echo "usage: scripts/package.sh" >&2
  exit 2
fi
scripts/install_dependencies.sh package

umask 022
# The time in the packages' files, so that the same commit makes the same packages.
if time=$(git log -1 --format=%ct 2>/dev/null); then
  export SOURCE_DATE_EPOCH=$time
fi
rm -rf build/packages
# pack GENERATOR CONFIGURATION: the two systems have their libraries in other folders, which few
# objects know, so that one tree serves both.
pack() {
  build_preset release "$2"
  quietly cpack -G "$1" --config build/release/CPackConfig.cmake -B "$repository/build/packages"
}
pack RPM -DCMAKE_INSTALL_LIBDIR=lib64
pack DEB -UCMAKE_INSTALL_LIBDIR
rm -rf build/packages/_CPack_Packages
python3 -B scripts/sbom.py build/packages/*.deb build/packages/*.rpm \
  >build/packages/kova-iot.spdx.json

lintian --allow-root --fail-on error --tag-display-limit 0 build/packages/*.deb
ls -l build/packages
